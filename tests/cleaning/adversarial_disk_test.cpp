#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <mutex>
#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>

#include "base/log.hpp"
#include "catalogue/size_walker.hpp"
#include "cleaning/safe_remove.hpp"
#include "cli/cli.hpp"
#include "cli/scan_session.hpp"
#include "sample_disk/sample_disk.hpp"
#include "sources/builders.hpp"
#include "support/child_process.hpp"
#include "support/disk_builder.hpp"
#include "support/fake_running_apps.hpp"
#include "support/hostile_inputs.hpp"
#include "support/stress.hpp"
#include "support/tree_checksums.hpp"

namespace tidewell {
namespace {

using testing::DiskBuilder;
using testing::TempFolder;
using testing::treeChecksums;
using Checksums = std::map<std::string, std::string>;

// A memory-backed folder when there is one: one of the disks is ten thousand folders deep.
std::string fastTemporaryBase() {
    struct stat st {};
    if (::stat("/dev/shm", &st) == 0 && S_ISDIR(st.st_mode) && ::access("/dev/shm", W_OK) == 0) {
        return "/dev/shm";
    }
    const char* base = std::getenv("TMPDIR");
    return base != nullptr && *base != '\0' ? base : "/tmp";
}

// File systems mounted by a test, taken away again before its folder goes.
class Mounts {
public:
    Mounts() = default;
    Mounts(const Mounts&) = delete;
    Mounts& operator=(const Mounts&) = delete;
    ~Mounts() {
        for (auto it = m_points.rbegin(); it != m_points.rend(); ++it) {
            ::umount2(it->c_str(), MNT_DETACH);
        }
    }
    bool mount(const char* source, const std::string& point, const char* type, unsigned long flags) {
        if (::mount(source, point.c_str(), type, flags, type != nullptr ? "size=1m" : nullptr) != 0) {
            return false;
        }
        m_points.push_back(point);
        return true;
    }

private:
    std::vector<std::string> m_points;
};

// What an adversary puts on the disk. Everything outside the home lies in "/Decoy" and "/outside.txt"; inside the
// home, "Documents" is in no ticked location. Every link points inside the test's own folder (the disk root stands
// in for "/"), so a remover that went wrong could only ever damage the test's files.
// A command run on the disk before the clean, which must end with `status` and change nothing at all.
struct RefusedRun {
    std::vector<std::string> args; // after --root
    int status;
};

struct DiskPlan {
    DiskBuilder& d;
    Mounts& mounts;
    std::vector<std::string> mustStay; // home paths below a ticked location whose contents must not change
    std::string skipReason;            // set when this machine cannot build the disk
    std::string realHome;              // where the home really is, relative to the root, when it is a link
    std::vector<RefusedRun> refused;
};

struct Adversary {
    const char* name;
    void (*build)(DiskPlan&);
    int status = 0;            // how the clean ends: 5 when something ticked is left as it was
    bool unprivileged = false; // cleaned by "nobody", who owns the whole disk, rather than by the super-user
    std::vector<std::string> unticks = {}; // applied to the catalogue before the clean, as --untick is
};

void PrintTo(const Adversary& adversary, std::ostream* out) {
    *out << adversary.name;
}

void node(const std::string& path, mode_t mode, dev_t device = 0) {
    testing::makeParents(path);
    ASSERT_EQ(::mknod(path.c_str(), mode | 0644, device), 0) << path;
}

// Links of every kind inside ticked folders: absolute and relative, dangling, to folders and files outside the
// home, to the home itself, to "/", in loops; and ticked locations that are themselves links.
void links(DiskPlan& s) {
    DiskBuilder& d = s.d;
    const std::string caches = "Library/Caches/Adversary/";
    d.text(caches + "own.txt", "own")
        .link(caches + "toDecoy", d.at("/Decoy"))
        .link(caches + "toDecoySlash", d.at("/Decoy/"))
        .link(caches + "toDecoyFile", d.at("/Decoy/keep.txt"))
        .link(caches + "toOutsideFile", d.at("/outside.txt"))
        .link(caches + "Sub/climbing", "../../../../../../Decoy")
        .link(caches + "Sub/toDocuments", "../../../../Documents")
        .link(caches + "dangling", d.at("/nowhere/at/all"))
        .link(caches + "danglingRelative", "missing/file")
        .link(caches + "toDiskRoot", d.root())
        .link(caches + "toHome", d.home())
        .link(caches + "loop", "loop")
        .link(caches + "ping", "pong")
        .link(caches + "pong", "ping");
    // Ticked locations that are links, to folders (with a trailing slash too) and to files.
    const std::string profile = "Library/Application Support/Google/Chrome/Default/";
    d.link(profile + "Cookies", d.at("/Decoy/keep.txt"))
        .link(profile + "Local Storage", d.at("/Decoy/Sub/"))
        .link(profile + "IndexedDB", d.at("Documents"))
        .link("Library/Caches/com.apple.Safari", d.at("/Decoy"))
        .link("Library/Logs", "../../../Decoy/Sub")
        .link("Library/Safari/Extensions/Evil.safariextz", d.at("/Decoy"));
}

// FIFOs, sockets and device nodes inside ticked folders and as ticked locations: removed as entries, never
// opened, so nothing waits on them and no device is touched.
void devicesAndPipes(DiskPlan& s) {
    const DiskBuilder& d = s.d;
    node(d.at("Library/Caches/Adversary/fifo"), S_IFIFO);
    node(d.at("Library/Caches/Adversary/socket"), S_IFSOCK);
    node(d.at("Library/Caches/Adversary/null"), S_IFCHR, makedev(1, 3));
    node(d.at("Library/Caches/Adversary/blockDevice"), S_IFBLK, makedev(7, 0));
    node(d.at("Library/Cookies/Cookies.binarycookies"), S_IFIFO);
    node(d.at("Library/Application Support/Google/Chrome/Default/Visited Links"), S_IFSOCK);
    node(d.at("Library/Logs/fifo"), S_IFIFO);
    node(d.at("Documents/fifo"), S_IFIFO);
    node(d.at("/Decoy/fifo"), S_IFIFO);
}

// Another file system inside a ticked folder: not entered.
void anotherFileSystem(DiskPlan& s) {
    s.d.text("Library/Caches/Adversary/own.txt", "own").folder("Library/Caches/Adversary/Mounted");
    if (!s.mounts.mount("tidewell-test", s.d.at("Library/Caches/Adversary/Mounted"), "tmpfs", 0)) {
        s.skipReason = "no permission to mount a file system here";
        return;
    }
    s.d.text("Library/Caches/Adversary/Mounted/other.txt", "on another file system");
    s.mustStay.push_back("Library/Caches/Adversary/Mounted");
}

// The decoy itself mounted a second time inside a ticked folder: the same file system, another mount.
void decoyMountedInside(DiskPlan& s) {
    s.d.text("Library/Caches/Adversary/own.txt", "own").folder("Library/Caches/Adversary/Bound");
    if (!s.mounts.mount(s.d.at("/Decoy").c_str(), s.d.at("Library/Caches/Adversary/Bound"), nullptr, MS_BIND)) {
        s.skipReason = "no permission to mount a folder here";
        return;
    }
    s.mustStay.push_back("Library/Caches/Adversary/Bound");
}

// Folders its cleaner may not read or write into.
void unreadableFolders(DiskPlan& s) {
    DiskBuilder& d = s.d;
    d.text("Library/Caches/Adversary/Locked/inside.txt", "x")
        .folder("Library/Caches/Adversary/LockedEmpty")
        .text("Library/Caches/Adversary/ReadOnly/inside.txt", "y")
        .text("Library/Caches/Adversary/own.txt", "own")
        .link("Library/Caches/Adversary/toDecoy", d.at("/Decoy"));
    ::chmod(d.at("Library/Caches/Adversary/Locked").c_str(), 0);
    ::chmod(d.at("Library/Caches/Adversary/LockedEmpty").c_str(), 0);
    ::chmod(d.at("Library/Caches/Adversary/ReadOnly").c_str(), 0555);
    ::chmod(d.at("Documents/Sub").c_str(), 0);
}

// A tree ten thousand folders deep, with a link to the decoy at its bottom.
void tenThousandLevels(DiskPlan& s) {
    s.d.folder("Library/Caches/Adversary");
    const int fd = testing::makeFolderChain(s.d.at("Library/Caches/Adversary"), 10000);
    ASSERT_GE(fd, 0);
    ::symlinkat(s.d.at("/Decoy").c_str(), fd, "toDecoy");
    ::close(fd);
}

// Names with a newline, invalid UTF-8, a leading "-", 255 bytes, percent signs; the same names beside the ticked
// locations and outside the home. Percent-encoded names whose decoded form names a decoy: a profile folder "%41"
// beside a folder "A", a Firefox profile "x%2Fy.default" beside "x/y.default".
void oddNames(DiskPlan& s) {
    DiskBuilder& d = s.d;
    const std::vector<std::string> names{
        "new\nline", "\xff\xfe\xc3(", "-rf", "--",       "-", std::string(255, 'n'), "%2F..%2F..", "*",
        " ",         "...",           "\\",  "tab\there"};
    for (const std::string& name : names) {
        d.text("Library/Caches/Adversary/" + name + "/" + name, name)
            .text("Documents/" + name, name)
            .text("/Decoy/" + name, name);
    }
    d.chromeLocalState({{"Default", "Person 1"}, {"%41", "Encoded"}, {"Pro\nfile -rf", "Odd"}})
        .text("Library/Application Support/Google/Chrome/%41/Cookies", "encoded")
        .text("Library/Application Support/Google/Chrome/A/Cookies", "decoy")
        .text("Library/Application Support/Google/Chrome/Pro\nfile -rf/Cookies", "odd")
        .text("Library/Application Support/Firefox/Profiles/x%2Fy.default/prefs.js", "encoded")
        .text("Library/Application Support/Firefox/Profiles/x/y.default/prefs.js", "decoy");
}

// Paths made from other programs' metadata: Chrome profile names and Firefox add-on locations that climb out,
// name "/", "", ".", the home itself or the decoy; a Chrome extension found through a climbing profile.
void metadataPaths(DiskPlan& s) {
    DiskBuilder& d = s.d;
    d.chromeLocalState({{"..", "Up"},
                        {"../..", "Up twice"},
                        {"../../../../../../Decoy", "Decoy"},
                        {"/", "Root"},
                        {"", "Empty"},
                        {".", "Dot"},
                        {"../../../../../../", "Disk"},
                        {d.at("/Decoy"), "Absolute"}});
    nlohmann::json addons = nlohmann::json::array();
    for (const std::string& location :
         {std::string("../.."), d.at("/Decoy"), d.at("/Decoy/Sub/"), std::string(""), std::string("."), d.home(),
          d.home() + "/", d.home() + "/..", d.at("/outside.txt"), d.home() + "/Library/../../../Decoy",
          d.home() + "/Library/Caches/Adversary/viaLink/", d.home() + "/Library/Caches/Adversary/viaLink/keep.txt"}) {
        addons.push_back({{"defaultLocale", {{"name", "Add-on"}}}, {"version", "1"}, {"descriptor", location}});
    }
    d.text("Library/Application Support/Firefox/Profiles/abc.default/extensions.json",
           nlohmann::json{{"addons", addons}}.dump())
        .link("Library/Caches/Adversary/viaLink", d.at("/Decoy"));
}

// Other programs' metadata written to climb out: "Local State" keys that hold NUL bytes and ".." (80,000 of them,
// most climbing exactly to a browser profile elsewhere on the disk, which a clean must not touch); add-ons recorded
// at the home's Documents folder and through "..", beside one in its own extensions folder; history databases, a
// WAL log and a shared-memory file hard-linked to files outside the home; and a home that is itself a link (inside
// the disk root: taken, and held). Before the clean, word lists past every limit and a user whose home leads off
// the disk are refused, changing nothing.
void hostileMetadata(DiskPlan& s) {
    DiskBuilder& d = s.d;
    const std::string chrome = "Library/Application Support/Google/Chrome/";
    const std::string firefox = "Library/Application Support/Firefox/Profiles/abc.default/";
    for (const char* file : {"Cookies", "History", "Login Data", "Preferences", "Web Data"}) {
        d.text(std::string("/Decoy/Evil/") + file, "the profile of someone else");
    }
    // Chrome's folder is six levels below the disk root: Chrome, Google, Application Support, Library, ann, Users.
    d.text(chrome + "Local State", testing::hostileLocalState(80000, 6, "Decoy/Evil"))
        .text(chrome + "Default/Cookies", "own");
    // Add-ons: one in its own folder, one recorded at Documents, one that climbs there.
    d.text(firefox + "extensions/good@example.xpi", "add-on").text("Documents/Projects/plan.txt", "keep");
    nlohmann::json addons = nlohmann::json::array();
    for (const std::string& location : {d.at(firefox + "extensions/good@example.xpi"), d.at("Documents"),
                                        d.at(firefox + "extensions/../../../../../../Documents")}) {
        addons.push_back({{"defaultLocale", {{"name", "Add-on"}}}, {"version", "1"}, {"descriptor", location}});
    }
    d.text(firefox + "extensions.json", nlohmann::json{{"addons", addons}}.dump());
    s.mustStay.push_back("Documents");
    // History databases linked to files outside: the purge must leave them, and the decoys, as they are.
    testing::writeHistoryDatabase(d.at("/Decoy/History"), testing::Browser::Chrome, testing::sampleHistoryUrls());
    d.text("/Decoy/empty", "");
    ::link(d.at("/Decoy/History").c_str(), d.at(chrome + "Default/History").c_str());
    testing::writeHistoryDatabase(d.at("Library/Safari/History.db"), testing::Browser::Safari,
                                  testing::sampleHistoryUrls());
    testing::writeHistoryDatabase(d.at(firefox + "places.sqlite"), testing::Browser::Firefox,
                                  testing::sampleHistoryUrls());
    ::link(d.at("/Decoy/empty").c_str(), d.at("Library/Safari/History.db-journal").c_str());
    ::link(d.at("/Decoy/keep.txt").c_str(), d.at(firefox + "places.sqlite-shm").c_str());
    // Word lists past each limit, and a user whose home leads off the disk.
    d.text("/lists/nested.plist", testing::nestedXmlPlist(200000))
        .text("/lists/huge.txt", testing::randomWordLines(13'000'000, 7))
        .text("/lists/cycle.plist", testing::cyclicBinaryPlist())
        .text("/lists/doubling.plist", testing::doublingBinaryPlist(64))
        .text("/../elsewhere/Library/Caches/x", "off the disk")
        .link("/Users/mallory", d.at("/../elsewhere"));
    for (const char* list : {"nested.plist", "huge.txt", "cycle.plist", "doubling.plist"}) {
        s.refused.push_back({{"--user", d.login(), "purge", "--words", d.at(std::string("/lists/") + list)}, 2});
    }
    s.refused.push_back({{"--user", "mallory", "clean", "--yes"}, 2});
    // The home itself is a link to its real place inside the disk.
    d.folder("/Homes");
    std::filesystem::rename(d.home(), d.at("/Homes/ann"));
    d.link("/Users/ann", "../Homes/ann");
    s.realHome = "Homes/ann";
}

void everythingAtOnce(DiskPlan& s) {
    for (void (*build)(DiskPlan&) : {links, devicesAndPipes, oddNames, metadataPaths}) {
        build(s);
    }
}

class AdversarialDisk : public ::testing::TestWithParam<Adversary> {
protected:
    // A disk with every application, a Chrome profile and a Firefox profile, a decoy tree outside the home and
    // files in the home that nothing ticks.
    AdversarialDisk() {
        d.allApps()
            .chromeLocalState({{"Default", "Person 1"}})
            .text("Library/Application Support/Google/Chrome/Default/Preferences", "{}")
            .text("Library/Application Support/Firefox/Profiles/abc.default/prefs.js", "user_pref")
            .text("Library/Caches/Firefox/cache.bin", "cache")
            .text("Documents/letter.txt", "dear")
            .text("Documents/Sub/note.txt", "note")
            .text("/Decoy/keep.txt", "keep")
            .file("/Decoy/Sub/deep.bin", 65536, 'd')
            .text("/Decoy/Extensions/id/1.0/manifest.json", R"({"name":"Decoy","version":"1"})")
            .text("/Decoy/Preferences", "{}")
            .text("/Decoy/Cookies", "decoy")
            .text("/outside.txt", "outside");
    }

    // The extension rows start unticked; every clean here ticks them, so the add-on locations an adversary records
    // are put to the test.
    static constexpr std::string_view kExtensions = "Browser Extensions";

    // The home locations the cleaning is to remove, as a scan's catalogue gives them with its default ticks: every
    // location of each ticked item, and each history database of a ticked adult-history item with Chrome's
    // session files beside it. Those outside the home are left out: nothing there may change.
    std::vector<std::vector<std::string>> tickedLocations(const std::vector<std::string>& unticks) {
        const DeletionBoundary boundary(d.home());
        std::vector<std::vector<std::string>> ticked;
        const auto add = [&](const std::string& path) {
            if (auto components = boundary.componentsInside(path)) {
                ticked.push_back(std::move(*components));
            }
        };
        cli::ScanSession session(d.disk(), sectionBuilders(macosLayout()), {});
        session.scan();
        EXPECT_TRUE(cli::applyTick(session.catalogue(), {Tick::On, std::string(kExtensions)}).has_value());
        for (const std::string& untick : unticks) {
            EXPECT_TRUE(cli::applyTick(session.catalogue(), {Tick::Off, untick}).has_value()) << untick;
        }
        for (const RecordPtr& section : session.catalogue().snapshot()) {
            for (const RecordPtr& item : section->list("List") != nullptr ? *section->list("List") : RecordList{}) {
                if (!isTrue(*item, "isChecked")) {
                    continue;
                }
                if (const UrlList* locations = item->urls("AllList")) {
                    for (const FileUrl& location : *locations) {
                        add(location.path);
                    }
                } else if (const FileUrl* database = item->url("Path")) {
                    add(database->path);
                    const std::string folder = database->path.substr(0, database->path.rfind('/'));
                    add(folder + "/Current Session");
                    add(folder + "/Current Tabs");
                }
            }
        }
        return ticked;
    }

    TempFolder temp{fastTemporaryBase()};
    DiskBuilder d{temp.path() + "/disk"};
    Mounts mounts;
};

// The pass criterion: the command-line tool's clean (a scan, the default ticks, the removal, the rescan) ends
// normally, and every entry on the disk outside the ticked locations is byte for byte as it was.
TEST_P(AdversarialDisk, CleaningChangesNothingOutsideTheTickedLocationsAndEndsNormally) {
    DiskPlan plan{d, mounts, {}, {}, {}, {}};
    GetParam().build(plan);
    if (!plan.skipReason.empty()) {
        GTEST_SKIP() << plan.skipReason;
    }
    if (GetParam().unprivileged) {
        ::chmod(temp.path().c_str(), 0755);
        ::lchown(d.root().c_str(), 65534, 65534);
        for (const auto& entry : std::filesystem::recursive_directory_iterator(
                 d.root(), std::filesystem::directory_options::skip_permission_denied)) {
            ::lchown(entry.path().c_str(), 65534, 65534);
        }
    }
    const auto runTool = [&](std::vector<std::string> args) {
        args.insert(args.begin(), {"--root", d.root()});
        return testing::runInChild(
            [&] {
                setLogSink([](std::string_view) {});
                std::ostringstream out;
                std::ostringstream err;
                std::istringstream in;
                const testing::FakeRunningApps nothingRuns{{}};
                cli::CliIo io{out, err, in, false, &nothingRuns};
                return cli::runCli(args, io);
            },
            std::chrono::seconds(180), GetParam().unprivileged);
    };

    // Refused runs change nothing at all, not even what the clean would remove, nor anything beside the disk.
    const Checksums whole = plan.refused.empty() ? Checksums{} : treeChecksums(temp.path());
    for (const RefusedRun& run : plan.refused) {
        const testing::ChildEnd end = runTool(run.args);
        EXPECT_TRUE(end.exited && end.status == run.status) << run.args.back() << ": " << end.text();
        EXPECT_EQ(testing::treeDifferences(whole, treeChecksums(temp.path())), "") << run.args.back();
    }

    const std::vector<std::vector<std::string>> ticked = tickedLocations(GetParam().unticks);
    const DeletionBoundary boundary(d.home());
    const std::string homeAsStored = plan.realHome.empty() ? "Users/" + d.login() : plan.realHome;
    const testing::SkipEntry isTicked = [&](const std::string& relative) {
        const std::string inHome = relative.starts_with(homeAsStored + "/")
                                       ? d.home() + relative.substr(homeAsStored.size())
                                       : d.root() + "/" + relative;
        const auto components = boundary.componentsInside(inHome);
        return components && std::ranges::any_of(ticked, [&](const std::vector<std::string>& location) {
                   return components->size() >= location.size() &&
                          std::equal(location.begin(), location.end(), components->begin());
               });
    };
    const Checksums before = treeChecksums(d.root(), isTicked);
    std::map<std::string, Checksums> stayingBefore;
    for (const std::string& path : plan.mustStay) {
        stayingBefore[path] = treeChecksums(d.at(path));
    }
    ASSERT_TRUE(before.contains("Decoy/keep.txt"));
    ASSERT_TRUE(before.contains(homeAsStored + "/Documents/letter.txt") || stayingBefore.contains("Documents"));

    std::vector<std::string> clean{"--user", d.login(), "clean", "--yes", "--tick", std::string(kExtensions)};
    for (const std::string& untick : GetParam().unticks) {
        clean.insert(clean.end(), {"--untick", untick});
    }
    const testing::ChildEnd end = runTool(clean);

    EXPECT_TRUE(end.exited && end.status == GetParam().status) << end.text();
    EXPECT_FALSE(std::filesystem::exists(d.at("Library/Caches/Firefox"))); // the cleaning did clean
    EXPECT_EQ(testing::treeDifferences(before, treeChecksums(d.root(), isTicked)), "");
    for (const auto& [path, contents] : stayingBefore) {
        EXPECT_EQ(testing::treeDifferences(contents, treeChecksums(d.at(path))), "") << path;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Disks, AdversarialDisk,
    ::testing::Values(
        Adversary{"Links", links}, Adversary{"DevicesAndPipes", devicesAndPipes},
        Adversary{"AnotherFileSystem", anotherFileSystem, 5}, Adversary{"DecoyMountedInside", decoyMountedInside, 5},
        Adversary{"UnreadableFolders", unreadableFolders, 5, true}, Adversary{"TenThousandLevels", tenThousandLevels},
        Adversary{"OddNames", oddNames}, Adversary{"MetadataPaths", metadataPaths, 5},
        Adversary{"EverythingAtOnce", everythingAtOnce, 5},
        // The Chrome and Safari histories are left to the purge, which must
        // refuse their hard links, rather than removed whole.
        Adversary{"HostileMetadata", hostileMetadata, 5, false, {"Chrome/History (Person 1)", "Safari/History"}}),
    [](const ::testing::TestParamInfo<Adversary>& param) { return param.param.name; });

// ---------------------------------------------------------------------------------------------------------------
// A folder swapped for a link while it is being removed.

class SwapRace : public ::testing::Test {
protected:
    SwapRace() {
        d.text("/Decoy/keep.txt", "keep").file("/Decoy/Sub/big.bin", kDecoyBytes, 'd').text("Other/keep.txt", "other");
        decoy = treeChecksums(d.at("/Decoy"));
    }

    void buildTicked() { d.text("Tick/a.txt", "a").text("Tick/Sub/b.txt", "b").text("Tick/Sub/Deeper/c.txt", "c"); }

    static constexpr std::size_t kDecoyBytes = 1 << 20;
    TempFolder temp{fastTemporaryBase()};
    DiskBuilder d{temp.path() + "/disk"};
    DeletionBoundary boundary{d.home()}; // the builder has made the home
    Checksums decoy;
};

TEST_F(SwapRace, AFolderSwappedInTheGapBetweenTheLookAndTheOpenIsNeverEntered) {
    struct Swap {
        const char* folder;   // the folder swapped as the removal reaches it
        const char* original; // where that folder was, relative to the home
        bool forLink;         // swapped for a link to the decoy, or for another folder of the home
    };
    for (const Swap swap : {Swap{"Tick", "Tick", true}, Swap{"Sub", "Tick/Sub", true}, Swap{"Sub", "Tick/Sub", false},
                            Swap{"Deeper", "Tick/Sub/Deeper", true}}) {
        SCOPED_TRACE(std::string(swap.original) + (swap.forLink ? " for a link" : " for a folder"));
        buildTicked();
        const Checksums original = treeChecksums(d.at(swap.original));
        const Checksums other = treeChecksums(d.at("Other"));
        const int home = ::open(d.home().c_str(), O_RDONLY | O_DIRECTORY);
        bool swapped = false;
        setRemovalRaceHook([&](int parentFd, const std::string& name) {
            if (swapped || name != swap.folder) {
                return;
            }
            swapped = ::renameat(parentFd, name.c_str(), home, "Moved") == 0 &&
                      (swap.forLink ? ::symlinkat(d.at("/Decoy").c_str(), parentFd, name.c_str())
                                    : ::renameat(home, "Other", parentFd, name.c_str())) == 0;
        });
        static_cast<void>(removeItem(boundary, d.at("Tick")));
        setRemovalRaceHook({});
        ::close(home);

        EXPECT_TRUE(swapped);
        EXPECT_EQ(testing::treeDifferences(decoy, treeChecksums(d.at("/Decoy"))), "");
        // Moved out of the ticked folder before it was entered, it is no longer the removal's business.
        EXPECT_EQ(testing::treeDifferences(original, treeChecksums(d.at("Moved"))), "");
        if (!swap.forLink) {
            EXPECT_EQ(testing::treeDifferences(other, treeChecksums(d.at(swap.original))), "");
            std::filesystem::rename(d.at(swap.original), d.at("Other"));
        }
        testing::removeTree(d.at("Tick"));
        testing::removeTree(d.at("Moved"));
    }
}

TEST_F(SwapRace, AThreadSwappingFoldersForLinksNeverLeadsRemovalOrMeasurementOutside) {
    const auto duration = std::chrono::seconds(testing::stressSetting("TIDEWELL_RACE_SECONDS", 3));
    const std::string tick = d.at("Tick");
    const std::string target = d.at("/Decoy");
    std::atomic<std::uint64_t> swaps{0};
    // Held by the racer while a link stands, and by the test while it builds the ticked folder, which must not
    // be built through a link.
    std::mutex building;
    // Swaps the nested folder, then the ticked folder itself, for a link to the decoy and back, as fast as it can.
    std::jthread racer([&](const std::stop_token& stop) {
        const std::pair<std::string, std::string> places[] = {{tick + "/Sub", tick + "/Away"},
                                                              {tick, d.at("TickAway")}};
        for (std::uint64_t round = 0; !stop.stop_requested(); ++round) {
            std::this_thread::yield();
            const std::lock_guard lock(building);
            const auto& [folder, away] = places[round % 2];
            if (::rename(folder.c_str(), away.c_str()) != 0) {
                ::mkdir(folder.c_str(), 0755);
                continue;
            }
            if (::symlink(target.c_str(), folder.c_str()) == 0) {
                swaps.fetch_add(1, std::memory_order_relaxed);
                std::this_thread::yield();
                ::unlink(folder.c_str());
            }
            ::rename(away.c_str(), folder.c_str());
        }
    });
    std::uint64_t races = 0;
    std::uint64_t removals = 0;
    for (const auto end = std::chrono::steady_clock::now() + duration; std::chrono::steady_clock::now() < end;) {
        {
            const std::lock_guard lock(building);
            buildTicked();
        }
        const std::uint64_t swapsBefore = swaps.load();
        const std::int64_t measured = SizeCounter(0, {}, HeldFolder(d.home())).allocatedSize(tick);
        static_cast<void>(removeItem(boundary, tick));
        ++removals;
        races += swaps.load() > swapsBefore ? 1U : 0U;
        ASSERT_LT(measured, static_cast<std::int64_t>(kDecoyBytes)) << "the measurement followed a link";
    }
    racer.request_stop();
    racer.join();
    EXPECT_EQ(testing::treeDifferences(decoy, treeChecksums(d.at("/Decoy"))), "");
    EXPECT_GT(races, 0U);
    std::cout << "[ figures  ] swap races run: " << races << " of " << removals << " removals, " << swaps.load()
              << " swaps\n";
}

} // namespace
} // namespace tidewell
