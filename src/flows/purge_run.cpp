#include "flows/purge_run.hpp"

#include <string_view>

#include "base/log.hpp"
#include "sources/adult_history_section.hpp"

namespace tidewell {

bool addAdultContents(const DiskRoot& disk, const RunningApplications& running, CleaningEngine& engine,
                      const std::function<AdultWords()>& loadWords) {
    engine.setAdultWords(loadWords());
    const std::set<std::string> names = running.launchedApplicationNames();
    for (const std::string_view browser : {"Safari", "Google Chrome", "Firefox"}) {
        if (names.contains(std::string(browser))) {
            logLine("App Opens");
            return false;
        }
    }
    logLine("Data Collection");
    engine.cleanSelected(RecordList{makeAdultHistorySection(disk)});
    return true;
}

} // namespace tidewell
