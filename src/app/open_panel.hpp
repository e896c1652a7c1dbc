#pragma once

#include <QFileDialog>
#include <QString>
#include <functional>
#include <optional>

namespace tidewell {

/// What a folder-choosing panel asks: its confirm button's title, its message, the folder it opens at, which
/// folders it offers (others are greyed out) and which choice it accepts. Only folders can be chosen, one at a time.
struct OpenPanelRequest {
    QString prompt;
    QString message;
    QString startFolder;
    std::function<bool(const QString& folder)> shouldEnable;
    std::function<bool(const QString& folder)> validate;
};

/// The open panel: a folder chooser that enables and accepts only what the request allows.
///
/// Tests answer panels without showing them: answerNextPanel queues a choice (a folder, or nothing for Cancel).
/// A queued folder goes through the request's validation as a click would: a folder it refuses leaves nothing
/// chosen, as a person could then only cancel.
class OpenPanel {
public:
    /// Runs the panel modally; returns the chosen folder (absolute, as the panel names it), or nothing when
    /// cancelled.
    static std::optional<QString> run(const OpenPanelRequest& request, QWidget* parent);

    /// Test seam: the next panel answers with folder (nothing = Cancel) without showing.
    static void answerNextPanel(std::optional<QString> folder);
    /// The last panel's request (prompt, message, start folder and its rules), shown or answered.
    static const std::optional<OpenPanelRequest>& lastRequest();
    /// Drops queued answers and the last request.
    static void resetSeam();
};

/// The panel itself, Qt's own folder dialog (the same on every desktop), with the request's rules: folders the
/// request does not enable are greyed out, and the confirm button takes only a folder the request accepts.
class FolderPanel : public QFileDialog {
    Q_OBJECT
public:
    FolderPanel(OpenPanelRequest request, QWidget* parent);

    /// The chosen folder, once accepted.
    [[nodiscard]] QString chosenFolder() const;

    /// Takes the current choice when the request accepts it; otherwise the panel stays open.
    void accept() override;

private:
    OpenPanelRequest m_request;
};

/// A path for comparing folders: the real path when it exists (links resolved), else the path cleaned of "." and
/// ".." and trailing slashes.
QString comparablePath(const QString& path);

} // namespace tidewell
