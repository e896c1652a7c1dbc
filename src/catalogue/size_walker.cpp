#include "catalogue/size_walker.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <future>
#include <memory>
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

bool WalkPool::tryRun(std::function<void()> task) {
    {
        std::lock_guard lock(m_mutex);
        if (m_idle == 0) {
            return false;
        }
        --m_idle;
        m_tasks.push_back(std::move(task));
    }
    m_wake.notify_one();
    return true;
}

void WalkPool::workerLoop(const std::stop_token& stop) {
    std::unique_lock lock(m_mutex);
    ++m_idle;
    while (true) {
        if (!m_wake.wait(lock, stop, [this] { return !m_tasks.empty(); })) {
            return;
        }
        runTask(lock);
        ++m_idle;
    }
}

void WalkPool::runTask(std::unique_lock<std::mutex>& lock) {
    runFirstTask(m_tasks, lock);
    m_wake.notify_all();
}

namespace {
// How many handed-over walks this thread runs inside its waits, one inside the other. Each is a frame on the
// thread's stack, and a deep chain of folders would otherwise stack one per level.
thread_local unsigned t_helping = 0;
constexpr unsigned kMaxHelping = 4;
} // namespace

void WalkPool::helpUntil(const std::function<bool()>& ready) {
    std::unique_lock lock(m_mutex);
    if (t_helping >= kMaxHelping) {
        m_wake.wait(lock, ready);
        return;
    }
    while (!ready()) {
        ++m_idle;
        m_wake.wait(lock, [&] { return !m_tasks.empty() || ready(); });
        if (m_tasks.empty()) {
            --m_idle; // ready, and no hand-over counted on this thread
            return;
        }
        ++t_helping;
        runTask(lock); // the hand-over that took this thread's idle count
        --t_helping;
    }
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

// The sums of one walk in walk order: what the walk summed itself, interleaved with the sums of folders handed
// to other workers. Neighbouring known sums are folded at once, so the list stays as short as the number of
// hand-overs still running.
class OrderedSums {
public:
    void add(TreeSum sum) {
        if (!m_parts.empty()) {
            if (auto* last = std::get_if<TreeSum>(&m_parts.back())) {
                *last = last->then(sum);
                return;
            }
        }
        m_parts.emplace_back(sum);
    }

    void add(std::future<TreeSum> pending) {
        m_parts.emplace_back(std::move(pending));
        settleReady();
    }

    // Waits for the sums still pending, walking other hand-overs meanwhile.
    TreeSum total(WalkPool& pool) {
        TreeSum result;
        for (auto& part : m_parts) {
            if (auto* known = std::get_if<TreeSum>(&part)) {
                result = result.then(*known);
            } else {
                auto& pending = std::get<std::future<TreeSum>>(part);
                pool.helpUntil([&pending] { return pending.wait_for(std::chrono::seconds(0)) == std::future_status::ready; });
                result = result.then(pending.get());
            }
        }
        return result;
    }

private:
    void settleReady() {
        std::vector<std::variant<TreeSum, std::future<TreeSum>>> settled;
        for (auto& part : m_parts) {
            if (auto* pending = std::get_if<std::future<TreeSum>>(&part);
                pending != nullptr && pending->wait_for(std::chrono::seconds(0)) == std::future_status::ready) {
                part = pending->get();
            }
            if (!settled.empty() && std::holds_alternative<TreeSum>(part) &&
                std::holds_alternative<TreeSum>(settled.back())) {
                auto& last = std::get<TreeSum>(settled.back());
                last = last.then(std::get<TreeSum>(part));
            } else {
                settled.push_back(std::move(part));
            }
        }
        m_parts = std::move(settled);
    }

    std::vector<std::variant<TreeSum, std::future<TreeSum>>> m_parts;
};

} // namespace

class Walker {
public:
    // recordLevels: how many levels of folders below the walk's first one have their own sums noted for reuse.
    Walker(SizeCounter& counter, unsigned recordLevels) : m_counter(counter), m_recordLevels(recordLevels) {}

    // Sums the tree below the folder open at fd (which the walk takes), in pre-order, as a deep enumeration does.
    TreeSum walk(UniqueFd fd, const struct stat& seen) {
        FolderWalk walk(FolderWalk::Reread::OnFromWhereLeft);
        if (!walk.enter(std::move(fd), seen)) {
            return {0, true};
        }
        OrderedSums sums;
        std::int64_t bytes = 0;
        bool stopped = false;
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
            // A folder right below the first is walked on its own so that its sum can be noted: a later location
            // inside this one (a cache folder inside the whole cache) then costs nothing.
            const unsigned levels = walk.depth() == 1 && m_recordLevels > 0 ? m_recordLevels : 0;
            if (handOver(child, st, levels, sums, bytes)) {
                continue;
            }
            if (levels > 0) {
                const TreeSum sub = Walker(m_counter, levels - 1).walk(std::move(child), st);
                m_counter.noteMeasured(st, sub);
                sums.add(TreeSum{bytes, false});
                bytes = 0;
                sums.add(sub);
                stopped = sub.stopped;
            } else if (!walk.enter(std::move(child), st)) {
                stopped = true;
            }
        }
        sums.add(TreeSum{bytes, stopped});
        return sums.total(m_counter.m_pool);
    }

private:
    // Gives the folder to an idle worker, if one is idle at this moment; the walk goes on with its next entry.
    // With levels, the worker notes the folder's sum as the walk itself would have.
    bool handOver(UniqueFd& child, const struct stat& st, unsigned levels, OrderedSums& sums, std::int64_t& bytes) {
        auto task = std::make_shared<std::packaged_task<TreeSum()>>([counter = &m_counter, fd = child.get(), st, levels] {
            const TreeSum sum = Walker(*counter, levels > 0 ? levels - 1 : 0).walk(UniqueFd(fd), st);
            if (levels > 0) {
                counter->noteMeasured(st, sum);
            }
            return sum;
        });
        std::future<TreeSum> result = task->get_future();
        if (!m_counter.m_pool.tryRun([task] { (*task)(); })) {
            return false;
        }
        child.release(); // the worker's walk owns it now
        sums.add(TreeSum{bytes, false});
        bytes = 0;
        sums.add(std::move(result));
        return true;
    }

    SizeCounter& m_counter;
    unsigned m_recordLevels;
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
    const TreeSum sum = Walker(*this, kNotedLevels).walk(std::move(fd), st);
    std::vector<std::pair<FolderId, TreeSum>> found;
    {
        std::lock_guard lock(m_foundMutex);
        found.swap(m_found);
    }
    if (!m_stop.stop_requested()) {
        m_measured[id] = sum;
        m_measured.insert(found.begin(), found.end());
    }
    return sum;
}

void SizeCounter::noteMeasured(const struct stat& st, TreeSum sum) {
    std::lock_guard lock(m_foundMutex);
    if (m_measured.size() + m_found.size() < kMaxNoted) {
        m_found.emplace_back(FolderId{st.st_dev, st.st_ino}, sum);
    }
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
