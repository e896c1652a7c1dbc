#pragma once

#include <QObject>
#include <QString>
#include <chrono>
#include <functional>

class QTimer;

namespace tidewell {

class ScheduledPurgeWatch;

/// When the window's hourly purge of adult-site history runs: a repeating timer, running while real-time scan is
/// switched on and the systemd user timer of `tidewell-cli schedule on` does not already run the purge (only one of
/// the two purges; the window's timer starts again when the systemd timer is turned off). Everything here runs on
/// the main thread.
class RealTimeScheduler : public QObject {
    Q_OBJECT
public:
    /// The hourly period.
    static constexpr std::chrono::milliseconds kPeriod{std::chrono::hours(1)};
    /// One purge, run on the main thread at each tick (RealTimePurger::run in the program).
    using Purge = std::function<void()>;

    /// A scheduler, switched off, that watches purgeUnitFolder (the user's systemd unit folder, which need not
    /// exist yet) for the systemd timer; an empty folder watches nothing.
    explicit RealTimeScheduler(const QString& purgeUnitFolder, QObject* parent = nullptr);
    ~RealTimeScheduler() override;
    RealTimeScheduler(const RealTimeScheduler&) = delete;
    RealTimeScheduler& operator=(const RealTimeScheduler&) = delete;

    /// The purge each tick runs; with none, a tick does nothing.
    void setPurge(Purge purge) { m_purge = std::move(purge); }
    /// Test seam: the period (kPeriod unless changed); takes effect at the next start.
    void setPeriod(std::chrono::milliseconds period) { m_period = period; }

    /// Switches the hourly purge on or off. Switching on (again) replaces any running timer, so there is never more
    /// than one, and the first tick comes one period after the call, none at once.
    void switchOn(bool on);

    /// Whether the systemd timer runs the hourly purge of this home.
    [[nodiscard]] bool purgeScheduledBySystem() const;
    /// The running timer; null while none runs.
    [[nodiscard]] QTimer* timer() const { return m_timer; }

signals:
    /// The systemd timer was turned on or off (the window's timer has followed already).
    void systemScheduleChanged();

private:
    void stopTimer();

    ScheduledPurgeWatch* m_systemSchedule = nullptr;
    Purge m_purge;
    std::chrono::milliseconds m_period = kPeriod;
    QTimer* m_timer = nullptr;
    bool m_switchedOn = false;
};

} // namespace tidewell
