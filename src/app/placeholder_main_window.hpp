#pragma once

#include <QWidget>

namespace tidewell {

class AppDelegate;

/// Stands in for the main window (the item table) until that window exists: a plain window titled "Tidewell" that,
/// as the real controller does when it loads, asks the delegate to restore the settings (makeAppChanges).
class PlaceholderMainWindow : public QWidget {
    Q_OBJECT
public:
    explicit PlaceholderMainWindow(AppDelegate& delegate, QWidget* parent = nullptr);
};

} // namespace tidewell
