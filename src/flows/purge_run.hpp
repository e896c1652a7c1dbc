#pragma once

#include <functional>

#include "cleaning/adult_words.hpp"
#include "cleaning/cleaning_engine.hpp"
#include "layout/disk_root.hpp"
#include "platform/running_apps.hpp"

namespace tidewell {

/// One run of the hourly purge of adult-site history. Loads the word list afresh into the engine, then looks at the
/// running programs: while a browser of the layout runs (on a macOS disk Safari, Google Chrome or Firefox) it logs
/// "App Opens" and does nothing else. Otherwise it logs "Data Collection" and hands a one-section catalogue, the
/// Adult History section with every item ticked, to the engine. engine: a RealTime engine, whose tasks may still
/// run when this returns (the caller joins them or lets the engine own them). Returns whether it purged.
bool runHourlyPurge(const DiskRoot& disk, const RunningApplications& running, CleaningEngine& engine,
                    const std::function<AdultWords()>& loadWords = loadAdultWords);

} // namespace tidewell
