#pragma once

#include <QObject>
#include <QString>

namespace tidewell {

/// The process's local notifications, one signal per name. The browser panel posts "DismissPanel" (observed by
/// the application delegate) and "RefreshBrowser" (observed by the main window); observers connect to the signal.
class NotificationCentre : public QObject {
    Q_OBJECT
public:
    /// The one centre of the process, made on first use.
    static NotificationCentre& defaultCenter();

    /// Posts a notification by name; a name with no signal posts nothing and returns false.
    bool postNotificationName(const QString& name);

signals:
    void dismissPanel();
    void refreshBrowser();
};

/// The names a notification can be posted by.
inline const QString kDismissPanelNotification = QStringLiteral("DismissPanel");
inline const QString kRefreshBrowserNotification = QStringLiteral("RefreshBrowser");

} // namespace tidewell
