#include "catalogue/size_walker.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>
#include <variant>

#include "base/folder_walk.hpp"

namespace tidewell {

// ---------------------------------------------------------------------------------------------------------------
// WalkPool

WalkPool::WalkPool(unsigned workers) {
    m_threads.reserve(workers);
    for (unsigned i = 0; i < workers; ++i) {
        m_threads.emplace_back([this](const std::stop_token& stop) { workerLoop(stop); });
    }
}

WalkPool::~WalkPool() {
    for (auto& thread : m_threads) {
        thread.request_stop();
    }
    m_wake.notify_all();
}

bool WalkPool::claimIdle() {
    // Most folders meet both threads busy: that answer needs no lock.
    if (m_idle.load(std::memory_order_relaxed) == 0) {
        return false;
    }
    std::lock_guard lock(m_mutex);
    if (m_idle == 0) {
        return false;
    }
    --m_idle;
    return true;
}

void WalkPool::runClaimed(std::function<void()> task) {
    {
        std::lock_guard lock(m_mutex);
        m_tasks.push_back(std::move(task));
        m_queued.fetch_add(1, std::memory_order_relaxed);
    }
    m_wake.notify_one();
}

namespace {

// Tells the core that this thread spins, so that it spends less power and leaves the other hardware thread room.
void relaxCore() {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#elif defined(__aarch64__) || defined(__arm__)
    __asm__ __volatile__("yield");
#endif
}

} // namespace

void WalkPool::lookForTask(std::unique_lock<std::mutex>& lock, const std::atomic<bool>* done) const {
    // A walk hands a folder over every few hundred microseconds while a thread is idle, and waking a thread that
    // sleeps costs a good part of that; so an idle thread looks for a while before it sleeps.
    constexpr int kLooks = 4000;
    lock.unlock();
    for (int look = 0; look < kLooks && m_queued.load(std::memory_order_relaxed) == 0 &&
                       (done == nullptr || !done->load(std::memory_order_relaxed));
         ++look) {
        relaxCore();
    }
    lock.lock();
}

void WalkPool::runFirst(std::unique_lock<std::mutex>& lock) {
    m_queued.fetch_sub(1, std::memory_order_relaxed);
    runFirstTask(m_tasks, lock);
    ++m_idle;
}

void WalkPool::workerLoop(const std::stop_token& stop) {
    std::unique_lock lock(m_mutex);
    ++m_idle;
    while (true) {
        lookForTask(lock, nullptr);
        if (!m_wake.wait(lock, stop, [this] { return !m_tasks.empty(); })) {
            return;
        }
        runFirst(lock);
    }
}

void WalkPool::helpUntil(const std::atomic<bool>& done) {
    std::unique_lock lock(m_mutex);
    ++m_idle;
    while (true) {
        lookForTask(lock, &done);
        m_wake.wait(lock, [this, &done] { return done || !m_tasks.empty(); });
        if (m_tasks.empty()) {
            break;
        }
        runFirst(lock);
    }
    --m_idle;
}

void WalkPool::signalDone(std::atomic<bool>& done) {
    std::lock_guard lock(m_mutex);
    done = true;
    m_wake.notify_all();
}

// ---------------------------------------------------------------------------------------------------------------
// Walker

namespace {

std::int64_t allocatedBytes(const struct stat& st) {
    return static_cast<std::int64_t>(st.st_blocks) * 512;
}

// An entry that vanished or changed kind (or was replaced by another folder) between the listing and the look at
// it is passed over: it was not unreadable, it is just not there any more.
bool vanished(int error) {
    return error == ENOENT || error == ENOTDIR || error == ELOOP || error == ESTALE;
}

} // namespace

/// One folder walked as a task of its own: the folder measured as a location, a folder right below it, or a
/// folder handed over to another thread. Its sums are kept in walk order, the tasks it handed over among them,
/// and folded once the last of them has ended, on whichever thread ends it.
struct WalkTask {
    WalkTask(WalkTask* above, UniqueFd open, const struct stat& look)
        : parent(above), folder(std::move(open)), seen(look) {}

    WalkTask* parent;
    UniqueFd folder; // taken by the walk
    struct stat seen;
    std::vector<std::variant<TreeSum, std::unique_ptr<WalkTask>>> parts;
    // Its own walk and each task it handed over, until they end.
    std::atomic<unsigned> unfinished{1};
    TreeSum sum;
    // The measured location's task: its sum is complete (set under the pool's lock), and the sums of the folders
    // right below it.
    std::atomic<bool> done = false;
    std::vector<std::pair<SizeCounter::FolderId, TreeSum>> below;
};

class Walker {
public:
    explicit Walker(SizeCounter& counter) : m_counter(counter) {}

    /// Sums the tree below a measured location's folder, in pre-order as a deep enumeration does, and returns
    /// once every part handed over has ended. Each folder right below it is a task of its own, so its sum can be
    /// noted.
    void measure(WalkTask& location) {
        run(location, true);
        m_counter.m_pool.helpUntil(location.done);
    }

private:
    void run(WalkTask& task, bool isLocation) {
        FolderWalk walk(FolderWalk::Reread::OnFromWhereLeft);
        std::int64_t bytes = 0;
        bool stopped = !walk.enter(std::move(task.folder), task.seen);
        while (walk.depth() > 0 && !stopped) {
            if (m_counter.m_stop.stop_requested()) {
                stopped = true;
                break;
            }
            const FolderWalk::Event event = walk.next();
            if (event.step != FolderWalk::Step::Entry) {
                stopped = event.step == FolderWalk::Step::Failed || !event.complete;
                continue;
            }
            struct stat st {};
            if (::fstatat(event.folderFd, event.name, &st, AT_SYMLINK_NOFOLLOW) != 0) {
                stopped = !vanished(errno);
                continue;
            }
            if (!S_ISDIR(st.st_mode)) {
                bytes += allocatedBytes(st);
                continue;
            }
            if (m_counter.m_reuse) {
                if (const auto known = m_counter.m_measured.find({st.st_dev, st.st_ino});
                    known != m_counter.m_measured.end()) {
                    bytes += known->second.bytes;
                    stopped = known->second.stopped;
                    continue;
                }
            }
            int error = 0;
            UniqueFd child = openFolderLookedAt(event.folderFd, event.name, st, error);
            if (!child.valid()) {
                stopped = !vanished(error);
                continue;
            }
            // Each folder right below a location is a task of its own, so that its sum can be noted. Below that,
            // a folder is handed over when a thread is idle, and otherwise walked on within this walk.
            const bool handOver = m_counter.m_pool.claimIdle();
            if (!handOver && !isLocation) {
                if (!walk.enter(std::move(child), st)) {
                    stopped = true;
                }
                continue;
            }
            if (bytes != 0) {
                task.parts.emplace_back(TreeSum{bytes, false});
                bytes = 0;
            }
            WalkTask& part = *std::get<std::unique_ptr<WalkTask>>(
                task.parts.emplace_back(std::make_unique<WalkTask>(&task, std::move(child), st)));
            task.unfinished.fetch_add(1, std::memory_order_relaxed);
            if (handOver) {
                m_counter.m_pool.runClaimed([counter = &m_counter, &part] { Walker(*counter).run(part, false); });
            } else {
                run(part, false);
            }
        }
        task.parts.emplace_back(TreeSum{bytes, stopped});
        finish(task);
    }

    // Ends a task's own walk, or that of one it handed over. The thread that ends a task's last part folds its
    // sums and goes on to the task above it, so no task ever waits for another.
    void finish(WalkTask& ended) {
        for (WalkTask* task = &ended; task != nullptr;) {
            if (task->unfinished.fetch_sub(1, std::memory_order_acq_rel) != 1) {
                return;
            }
            fold(*task);
            WalkTask* const parent = task->parent;
            if (parent == nullptr) {
                m_counter.m_pool.signalDone(task->done);
                return;
            }
            task = parent;
        }
    }

    static void fold(WalkTask& task) {
        TreeSum sum;
        for (const auto& part : task.parts) {
            if (const auto* known = std::get_if<TreeSum>(&part)) {
                sum = sum.then(*known);
                continue;
            }
            const WalkTask& below = *std::get<std::unique_ptr<WalkTask>>(part);
            if (task.parent == nullptr) {
                task.below.emplace_back(SizeCounter::FolderId{below.seen.st_dev, below.seen.st_ino}, below.sum);
            }
            sum = sum.then(below.sum);
        }
        task.parts.clear();
        task.sum = sum;
    }

    SizeCounter& m_counter;
};

// ---------------------------------------------------------------------------------------------------------------
// SizeCounter

SizeCounter::SizeCounter(unsigned workers, std::stop_token stop, HeldFolder within)
    : m_stop(std::move(stop)), m_within(std::move(within)), m_pool(workers) {}

unsigned SizeCounter::defaultWorkers() {
    const unsigned cores = std::thread::hardware_concurrency();
    return cores > 1 ? cores - 1 : 0;
}

std::optional<std::pair<UniqueFd, std::string>> SizeCounter::parentOf(const std::string& path) const {
    std::optional<std::vector<std::string>> components = m_within.componentsInside(path);
    if (!components) {
        return std::nullopt;
    }
    Reach failure = Reach::Missing;
    UniqueFd parent =
        m_within.openFolder(std::span(*components).first(components->size() - 1), failure, HeldFolder::Mounts::Any);
    if (!parent.valid()) {
        return std::nullopt;
    }
    return std::pair{std::move(parent), std::move(components->back())};
}

TreeSum SizeCounter::walkBelow(int parentFd, const std::string& name, const struct stat& st) {
    const FolderId id{st.st_dev, st.st_ino};
    int error = 0;
    UniqueFd fd = openFolderLookedAt(parentFd, name.c_str(), st, error);
    if (!fd.valid()) {
        const TreeSum unreadable{0, true};
        m_measured[id] = unreadable;
        return unreadable;
    }
    if (m_reuse) {
        if (const auto known = m_measured.find(id); known != m_measured.end()) {
            return known->second;
        }
    }
    WalkTask location(nullptr, std::move(fd), st);
    Walker(*this).measure(location);
    if (!m_stop.stop_requested()) {
        m_measured[id] = location.sum;
        m_measured.insert(location.below.begin(), location.below.end());
    }
    return location.sum;
}

TreeSum SizeCounter::measureFolder(const std::string& path) {
    const std::optional<std::pair<UniqueFd, std::string>> parent = parentOf(path);
    struct stat st {};
    if (!parent || ::fstatat(parent->first.get(), parent->second.c_str(), &st, AT_SYMLINK_NOFOLLOW) != 0 ||
        !S_ISDIR(st.st_mode)) {
        return {};
    }
    return walkBelow(parent->first.get(), parent->second, st);
}

std::int64_t SizeCounter::allocatedSize(const std::string& path) {
    const std::optional<std::pair<UniqueFd, std::string>> parent = parentOf(path);
    struct stat st {};
    if (!parent || ::fstatat(parent->first.get(), parent->second.c_str(), &st, AT_SYMLINK_NOFOLLOW) != 0) {
        return 0;
    }
    if (!S_ISDIR(st.st_mode)) {
        return allocatedBytes(st);
    }
    return walkBelow(parent->first.get(), parent->second, st).bytes;
}

} // namespace tidewell
