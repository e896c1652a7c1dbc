// A home folder built by the input, a small program: folders, files, links of every kind, FIFOs, sockets and
// devices, odd names and deep chains, then ticked locations (some made as metadata makes them) and folders to
// swap for a link in the moment between the remover's look and its open; some ticked locations are built from
// components as another program's data gives them ("..", ".." cut short by a NUL byte, names holding "/"). The
// ticked locations are measured and removed, and then:
// - the decoy tree outside the home, and the folders swapped away, are byte for byte as they were;
// - every entry of the home outside the ticked locations is as it was;
// - a ticked location reached through folders alone is gone;
// - the measurement of the home equals the allocated bytes of every entry below it, links not followed.
// Every link points inside this process's scratch folder, so a remover gone wrong damages nothing else.
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <array>
#include <map>

#include "catalogue/size_walker.hpp"
#include "cleaning/safe_remove.hpp"
#include "fuzz/fuzz_support.hpp"
#include "support/tree_checksums.hpp"

namespace {

using namespace tidewell;
using Components = std::vector<std::string>;

constexpr std::size_t kMaxSteps = 600;
constexpr std::size_t kMaxDepth = 300;

const std::array<std::string_view, 16> kNames{
    "a",
    "b",
    "Cache",
    ".hidden",
    "-rf",
    "--",
    "new\nline",
    "\xff\xfe",
    "\xc3(",
    "%2F..",
    "*",
    " ",
    "...",
    "tab\there",
    "Decoy",
    "nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn"
    "nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn"
    "nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn"};

class Program {
public:
    Program(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}
    [[nodiscard]] bool done() const { return m_at >= m_size; }
    std::uint8_t next() { return m_at < m_size ? m_data[m_at++] : 0; }

    // A name from the table, or (for the high bytes) up to 64 bytes of the input itself.
    std::string name() {
        const std::uint8_t pick = next();
        if (pick < 224) {
            return std::string(kNames[pick % kNames.size()]);
        }
        std::string raw;
        for (std::size_t length = 1 + next() % 64; length > 0 && !done(); --length) {
            const char c = static_cast<char>(next());
            if (c != '/' && c != '\0') {
                raw.push_back(c);
            }
        }
        return raw.empty() || raw == "." || raw == ".." ? "x" : raw;
    }

private:
    const std::uint8_t* m_data;
    std::size_t m_size;
    std::size_t m_at = 0;
};

struct World {
    std::string root; // the disk: root/home is granted, root/Decoy and root/outside.txt lie outside it
    std::string home;
    std::string decoy;
};

std::string joined(const std::string& base, const Components& components) {
    std::string path = base;
    for (const std::string& component : components) {
        path += "/" + component;
    }
    return path;
}

Components split(const std::string& relative) {
    Components components;
    std::size_t start = 0;
    while (start <= relative.size()) {
        const std::size_t slash = std::min(relative.find('/', start), relative.size());
        components.push_back(relative.substr(start, slash - start));
        start = slash + 1;
    }
    return components;
}

bool startsWith(const Components& path, const Components& prefix) {
    return path.size() >= prefix.size() && std::equal(prefix.begin(), prefix.end(), path.begin());
}

// The allocated bytes of every entry below a folder that is not itself a folder, links not followed: what a
// measurement of the folder must come to on a disk where everything is readable.
std::int64_t allocatedBelow(const std::string& folder) {
    std::int64_t sum = 0;
    std::vector<DIR*> open{::opendir(folder.c_str())};
    while (!open.empty()) {
        if (open.back() == nullptr) {
            open.pop_back();
            continue;
        }
        const dirent* entry = ::readdir(open.back());
        if (entry == nullptr) {
            ::closedir(open.back());
            open.pop_back();
            continue;
        }
        const std::string_view name = entry->d_name;
        struct stat st {};
        if (name == "." || name == ".." ||
            ::fstatat(::dirfd(open.back()), entry->d_name, &st, AT_SYMLINK_NOFOLLOW) != 0) {
            continue;
        }
        if (S_ISDIR(st.st_mode)) {
            const int fd =
                ::openat(::dirfd(open.back()), entry->d_name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            open.push_back(fd < 0 ? nullptr : ::fdopendir(fd));
        } else {
            sum += static_cast<std::int64_t>(st.st_blocks) * 512;
        }
    }
    return sum;
}

// Builds the home the program describes; gives the ticked locations and the names of folders to swap.
std::pair<std::vector<std::string>, std::vector<std::string>> build(Program& program, const World& world) {
    std::vector<std::string> ticked;
    std::vector<std::string> swaps;
    Components at;
    const auto here = [&] { return joined(world.home, at); };
    for (std::size_t step = 0; step < kMaxSteps && !program.done(); ++step) {
        const std::uint8_t op = program.next();
        switch (op % 19) {
        case 0: { // a folder, entered
            const std::string name = program.name();
            if (at.size() < kMaxDepth && ::mkdir((here() + "/" + name).c_str(), 0755) == 0) {
                at.push_back(name);
            }
            break;
        }
        case 1:
            if (!at.empty()) {
                at.pop_back();
            }
            break;
        case 2:
            fuzz::writeFile(here() + "/" + program.name(), std::string(program.next() * 97U, 'f'));
            break;
        case 3:
            ::symlink(world.decoy.c_str(), (here() + "/" + program.name()).c_str());
            break;
        case 4:
            ::symlink((world.decoy + "/keep.txt").c_str(), (here() + "/" + program.name()).c_str());
            break;
        case 5: { // climbing out to the decoy: exactly as far up as the disk root, never further
            std::string target;
            for (std::size_t up = 0; up <= at.size(); ++up) {
                target += program.next() % 4 == 0 ? ".././" : "../";
            }
            ::symlink((target + "Decoy").c_str(), (here() + "/" + program.name()).c_str());
            break;
        }
        case 6:
            ::symlink(program.next() % 2 == 0 ? (world.root + "/missing/file").c_str() : "nowhere",
                      (here() + "/" + program.name()).c_str());
            break;
        case 7:
            ::mkfifo((here() + "/" + program.name()).c_str(), 0644);
            break;
        case 8:
            ::mknod((here() + "/" + program.name()).c_str(), S_IFSOCK | 0644, 0);
            break;
        case 9: { // a chain of up to 63 folders, each with a file, left at once: past the walks' open-folder limit
            int fd = ::open(here().c_str(), O_RDONLY | O_DIRECTORY);
            for (int level = program.next() % 64; level > 0 && fd >= 0; --level) {
                ::mkdirat(fd, "d", 0755);
                ::close(::openat(fd, "f", O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
                const int deeper = ::openat(fd, "d", O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
                ::close(fd);
                fd = deeper;
            }
            ::close(fd);
            break;
        }
        case 10: { // the current folder ticked, written four ways
            static constexpr std::array<std::string_view, 4> kSuffixes{"", "/", "/.", "//./"};
            ticked.push_back(here() + std::string(kSuffixes[program.next() % 4]));
            break;
        }
        case 11:
            ticked.push_back(here() + "/" + program.name());
            break;
        case 12: { // a location as metadata could make it
            const std::array<std::string, 13> made{"",
                                                   ".",
                                                   "..",
                                                   "../..",
                                                   "/",
                                                   world.home,
                                                   world.home + "/",
                                                   world.home + "/..",
                                                   world.decoy,
                                                   world.home + "/../Decoy",
                                                   "relative/path",
                                                   here() + "/../../..",
                                                   world.root};
            ticked.push_back(made[program.next() % made.size()]);
            break;
        }
        case 13:
            ::symlink(program.next() % 2 == 0 ? world.root.c_str() : world.home.c_str(),
                      (here() + "/" + program.name()).c_str());
            break;
        case 14: {
            const std::string name = program.name();
            ::symlink(name.c_str(), (here() + "/" + name).c_str());
            break;
        }
        case 15:
            ::mknod((here() + "/" + program.name()).c_str(), S_IFCHR | 0644, makedev(1, 3));
            break;
        case 16:
            swaps.push_back(program.name());
            break;
        case 17: { // a location built from components as another program's data gives them, "/" and NUL kept
            std::string location = here();
            for (std::size_t parts = 1 + program.next() % 4; parts > 0 && !program.done(); --parts) {
                static constexpr std::array<std::string_view, 6> kClimbing{
                    "..", std::string_view("..\0", 3), ".", "", "../Decoy", std::string_view("\0")};
                location += "/";
                location += program.next() % 2 == 0 ? std::string(kClimbing[program.next() % kClimbing.size()])
                                                    : program.name();
            }
            ticked.push_back(location);
            break;
        }
        default: // a link to a file of the home, relative
            ::symlink("../a", (here() + "/" + program.name()).c_str());
            break;
        }
    }
    return {ticked, swaps};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::ScratchFolder scratch;
    static const World world{scratch.path(), scratch.path() + "/home", scratch.path() + "/Decoy"};
    static const std::map<std::string, std::string> decoy = [] {
        ::mkdir(world.decoy.c_str(), 0755);
        ::mkdir((world.decoy + "/Sub").c_str(), 0755);
        fuzz::writeFile(world.decoy + "/keep.txt", "keep");
        fuzz::writeFile(world.decoy + "/Sub/big.bin", std::string(40000, 'd'));
        fuzz::writeFile(world.root + "/outside.txt", "outside");
        return testing::treeChecksums(world.root, [](const std::string& path) { return path.starts_with("home"); });
    }();
    ::mkdir(world.home.c_str(), 0755);

    Program program(data, size);
    const std::pair<std::vector<std::string>, std::vector<std::string>> built = build(program, world);
    const std::vector<std::string>& ticked = built.first;
    const std::vector<std::string>& swaps = built.second;
    const std::map<std::string, std::string> homeBefore = testing::treeChecksums(world.home);

    // Measuring: each ticked location, then the whole home with the same counter, whose earlier sums are reused.
    // Only locations inside the home are measured: one made from metadata may name "/".
    const DeletionBoundary boundary(world.home);
    SizeCounter sizes(0);
    for (const std::string& location : ticked) {
        if (boundary.admits(location)) {
            static_cast<void>(sizes.allocatedSize(location));
        }
    }
    fuzz::require(sizes.allocatedSize(world.home) == allocatedBelow(world.home),
                  "the home measures the allocated bytes below it, links not followed");

    // Removing, with the folders named for swapping moved out of the home and replaced by a link to the decoy in
    // the moment between the remover's look and its open.
    std::map<std::string, std::map<std::string, std::string>> swappedAway; // each moved folder, as it was
    const int scratchFd = ::open(world.root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    setRemovalRaceHook([&](int parentFd, const std::string& name) {
        if (std::find(swaps.begin(), swaps.end(), name) == swaps.end() || swappedAway.size() >= 4) {
            return;
        }
        char parent[64];
        std::snprintf(parent, sizeof parent, "/proc/self/fd/%d", parentFd);
        std::string where(4096, '\0');
        const ssize_t length = ::readlink(parent, where.data(), where.size());
        if (length <= 0 || static_cast<std::size_t>(length) >= where.size()) {
            return;
        }
        where.resize(static_cast<std::size_t>(length));
        const std::string away = "swapped" + std::to_string(swappedAway.size());
        std::map<std::string, std::string> contents = testing::treeChecksums(where + "/" + name);
        if (::renameat(parentFd, name.c_str(), scratchFd, away.c_str()) == 0) {
            swappedAway[away] = std::move(contents);
            ::symlinkat(world.decoy.c_str(), parentFd, name.c_str());
        }
    });
    for (const std::string& location : ticked) {
        static_cast<void>(removeItem(boundary, location));
    }
    setRemovalRaceHook({});
    ::close(scratchFd);

    fuzz::require(testing::treeChecksums(world.root,
                                         [](const std::string& path) {
                                             return path.starts_with("home") || path.starts_with("swapped");
                                         }) == decoy,
                  "nothing outside the home changes");
    std::vector<Components> removable;
    for (const std::string& location : ticked) {
        if (const std::optional<Components> inside = boundary.componentsInside(location)) {
            removable.push_back(*inside);
        }
    }
    const std::map<std::string, std::string> homeAfter = testing::treeChecksums(world.home);
    for (const auto& [path, before] : homeBefore) {
        const Components components = split(path);
        if (std::none_of(removable.begin(), removable.end(),
                         [&](const Components& location) { return startsWith(components, location); })) {
            const auto after = homeAfter.find(path);
            fuzz::require(after != homeAfter.end() && after->second == before,
                          "every entry outside the ticked locations stays as it was");
        }
    }
    for (const auto& [away, contents] : swappedAway) {
        fuzz::require(testing::treeChecksums(world.root + "/" + away) == contents,
                      "a folder swapped away before it was opened is untouched");
        scratch.clear(away);
    }
    for (const Components& location : removable) {
        // Reached through folders alone (no link on the way, nothing swapped), a ticked location goes.
        bool throughFolders = swappedAway.empty() && homeBefore.contains(joined("", location).substr(1));
        for (std::size_t length = 1; throughFolders && length < location.size(); ++length) {
            const auto entry = homeBefore.find(
                joined("", Components(location.begin(), location.begin() + static_cast<std::ptrdiff_t>(length)))
                    .substr(1));
            throughFolders = entry != homeBefore.end() && entry->second.starts_with("folder");
        }
        if (throughFolders) {
            fuzz::require(!homeAfter.contains(joined("", location).substr(1)), "a ticked location goes");
        }
    }
    scratch.clear("home");
    return 0;
}
