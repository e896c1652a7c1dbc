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
        runFirstTask(m_tasks, lock);
        ++m_idle;
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

    TreeSum total() {
        TreeSum result;
        for (auto& part : m_parts) {
            if (auto* known = std::get_if<TreeSum>(&part)) {
                result = result.then(*known);
            } else {
                result = result.then(std::get<std::future<TreeSum>>(part).get());
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
    explicit Walker(SizeCounter& counter) : m_counter(counter) {}

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
            if (!handOver(child, st, sums, bytes) && !walk.enter(std::move(child), st)) {
                stopped = true;
            }
        }
        sums.add(TreeSum{bytes, stopped});
        return sums.total();
    }

private:
    // Gives the folder to an idle worker, if one is idle at this moment; the walk goes on with its next entry.
    bool handOver(UniqueFd& child, const struct stat& st, OrderedSums& sums, std::int64_t& bytes) {
        auto task = std::make_shared<std::packaged_task<TreeSum()>>(
            [counter = &m_counter, fd = child.get(), st] { return Walker(*counter).walk(UniqueFd(fd), st); });
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
    const TreeSum sum = Walker(*this).walk(std::move(fd), st);
    if (!m_stop.stop_requested()) {
        m_measured[id] = sum;
    }
    return sum;
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
