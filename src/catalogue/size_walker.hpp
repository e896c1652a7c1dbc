#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
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
/// to a worker that is idle at that moment, so every hand-over is picked up at once and a walk never waits for
/// a queue. A walk that has finished its own part and waits for folders it handed over counts as idle meanwhile
/// and takes folders over too, so no core sits waiting while there is walking left.
class WalkPool {
public:
    explicit WalkPool(unsigned workers);
    ~WalkPool();
    WalkPool(const WalkPool&) = delete;
    WalkPool& operator=(const WalkPool&) = delete;

    /// Runs task on an idle worker and returns true, or returns false at once when no worker is idle.
    bool tryRun(std::function<void()> task);

    /// Runs tasks handed over meanwhile on the calling thread until ready() holds. Whoever ends a task wakes the
    /// helpers, so ready() should turn true only when a task ends (a handed-over walk's result is set).
    void helpUntil(const std::function<bool()>& ready);

private:
    void workerLoop(const std::stop_token& stop);
    // Runs the first task with the lock released and wakes the helpers waiting for a result when it ends.
    void runTask(std::unique_lock<std::mutex>& lock);

    std::mutex m_mutex;
    std::condition_variable_any m_wake;
    TaskQueue m_tasks;
    unsigned m_idle = 0;
    std::vector<std::jthread> m_threads;
};

/// Measures locations by allocated size for one scan: each location's size and the folder sums of the extension
/// inventories. Every location is reached below one held folder (the home, for a scan), one component at a time,
/// so links are never followed, not on the way to a location either; a location outside that folder measures
/// nothing. A folder adds nothing of its own; a walk stops at the first unreadable entry and keeps what it had
/// summed. Walks are iterative (a 10,000-level tree is fine) and keep memory and open
/// descriptors proportional to depth, whatever the number of files.
///
/// Within one counter, a folder that was measured before, as a location or as a folder right below one, is not
/// walked again when a later walk or location meets it: its earlier sum is reused, which gives the very result a
/// fresh walk of an unchanged disk gives. The catalogue measures the browsers' cache folders, then the whole cache
/// folder (Library/Caches, ~/.cache), then folders inside it (~/.cache/thumbnails): each subtree is walked once.
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
    using FolderId = std::pair<dev_t, ino_t>;

    /// Walks the folder `name` of the folder open at parentFd, which a look found to be st.
    TreeSum walkBelow(int parentFd, const std::string& name, const struct stat& st);
    /// Notes the sum of a folder met below a location, from any walking thread; kept once the walk ends whole.
    void noteMeasured(const struct stat& st, TreeSum sum);
    /// The folder open below the held one that holds a location, with the location's last component.
    std::optional<std::pair<UniqueFd, std::string>> parentOf(const std::string& path) const;

    std::stop_token m_stop;
    HeldFolder m_within;
    WalkPool m_pool;
    bool m_reuse = true;
    // The levels of folders below a location whose sums are noted, and at most how many sums are kept, so that
    // memory stays bounded however wide a tree is.
    static constexpr unsigned kNotedLevels = 1;
    static constexpr std::size_t kMaxNoted = 100000;

    // Written only between walks, on the calling thread; read by the walkers.
    std::map<FolderId, TreeSum> m_measured;
    // The sums noted during the running walk, moved into m_measured when it ends.
    std::mutex m_foundMutex;
    std::vector<std::pair<FolderId, TreeSum>> m_found;
};

} // namespace tidewell
