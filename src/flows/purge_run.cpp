#include "flows/purge_run.hpp"

#include "base/log.hpp"
#include "cleaning/browser_check.hpp"
#include "sources/adult_history_section.hpp"

namespace tidewell {

bool runHourlyPurge(const DiskRoot& disk, const RunningApplications& running, CleaningEngine& engine,
                    const std::function<AdultWords()>& loadWords) {
    engine.setAdultWords(loadWords());
    if (!runningBrowsers(disk.layout(), running).empty()) {
        logLine("App Opens");
        return false;
    }
    logLine("Data Collection");
    engine.cleanTicked(RecordList{adultHistorySection(disk)});
    return true;
}

} // namespace tidewell
