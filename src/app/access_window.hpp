#pragma once

#include <QWidget>
#include <chrono>

class QLabel;
class QPushButton;

namespace tidewell {

class FolderAccess;

/// The access window, shown at start while Tidewell has no working grant for the home folder. It explains why
/// Tidewell asks, and offers two buttons: Quit, and Confirm Access, which opens the panel in which the person
/// grants the home folder. Once a grant is recorded the window says so (granted), and the main window takes over.
class AccessWindow : public QWidget {
    Q_OBJECT
public:
    /// How long after a grant granted is emitted.
    static constexpr std::chrono::milliseconds kHandOverDelay{300};

    /// The window for access's disk and home folder, unshown. access outlives it.
    explicit AccessWindow(FolderAccess& access, QWidget* parent = nullptr);

    /// Confirm Access: the folder panel ("Confirm Access", "Give access for scanning in your Home Directory",
    /// opening at the home folder), offering what FolderAccess::offers. Another folder chosen is not granted: the
    /// window then says which folder is needed (wrongFolderNote). A choice of the home is granted and kHandOverDelay later
    /// granted is emitted; a cancelled panel leaves everything as it was; a choice whose grant cannot be made ends in
    /// the "Access Denied" alert, with the window still up.
    void confirmAccess();

    [[nodiscard]] QPushButton* quitButton() const { return m_quit; }
    [[nodiscard]] QPushButton* confirmAccessButton() const { return m_confirmAccess; }
    /// The line that says which folder is needed after another one was chosen; hidden until then.
    [[nodiscard]] QLabel* wrongFolderNote() const { return m_wrongFolder; }

signals:
    /// Quit was pressed, Escape typed, or the window closed: without this window Tidewell has no way on.
    void quitRequested();
    /// A grant was recorded and started a moment ago.
    void granted();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void applyLook();
    void fitHeight();

    FolderAccess& m_access;
    QPushButton* m_quit = nullptr;
    QPushButton* m_confirmAccess = nullptr;
    QLabel* m_wrongFolder = nullptr;
};

} // namespace tidewell
