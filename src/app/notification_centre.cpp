#include "app/notification_centre.hpp"

namespace tidewell {

NotificationCentre& NotificationCentre::defaultCenter() {
    static NotificationCentre centre;
    return centre;
}

bool NotificationCentre::postNotificationName(const QString& name) {
    if (name == kDismissPanelNotification) {
        emit dismissPanel();
        return true;
    }
    if (name == kRefreshBrowserNotification) {
        emit refreshBrowser();
        return true;
    }
    return false;
}

} // namespace tidewell
