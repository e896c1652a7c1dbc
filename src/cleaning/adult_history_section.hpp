#pragma once

#include <functional>

#include "catalogue/scan_driver.hpp"
#include "cleaning/adult_words.hpp"
#include "cleaning/cleaning_engine.hpp"
#include "platform/running_apps.hpp"

namespace tidewell {

/// The "Adult History" section: exactly "Name" "Adult History", "Img" "adult", "List", "isChecked" true and
/// "isEnabled" true (no "Size": nothing is measured). Its items, in the order Chrome, Safari, Firefox and each
/// only when the browser's application exists, are exactly "NameText" ("Google Chrome Adult History", "Safari
/// Adult History", "Firefox Adult History"), "isChecked" true, "isEnabled" true and "Path", the file URL of the
/// browser's history database: Chrome's "Default/History", Safari's "History.db", and "places.sqlite" of the
/// chosen Firefox profile. Whether a database exists is not looked at. Firefox without a profile whose name
/// contains "default" has no database, and then no item at all (an item without a "Path" would clean nothing).
/// With no browser installed the section is still there, with an empty list.
[[nodiscard]] RecordPtr makeAdultHistorySection(const DiskRoot& disk);

/// `addAdultContent`: the "Adult History" section at the fourth position of the scan.
BuilderOutcome addAdultContent(ScanEnv& env);

/// `addAdultContents`: one run of the hourly purge. Loads the word list afresh into the engine, then reads the
/// running applications: while "Safari", "Google Chrome" or "Firefox" runs it logs "App Opens" and does nothing
/// else. Otherwise it logs "Data Collection" and hands a one-section catalogue, the Adult History section with
/// every item ticked, to the engine's `cleanSelected`. engine: a RealTime engine, whose tasks may still run when
/// this returns (the caller joins them or lets the engine own them). Returns whether it purged.
bool addAdultContents(const DiskRoot& disk, const RunningApplications& running, CleaningEngine& engine,
                      const std::function<AdultWords()>& loadWords = loadAdultWords);

} // namespace tidewell
