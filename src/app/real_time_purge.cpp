#include "app/real_time_purge.hpp"

#include "base/log.hpp"
#include "flows/purge_run.hpp"

namespace tidewell {

RealTimePurger::RealTimePurger(DiskRoot disk, GrantedFolder grantedFolder, std::unique_ptr<RunningApplications> running,
                               std::function<AdultWords()> loadWords)
    : m_disk(std::move(disk)), m_grantedFolder(std::move(grantedFolder)), m_running(std::move(running)),
      m_loadWords(std::move(loadWords)) {}

RealTimePurger::~RealTimePurger() {
    joinAll();
}

bool RealTimePurger::run() {
    const std::optional<FolderGrant> granted = m_grantedFolder ? m_grantedFolder() : std::nullopt;
    if (!granted || !m_running) {
        return false;
    }
    // The granted folder is resolved and held for this run alone; the last run's engine goes once its tasks
    // (an hour old) have ended.
    m_engine = std::make_unique<CleaningEngine>(CleanMode::RealTime, boundaryOfGrant(*granted, m_disk));
    m_engine->setLeftReporter([](const LeftAsItWas& left) { logLine(describe(left)); });
    return runHourlyPurge(m_disk, *m_running, *m_engine, m_loadWords);
}

void RealTimePurger::joinAll() {
    if (m_engine) {
        static_cast<void>(m_engine->joinAll());
    }
}

} // namespace tidewell
