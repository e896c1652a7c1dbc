#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include "base/file_url.hpp"
#include "base/held_folder.hpp"
#include "base/task_queue.hpp"

namespace tidewell {

/// What a walk found: the allocated bytes of the entries it summed, and whether it ended early at an unreadable
/// entry. Sums taken in walk order combine with `then`: once a walk has stopped, nothing after it counts.
struct TreeSum {
    std::int64_t bytes = 0;
    bool stopped = false;

    [[nodiscard]] TreeSum then(TreeSum next) const {
        return stopped ? *this : TreeSum{bytes + next.bytes, next.stopped};
    }
    friend bool operator==(const TreeSum&, const TreeSum&) = default;
};

/// A few threads that take over folders from a running walk while they are idle. A folder is handed over only
/// to a thread that is idle at that moment, so every hand-over is picked up at once and a walk never waits for
/// a queue. Tasks never wait for one another: a walk that hands a folder over goes on without waiting for it, and
/// its sum is completed by whichever thread ends last. The only wait is the measuring thread's, for the walk it
/// started, and it takes hand-overs meanwhile, so both cores stay busy to the end of every walk.
class WalkPool {
public:
    explicit WalkPool(unsigned workers);
    ~WalkPool();
    WalkPool(const WalkPool&) = delete;
    WalkPool& operator=(const WalkPool&) = delete;

    /// Claims an idle thread for a task to come and returns true, or returns false at once when none is idle.
    bool claimIdle();
    /// Runs task on the thread claimed for it.
    void runClaimed(std::function<void()> task);

    /// Takes hand-overs on the calling thread, as one more idle worker, until `signalDone(done)` is called.
    void helpUntil(const std::atomic<bool>& done);
    /// Sets done and wakes the thread helping until it is set.
    void signalDone(std::atomic<bool>& done);

private:
    void workerLoop(const std::stop_token& stop);
    /// Looks for a hand-over (or done) for a short while with the lock (held on entry) released.
    void lookForTask(std::unique_lock<std::mutex>& lock, const std::atomic<bool>* done) const;
    /// Runs the first hand-over with the lock released and counts the thread idle again.
    void runFirst(std::unique_lock<std::mutex>& lock);

    std::mutex m_mutex;
    std::condition_variable_any m_wake;
    TaskQueue m_tasks;
    // Changed under the mutex; read without it for a quick "none".
    std::atomic<unsigned> m_idle = 0;
    std::atomic<unsigned> m_queued = 0; // m_tasks.size(), to look at without the lock
    std::vector<std::jthread> m_threads;
};

/// Measures locations by allocated size for one scan: each location's size and the folder sums of the extension
/// inventories. Every location is reached below one held folder (the home, for a scan), one component at a time,
/// so links are never followed, not on the way to a location either; a location outside that folder measures
/// nothing. A folder adds nothing of its own; a walk stops at the first unreadable entry and keeps what it had
/// summed. Walks are iterative (a 10,000-level tree is fine) and keep memory and open
/// descriptors proportional to depth, whatever the number of files. One thread measures at a time.
///
/// Within one counter, each folder is walked once. A folder that was measured as a location before is not walked
/// again when a later walk meets it, and the folders right below a measured location keep their sums too, for a
/// later location that is one of them: the earlier sum is reused, which gives the very result a fresh walk of an
/// unchanged disk gives. The catalogue measures the browsers' cache folders and then the whole caches folder
/// (~/Library/Caches, ~/.cache), and on Linux ~/.cache/thumbnails after ~/.cache, so this halves the work.
class SizeCounter {
public:
    /// workers: extra threads that share the walking (0 walks on the calling thread alone). within: the folder
    /// every location is reached below ("/" when not given).
    explicit SizeCounter(unsigned workers = defaultWorkers(), std::stop_token stop = {},
                         HeldFolder within = HeldFolder("/"));

    static unsigned defaultWorkers();

    /// The size of one location. A folder (not a link to one): the sum of every file and link below it. Any
    /// other entry: its own allocated size. A location that does not exist, lies outside the held folder or behind
    /// a link: 0.
    std::int64_t allocatedSize(const std::string& path);
    std::int64_t allocatedSize(const FileUrl& url) { return allocatedSize(url.path); }

    /// The walk below a folder, its own entry excluded; a folder that cannot be opened is {0, stopped}. A path
    /// that is not a folder (outside the held folder, behind a link, missing) gives {0, false}.
    TreeSum measureFolder(const std::string& path);

    /// Turns the reuse of earlier folder sums off (for comparisons; results are the same either way).
    void setReuse(bool reuse) { m_reuse = reuse; }

private:
    friend class Walker;
    friend struct WalkTask;
    using FolderId = std::pair<dev_t, ino_t>;

    /// Walks the folder `name` of the folder open at parentFd, which a look found to be st, and notes its sum.
    TreeSum walkBelow(int parentFd, const std::string& name, const struct stat& st);
    /// The folder open below the held one that holds a location, with the location's last component.
    std::optional<std::pair<UniqueFd, std::string>> parentOf(const std::string& path) const;

    std::stop_token m_stop;
    HeldFolder m_within;
    WalkPool m_pool;
    bool m_reuse = true;
    // Written only between walks, on the measuring thread; read by the walkers.
    std::map<FolderId, TreeSum> m_measured;
};

} // namespace tidewell
