#pragma once

#include <QString>
#include <QWidget>
#include <QStringList>
#include <optional>
#include <vector>

namespace tidewell {

/// The answers an alert gives: the first button is kAlertFirstButton, the second one more, and so on.
inline constexpr int kAlertFirstButton = 1000;
inline constexpr int kAlertSecondButton = 1001;

/// What an alert shows: a message in bold, an informative text under it, and its buttons from the first (the
/// default, answered by Return) onwards. An alert with no buttons gets one "OK".
struct AlertContent {
    QString messageText;
    QString informativeText;
    QStringList buttons;
    /// The button answered by Escape, as an index into buttons; none when Escape answers nothing.
    std::optional<int> escapeButton;
    /// The window the alert belongs to: it is centred on it. None: centred on the screen.
    QWidget* parent = nullptr;
};

/// Tidewell's alerts. Each runs on the main thread, modal to the whole application.
///
/// Tests answer alerts without showing them: answerNextAlert queues an answer that the next alert takes instead
/// of showing itself; every alert, shown or answered, is recorded for shownAlerts.
class Alerts {
public:
    /// Runs an alert modally and returns the pressed button (kAlertFirstButton for the first). Closing it from its
    /// title bar counts as its last button.
    static int runModal(const AlertContent& content);

    /// The Yes/No confirmation: "Yes" first, with Return, "No" second, with Escape. True only for "Yes".
    static bool confirm(const QString& messageText, const QString& informativeText, QWidget* parent = nullptr);

    /// Shows an alert over its parent window without waiting for it (a sheet: that window waits, the rest of
    /// Tidewell goes on); its button closes it. A queued test answer takes it instead, and then it is not shown.
    /// Returns the box shown, or null.
    static QWidget* showSheet(const AlertContent& content);

    /// Test seam: the next alert returns answer (kAlertFirstButton for its first button) without showing.
    /// Answers queue up, one per alert.
    static void answerNextAlert(int answer);
    /// Every alert since the last clearShownAlerts, oldest first.
    static const std::vector<AlertContent>& shownAlerts();
    static void clearShownAlerts();
    /// Drops queued answers and the record.
    static void resetSeam();
};

} // namespace tidewell
