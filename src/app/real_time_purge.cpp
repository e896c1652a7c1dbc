#include "app/real_time_purge.hpp"

#include "cleaning/adult_history_section.hpp"

namespace tidewell {

RealTimePurger::RealTimePurger(DiskRoot disk, GrantedFolder grantedFolder, std::unique_ptr<RunningApplications> running,
                               std::function<AdultWords()> loadWords)
    : m_disk(std::move(disk)), m_grantedFolder(std::move(grantedFolder)), m_running(std::move(running)),
      m_loadWords(std::move(loadWords)) {}

RealTimePurger::~RealTimePurger() {
    joinAll();
}

bool RealTimePurger::run() {
    const std::optional<std::string> granted = m_grantedFolder ? m_grantedFolder() : std::nullopt;
    if (!granted || !m_running) {
        return false;
    }
    // The boundary is fixed when an engine is made, so a grant for another folder needs an engine of its own;
    // the old one goes once its tasks have ended.
    if (!m_engine || m_engine->boundary().grantedFolder() != DeletionBoundary(*granted).grantedFolder()) {
        m_engine = std::make_unique<CleaningEngine>(CleanMode::RealTime, DeletionBoundary(*granted));
    }
    return addAdultContents(m_disk, *m_running, *m_engine, m_loadWords);
}

void RealTimePurger::joinAll() {
    if (m_engine) {
        m_engine->joinAll();
    }
}

} // namespace tidewell
