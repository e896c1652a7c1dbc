#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "cleaning/adult_words.hpp"
#include "cleaning/cleaning_engine.hpp"
#include "layout/disk_root.hpp"
#include "platform/folder_grant.hpp"
#include "platform/running_apps.hpp"

namespace tidewell {

/// The hourly purge of the window face, what each tick of the real-time timer runs: `runHourlyPurge`
/// (flows/purge_run) with a real-time cleaning engine on the disk whose deletion boundary is the started grant's
/// folder, held afresh for each run. The purge's per-database tasks run concurrently off the calling (main) thread;
/// the purger keeps the engine, and with it the tasks, until the next run or its own end, and then waits for them.
/// Each database left as it was is logged, with the reason, as soon as it is known.
class RealTimePurger {
public:
    /// The started grant, asked at every run; nothing while no grant is started.
    using GrantedFolder = std::function<std::optional<FolderGrant>()>;

    RealTimePurger(DiskRoot disk, GrantedFolder grantedFolder, std::unique_ptr<RunningApplications> running,
                   std::function<AdultWords()> loadWords = loadAdultWords);
    /// Waits for the purge tasks still running.
    ~RealTimePurger();
    RealTimePurger(const RealTimePurger&) = delete;
    RealTimePurger& operator=(const RealTimePurger&) = delete;

    /// One run. Without a started grant nothing may be deleted, so nothing happens (not even a log line).
    /// Otherwise `runHourlyPurge`: while a browser runs it logs "App Opens" and purges nothing. Returns whether
    /// it purged.
    bool run();

    /// Waits until every purge task started so far has ended.
    void joinAll();

private:
    DiskRoot m_disk;
    GrantedFolder m_grantedFolder;
    std::unique_ptr<RunningApplications> m_running;
    std::function<AdultWords()> m_loadWords;
    std::unique_ptr<CleaningEngine> m_engine;
};

} // namespace tidewell
