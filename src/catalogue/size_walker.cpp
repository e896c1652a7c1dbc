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

#include "base/folders.hpp"

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
        auto task = std::move(m_tasks.front());
        m_tasks.pop_front();
        lock.unlock();
        task();
        lock.lock();
        ++m_idle;
    }
}

// ---------------------------------------------------------------------------------------------------------------
// Walker

namespace {

// Open folders kept per walk; deeper levels are closed and found again through ".." on the way back up.
constexpr std::size_t kMaxOpenLevels = 32;

constexpr int kOpenFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

std::int64_t allocatedBytes(const struct stat& st) {
    return static_cast<std::int64_t>(st.st_blocks) * 512;
}

bool isDotOrDotDot(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

// An entry that vanished or changed kind between the listing and the look at it is passed over: it was not
// unreadable, it is just not there any more.
bool vanished(int error) {
    return error == ENOENT || error == ENOTDIR || error == ELOOP;
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

struct Level {
    DIR* dir = nullptr; // null while closed to spare descriptors
    dev_t dev = 0;
    ino_t ino = 0;
    std::size_t consumed = 0; // entries read so far, to find the place again after reopening
};

} // namespace

class Walker {
public:
    explicit Walker(SizeCounter& counter) : m_counter(counter) {}

    // Walks the folder open at fd (which the walk owns), in pre-order, as a deep enumeration does.
    TreeSum walk(int fd, dev_t dev, ino_t ino) {
        OrderedSums sums;
        std::int64_t bytes = 0;
        bool stopped = false;
        if (!push(fd, dev, ino)) {
            return {0, true};
        }
        while (!m_levels.empty()) {
            if (m_counter.m_stop.stop_requested()) {
                stopped = true;
                break;
            }
            Level& top = m_levels.back();
            errno = 0;
            const dirent* entry = ::readdir(top.dir);
            if (entry == nullptr) {
                if (errno != 0 || !climb()) {
                    stopped = true;
                    break;
                }
                continue;
            }
            ++top.consumed;
            if (isDotOrDotDot(entry->d_name)) {
                continue;
            }
            const int parentFd = ::dirfd(top.dir);
            struct stat st {};
            if (::fstatat(parentFd, entry->d_name, &st, AT_SYMLINK_NOFOLLOW) != 0) {
                if (vanished(errno)) {
                    continue;
                }
                stopped = true;
                break;
            }
            if (!S_ISDIR(st.st_mode)) {
                bytes += allocatedBytes(st);
                continue;
            }
            if (m_counter.m_reuse) {
                if (const auto known = m_counter.m_measured.find({st.st_dev, st.st_ino});
                    known != m_counter.m_measured.end()) {
                    bytes += known->second.bytes;
                    if (known->second.stopped) {
                        stopped = true;
                        break;
                    }
                    continue;
                }
            }
            const int childFd = ::openat(parentFd, entry->d_name, kOpenFolderFlags);
            if (childFd < 0) {
                if (vanished(errno)) {
                    continue;
                }
                stopped = true;
                break;
            }
            if (handOver(childFd, st, sums, bytes)) {
                continue;
            }
            if (!push(childFd, st.st_dev, st.st_ino)) {
                stopped = true;
                break;
            }
        }
        closeAll();
        sums.add(TreeSum{bytes, stopped});
        return sums.total();
    }

private:
    bool handOver(int childFd, const struct stat& st, OrderedSums& sums, std::int64_t& bytes) {
        auto task = std::make_shared<std::packaged_task<TreeSum()>>(
            [counter = &m_counter, childFd, dev = st.st_dev, ino = st.st_ino] {
                return Walker(*counter).walk(childFd, dev, ino);
            });
        std::future<TreeSum> result = task->get_future();
        if (!m_counter.m_pool.tryRun([task] { (*task)(); })) {
            return false;
        }
        sums.add(TreeSum{bytes, false});
        bytes = 0;
        sums.add(std::move(result));
        return true;
    }

    bool push(int fd, dev_t dev, ino_t ino) {
        DIR* dir = ::fdopendir(fd);
        if (dir == nullptr) {
            ::close(fd);
            return false;
        }
        if (m_open == kMaxOpenLevels && closeShallowestFolder(m_levels)) {
            --m_open;
        }
        m_levels.push_back(Level{dir, dev, ino, 0});
        ++m_open;
        return true;
    }

    // Leaves the finished top folder. When its parent was closed for depth, the parent is found again through
    // "..", checked to be the same folder, and read on from where it was left.
    bool climb() {
        Level finished = m_levels.back();
        m_levels.pop_back();
        bool ok = true;
        if (!m_levels.empty() && m_levels.back().dir == nullptr) {
            ok = reopen(::dirfd(finished.dir), m_levels.back());
        }
        ::closedir(finished.dir);
        --m_open;
        return ok;
    }

    bool reopen(int childFd, Level& level) {
        DIR* dir = reopenFolderAbove(childFd, level.dev, level.ino);
        if (dir == nullptr) {
            return false;
        }
        for (std::size_t i = 0; i < level.consumed; ++i) {
            if (::readdir(dir) == nullptr) {
                break;
            }
        }
        level.dir = dir;
        ++m_open;
        return true;
    }

    void closeAll() {
        for (Level& level : m_levels) {
            if (level.dir != nullptr) {
                ::closedir(level.dir);
            }
        }
        m_levels.clear();
        m_open = 0;
    }

    SizeCounter& m_counter;
    std::vector<Level> m_levels;
    std::size_t m_open = 0;
};

// ---------------------------------------------------------------------------------------------------------------
// SizeCounter

SizeCounter::SizeCounter(unsigned workers, std::stop_token stop, HeldFolder within)
    : m_stop(std::move(stop)), m_within(std::move(within)), m_pool(workers) {}

unsigned SizeCounter::defaultWorkers() {
    const unsigned cores = std::thread::hardware_concurrency();
    return cores > 1 ? cores - 1 : 0;
}

TreeSum SizeCounter::walkOpenFolder(int fd, FolderId id) {
    if (m_reuse) {
        if (const auto known = m_measured.find(id); known != m_measured.end()) {
            ::close(fd);
            return known->second;
        }
    }
    const TreeSum sum = Walker(*this).walk(fd, id.first, id.second);
    if (!m_stop.stop_requested()) {
        m_measured[id] = sum;
    }
    return sum;
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
    const int fd = ::openat(parentFd, name.c_str(), kOpenFolderFlags);
    if (fd < 0) {
        const TreeSum unreadable{0, true};
        m_measured[id] = unreadable;
        return unreadable;
    }
    return walkOpenFolder(fd, id);
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
