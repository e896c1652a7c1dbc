#pragma once

#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

class QWidget;

namespace tidewell {

/// The answers an alert gives: the first button is kAlertFirstButtonReturn, the second one more, and so on.
inline constexpr int kAlertFirstButtonReturn = 1000;
inline constexpr int kAlertSecondButtonReturn = 1001;

/// What an alert shows: a message in bold, an informative text under it, and its buttons from the first (the
/// default, answered by Return) onwards. An alert with no buttons gets one "OK".
struct AlertContent {
    QString messageText;
    QString informativeText;
    QStringList buttons;
    /// The button answered by Escape, as an index into buttons; none when Escape answers nothing.
    std::optional<int> escapeButton;
};

/// Tidewell's alerts. Each runs on the main thread, modal to the whole application unless it is begun as a sheet.
///
/// Tests answer alerts without showing them: answerNextAlert queues an answer that the next alert takes instead
/// of showing itself; every alert, shown or answered, is recorded for shownAlerts.
class Alerts {
public:
    /// Runs an alert modally and returns the pressed button (kAlertFirstButtonReturn for the first).
    static int runModal(const AlertContent& content);

    /// The Yes/No confirmation: "Yes" first, with Return, "No" second, with Escape. Returns the pressed button:
    /// kAlertFirstButtonReturn means Yes. The window argument is not used; the alert is modal to the application
    /// (this serves both the view-controller and the window forms of the confirmation).
    static int createAlertForInformativeText(const QString& informativeText, const QString& messageText,
                                             QWidget* forWindow);

    /// The one-button "OK" alert. With runModal true it is begun as a sheet on forWindow (modal to that window
    /// only, returning at once); otherwise, or with no window, it runs modal to the application.
    static void createAlertForInformativeText(const QString& informativeText, const QString& messageText, bool runModal,
                                              QWidget* forWindow);

    /// Test seam: the next alert returns answer (kAlertFirstButtonReturn for its first button) without showing.
    /// Answers queue up, one per alert.
    static void answerNextAlert(int answer);
    /// Every alert since the last clearShownAlerts, oldest first.
    static const std::vector<AlertContent>& shownAlerts();
    static void clearShownAlerts();
    /// Drops queued answers and the record.
    static void resetSeam();
};

} // namespace tidewell
