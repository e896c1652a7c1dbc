#pragma once

#include <QFileDialog>
#include <QString>
#include <functional>
#include <optional>

namespace tidewell {

/// What a folder panel asks: its confirm button's title, its message, the folder it opens at, which folders it
/// offers (others are greyed out) and which choice it accepts. Only folders can be chosen, one at a time.
struct FolderPanelRequest {
    QString prompt;
    QString message;
    QString startFolder;
    std::function<bool(const QString& folder)> offers;
    std::function<bool(const QString& folder)> accepts;
};

/// The panel in which a person chooses a folder: Qt's own folder dialog (the same on every desktop), with the
/// request's rules. Folders the request does not offer are greyed out, and the confirm button takes only a folder
/// the request accepts.
///
/// Tests answer panels without showing them: answerNextPanel queues a choice (a folder, or nothing for Cancel). A
/// queued folder goes through the request's acceptance as a click would: a folder it refuses leaves nothing
/// chosen, as a person could then only cancel.
class FolderPanel : public QFileDialog {
    Q_OBJECT
public:
    FolderPanel(FolderPanelRequest request, QWidget* parent);

    /// Runs a panel modally; returns the chosen folder (absolute, as the panel names it), or nothing when
    /// cancelled.
    static std::optional<QString> choose(const FolderPanelRequest& request, QWidget* parent);

    /// The chosen folder, once accepted.
    [[nodiscard]] QString chosenFolder() const;

    /// Takes the current choice when the request accepts it; otherwise the panel stays open.
    void accept() override;

    /// Test seam: the next panel answers with folder (nothing = Cancel) without showing.
    static void answerNextPanel(std::optional<QString> folder);
    /// The last panel's request, shown or answered.
    static const std::optional<FolderPanelRequest>& lastRequest();
    /// Drops queued answers and the last request.
    static void resetSeam();

private:
    FolderPanelRequest m_request;
};

/// A path for comparing folders: the real path when it exists (links resolved), else the path cleaned of "." and
/// ".." and trailing slashes.
QString comparablePath(const QString& path);

} // namespace tidewell
