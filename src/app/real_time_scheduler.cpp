#include "app/real_time_scheduler.hpp"

#include <QTimer>

#include "app/scheduled_purge_watch.hpp"

namespace tidewell {

RealTimeScheduler::RealTimeScheduler(const QString& purgeUnitFolder, QObject* parent) : QObject(parent) {
    if (purgeUnitFolder.isEmpty()) {
        return;
    }
    m_systemSchedule = new ScheduledPurgeWatch(purgeUnitFolder, this);
    connect(m_systemSchedule, &ScheduledPurgeWatch::changed, this, [this] {
        switchOn(m_switchedOn);
        emit systemScheduleChanged();
    });
}

RealTimeScheduler::~RealTimeScheduler() {
    stopTimer();
}

void RealTimeScheduler::switchOn(bool on) {
    m_switchedOn = on;
    stopTimer();
    if (!on || purgeScheduledBySystem()) {
        return;
    }
    m_timer = new QTimer(this);
    m_timer->setObjectName(QStringLiteral("realTimeTimer"));
    m_timer->setInterval(m_period);
    connect(m_timer, &QTimer::timeout, this, [this] {
        if (m_purge) {
            m_purge();
        }
    });
    m_timer->start();
}

bool RealTimeScheduler::purgeScheduledBySystem() const {
    return m_systemSchedule != nullptr && m_systemSchedule->isOn();
}

void RealTimeScheduler::stopTimer() {
    delete m_timer;
    m_timer = nullptr;
}

} // namespace tidewell
