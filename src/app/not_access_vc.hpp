#pragma once

#include <QPointer>
#include <QWidget>

class QPushButton;

namespace tidewell {

class AppDelegate;

/// `NotAccessVC`: the access window, shown at start while Tidewell has no working grant for the home folder. It
/// explains why Tidewell asks, and offers two buttons: `closeApp` quits, `confirmAccess` opens the panel in which
/// the person grants the home folder. Once a grant is recorded the window hands over to the main window.
class NotAccessVC : public QWidget {
    Q_OBJECT
public:
    /// The window for delegate's disk and home folder, unshown.
    explicit NotAccessVC(AppDelegate* delegate, QWidget* parent = nullptr);

    /// Quits Tidewell.
    void closeAppAction();
    /// The open panel ("Confirm Access", "Give access for scanning in your Home Directory", opening at the home
    /// folder), offering the home folder, <root>/Users and the disk root. A choice is recorded at "SaveDirectory"
    /// and 0.3 s later the delegate opens the main window; a cancelled panel leaves everything as it was; a
    /// choice whose grant cannot be made ends in the "Access Denied" alert, with the window still up.
    void confirmAccessAction();

    /// The panel's rules: exactly the home folder, <root>/Users and the disk root are offered and accepted.
    [[nodiscard]] bool panelShouldEnableURL(const QString& folder) const;
    [[nodiscard]] bool panelValidateURL(const QString& folder) const;

    [[nodiscard]] QPushButton* closeApp() const { return m_closeApp; }
    [[nodiscard]] QPushButton* confirmAccess() const { return m_confirmAccess; }

private:
    void awakeFromNib();

    QPointer<AppDelegate> m_delegate;
    QPushButton* m_closeApp = nullptr;
    QPushButton* m_confirmAccess = nullptr;
};

} // namespace tidewell
