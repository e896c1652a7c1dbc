#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "base/byte_count.hpp"
#include "base/held_folder.hpp"
#include "cleaning/browser_check.hpp"
#include "cleaning/cleaning_engine.hpp"
#include "sample_disk/sample_disk.hpp"
#include "support/catalogue_helpers.hpp"
#include "support/disk_builder.hpp"
#include "support/fake_running_apps.hpp"
#include "support/tree_checksums.hpp"

namespace tidewell {
namespace {

namespace fs = std::filesystem;

// The whole catalogue of a disk, every builder run in order on this thread.
RecordList catalogueOf(const DiskRoot& disk) {
    RecordList sections;
    for (const SectionBuilder& builder : sectionBuilders(disk.layout())) {
        if (RecordPtr section = testing::runBuilder(builder, disk).section) {
            sections.push_back(std::move(section));
        }
    }
    return sections;
}

void untickEverything(const RecordList& catalogue) {
    for (const Section& section : sectionsOf(catalogue)) {
        for (const Item& item : section.items()) {
            item.setTicked(false);
        }
    }
}

// The items of the catalogue with this name, in order.
std::vector<Item> itemsNamed(const RecordList& catalogue, std::string_view name) {
    std::vector<Item> found;
    for (const Section& section : sectionsOf(catalogue)) {
        for (const Item& item : section.items()) {
            if (item.name() == name) {
                found.push_back(item);
            }
        }
    }
    return found;
}

// Whether path is place or lies inside it, compared component by component.
bool isAtOrInside(const std::string& path, const std::string& place) {
    const auto p = normalisedComponents(path);
    const auto f = normalisedComponents(place);
    return p && f && p->size() >= f->size() && std::equal(f->begin(), f->end(), p->begin());
}

std::uint64_t allocated(const std::string& path) {
    struct stat st {};
    return ::lstat(path.c_str(), &st) == 0 ? static_cast<std::uint64_t>(st.st_blocks) * 512 : 0;
}

class CleanScope : public ::testing::TestWithParam<const DiskLayout*> {
protected:
    CleanScope() { testing::writeSampleDisk(root, "ann", *GetParam()); }

    [[nodiscard]] DiskRoot disk() const { return testing::DiskBuilder(root, "ann", *GetParam()).disk(); }
    [[nodiscard]] std::string home() const { return testing::DiskBuilder(root, "ann", *GetParam()).home(); }

    testing::TempFolder temp;
    std::string root = temp.path() + "/disk";
};

// Unticked wins: "System Cache Files" holds every cache of the home, the browsers' included, and only it and one
// of two extension versions sharing a folder are ticked. An oracle of its own, from the ticks alone, says what may
// go: a file inside a ticked location and inside no unticked one. Everything else stays byte for byte, and the bytes
// the clean reports are the blocks of the files that went.
TEST_P(CleanScope, UntickedWinsAndTheRestOfATickedFolderGoes) {
    // Caches that no row but "System Cache Files" names.
    const std::string caches = GetParam() == &macosLayout() ? "/Library/Caches/" : "/.cache/";
    testing::DiskBuilder(root, "ann", *GetParam())
        .file(caches.substr(1) + "org.example.stray/a", 5000)
        .file(caches.substr(1) + "org.example.stray/deep/b", 9000)
        .file(caches.substr(1) + "c", 100);
    const DiskRoot onDisk = disk();
    const RecordList catalogue = catalogueOf(onDisk);
    untickEverything(catalogue);
    const std::vector<Item> systemCaches = itemsNamed(catalogue, "System Cache Files");
    ASSERT_EQ(systemCaches.size(), 1U);
    systemCaches[0].setTicked(true);
    const std::vector<Item> tabTidy = itemsNamed(catalogue, "Tab Tidy v1.0.0 (Person 1)");
    const std::vector<Item> tabTidyNext = itemsNamed(catalogue, "Tab Tidy v1.1.0 (Person 1)");
    ASSERT_EQ(tabTidy.size(), 1U);
    ASSERT_EQ(tabTidyNext.size(), 1U);
    ASSERT_EQ(testing::locationPaths(tabTidy[0]), testing::locationPaths(tabTidyNext[0])) << "one shared folder";
    tabTidy[0].setTicked(true);

    std::vector<std::string> ticked;
    std::vector<std::string> unticked;
    for (const Section& section : sectionsOf(catalogue)) {
        for (const Item& item : section.items()) {
            for (const std::string& path : testing::locationPaths(item)) {
                (item.isTicked() ? ticked : unticked).push_back(path);
            }
        }
    }
    const auto before = testing::treeChecksums(root);
    std::set<std::string> toGo;
    std::uint64_t bytesToGo = 0;
    for (const auto& [relative, entry] : before) {
        const std::string path = root + "/" + relative;
        const auto inside = [&](const std::string& place) { return isAtOrInside(path, place); };
        if (std::ranges::any_of(ticked, inside) && std::ranges::none_of(unticked, inside)) {
            toGo.insert(relative);
            bytesToGo += entry.starts_with("folder") ? 0 : allocated(path);
        }
    }

    CleaningEngine engine(CleanMode::Interactive, DeletionBoundary(home()));
    engine.clean(planClean(catalogue));
    const CleanOutcome outcome = engine.joinAll();

    const auto after = testing::treeChecksums(root);
    std::size_t gone = 0;
    for (const auto& [relative, entry] : before) {
        if (!toGo.contains(relative)) {
            EXPECT_EQ(after.contains(relative) ? after.at(relative) : "gone", entry) << relative;
        } else if (!entry.starts_with("folder")) {
            EXPECT_FALSE(after.contains(relative)) << relative;
            ++gone;
        }
    }
    for (const auto& [relative, entry] : after) {
        EXPECT_TRUE(before.contains(relative)) << "new: " << relative;
    }
    EXPECT_GT(gone, 3U) << "the rest of the caches went";
    EXPECT_EQ(outcome.bytesFreed(), bytesToGo);

    // The browsers' caches stayed; the caches folder was emptied around them and is reported so.
    const std::string chromeCache = GetParam() == &macosLayout()
                                        ? "Library/Caches/Google/Chrome/Default/Cache/data_1"
                                        : ".cache/google-chrome/Default/Cache/Cache_Data/data_1";
    EXPECT_TRUE(fs::exists(home() + "/" + chromeCache));
    const std::string cachesFolder = testing::locationPaths(systemCaches[0]).at(0);
    EXPECT_EQ(cachesFolder, home() + caches.substr(0, caches.size() - 1));
    ASSERT_EQ(outcome.removed.size(), 1U);
    EXPECT_EQ(outcome.removed[0], (RemovedLocation{cachesFolder, bytesToGo, false}));
    const std::string tabTidyFolder = testing::locationPaths(tabTidy[0]).at(0);
    EXPECT_TRUE(fs::exists(tabTidyFolder));
    EXPECT_TRUE(std::ranges::any_of(outcome.left, [&](const LeftAsItWas& left) {
        return left == LeftAsItWas{tabTidyFolder, LeftReason::UntickedInside, {}};
    }));
    for (const LeftAsItWas& left : outcome.left) {
        EXPECT_EQ(left.reason, LeftReason::UntickedInside) << left.location;
        EXPECT_TRUE(left.location == tabTidyFolder || isAtOrInside(left.location, cachesFolder)) << left.location;
    }
    EXPECT_FALSE(outcome.leftAgainstTheTicks());

    // Ticking the twin as well lets the shared folder go.
    tabTidyNext[0].setTicked(true);
    CleaningEngine again(CleanMode::Interactive, DeletionBoundary(home()));
    again.clean(planClean(catalogue));
    EXPECT_FALSE(fs::exists(tabTidyFolder));
}

// The preview walks as the clean does and changes nothing: the same locations and bytes the clean then reports.
TEST_P(CleanScope, APreviewChangesNothingAndForetellsTheClean) {
    const RecordList catalogue = catalogueOf(disk());
    const CleanPlan plan = planClean(catalogue);
    const auto before = testing::treeChecksums(root);
    const CleanPreview preview = previewClean(plan, DeletionBoundary(home()), makeAdultWords({"porn", "sex"}));
    EXPECT_EQ(testing::treeDifferences(before, testing::treeChecksums(root)), "");
    ASSERT_FALSE(preview.locations.empty());
    ASSERT_FALSE(preview.databases.empty());
    for (const PreviewedDatabase& database : preview.databases) {
        EXPECT_FALSE(database.item.empty()) << database.database;
    }
    EXPECT_GT(std::ranges::max(preview.databases, {}, &PreviewedDatabase::matchingRows).matchingRows, 0);
    const std::vector<std::string> lines = previewLines(preview);
    EXPECT_EQ(lines.size(), preview.locations.size() + preview.databases.size() + preview.left.size() + 1);
    EXPECT_TRUE(lines.back().starts_with("Would free ")) << lines.back();

    CleaningEngine engine(CleanMode::Interactive, DeletionBoundary(home()), makeAdultWords({"porn", "sex"}));
    engine.clean(plan);
    const CleanOutcome outcome = engine.joinAll();
    // The clean removes what the preview listed, with the bytes it foretold, in order; besides, only the session
    // files that go with a purged Chrome-family history.
    std::vector<RemovedLocation> listed;
    for (const RemovedLocation& removed : outcome.removed) {
        const std::string name = FileUrl{removed.location}.lastPathComponent();
        if (name != "Current Session" && name != "Current Tabs") {
            listed.push_back(removed);
        }
    }
    ASSERT_EQ(listed.size(), preview.locations.size());
    for (std::size_t i = 0; i < listed.size(); ++i) {
        EXPECT_EQ(listed[i].location, preview.locations[i].location);
        EXPECT_EQ(listed[i].bytes, preview.locations[i].bytes) << preview.locations[i].location;
    }
    ASSERT_EQ(outcome.purged.size(), preview.databases.size());
    for (std::size_t i = 0; i < outcome.purged.size(); ++i) {
        EXPECT_EQ(outcome.purged[i].database, preview.databases[i].database);
    }
}

// A database goes with the files SQLite keeps beside it; the same names beside a file that is no database stay,
// and a companion that is a link goes as a link.
TEST(SafeRemoveCompanions, ADatabaseGoesWithItsLogJournalAndSharedMemory) {
    const testing::TempFolder temp;
    testing::DiskBuilder d(temp.path() + "/disk");
    d.text("Profile/cookies.sqlite", std::string("SQLite format 3\0rest of the page", 32))
        .file("Profile/cookies.sqlite-wal", 9000)
        .file("Profile/cookies.sqlite-shm", 32768)
        .file("Profile/cookies.sqlite-journal", 512)
        .text("Profile/notes.txt", "not a database")
        .text("Profile/notes.txt-wal", "stays")
        .text("/Elsewhere/target", "stays")
        .link("Profile/Empty-wal", d.at("/Elsewhere/target"))
        .file("Profile/Empty", 0)
        .folder("Profile/Empty-shm");
    const DeletionBoundary boundary(d.home());
    std::uint64_t expected = 0;
    for (const char* name : {"cookies.sqlite", "cookies.sqlite-wal", "cookies.sqlite-shm", "cookies.sqlite-journal"}) {
        expected += allocated(d.at(std::string("Profile/") + name));
    }
    const auto untouched = testing::treeChecksums(d.root());
    const Removal preview = previewRemoval(boundary, FileUrl{d.at("Profile/cookies.sqlite")});
    EXPECT_EQ(testing::treeDifferences(untouched, testing::treeChecksums(d.root())), "");
    EXPECT_EQ(preview.bytes, expected);
    EXPECT_EQ(preview.companions.size(), 3U);
    // A preview that already counted the log as gone (its own row came first) does not count it again.
    PlaceSet gone;
    gone.add(boundary, d.at("Profile/cookies.sqlite-wal"));
    EXPECT_EQ(previewRemoval(boundary, FileUrl{d.at("Profile/cookies.sqlite")}, {}, gone).bytes,
              expected - allocated(d.at("Profile/cookies.sqlite-wal")));

    const Removal removal = removeItem(boundary, FileUrl{d.at("Profile/cookies.sqlite")});
    EXPECT_TRUE(removal.removed);
    EXPECT_FALSE(removal.left);
    EXPECT_EQ(removal.bytes, expected);
    for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
        EXPECT_FALSE(fs::exists(d.at(std::string("Profile/cookies.sqlite") + suffix))) << suffix;
    }
    EXPECT_TRUE(removeItem(boundary, FileUrl{d.at("Profile/notes.txt")}).removed);
    EXPECT_TRUE(fs::exists(d.at("Profile/notes.txt-wal")));
    // An empty file is a database to SQLite: its log goes (as a link), a folder of a companion's name stays.
    EXPECT_TRUE(removeItem(boundary, FileUrl{d.at("Profile/Empty")}).removed);
    EXPECT_FALSE(fs::is_symlink(d.at("Profile/Empty-wal")));
    EXPECT_TRUE(fs::is_directory(d.at("Profile/Empty-shm")));
    EXPECT_TRUE(fs::exists(d.at("/Elsewhere/target")));
}

// A place reached through a link on the way is left and said to be behind a link; an unticked place that is the
// very ticked location keeps all of it; the report names each and says how much went.
TEST(CleanReport, SaysWhatWentWhatStayedAndWhy) {
    const testing::TempFolder temp;
    testing::DiskBuilder d(temp.path() + "/disk");
    d.file("Library/Caches/One/a", 5000).file("Library/Caches/Two/b", 7000).text("/Elsewhere/keep", "keep");
    d.link("Library/Linked", d.at("/Elsewhere"));
    const auto item = [&](std::initializer_list<const char*> paths, bool ticked) {
        UrlList urls;
        for (const char* path : paths) {
            urls.push_back(FileUrl{d.at(path)});
        }
        return makeRecord({{"AllList", urls}, {"NameText", std::string("Item")}, {"isChecked", ticked}});
    };
    const RecordList catalogue{
        makeRecord({{"Name", std::string("S")},
                    {"List", RecordList{item({"Library/Caches/One", "Library/Caches/Two", "Library/Linked/keep"}, true),
                                        item({"Library/Caches/Two"}, false)}}})};
    CleaningEngine engine(CleanMode::Interactive, DeletionBoundary(d.home()));
    engine.clean(planClean(catalogue));
    const CleanOutcome outcome = engine.joinAll();
    const std::uint64_t one = outcome.removed.empty() ? 0 : outcome.removed[0].bytes;
    EXPECT_GE(one, 5000U);
    EXPECT_EQ(outcome.removed, (std::vector<RemovedLocation>{{d.at("Library/Caches/One"), one, true}}));
    EXPECT_EQ(outcome.left, (std::vector<LeftAsItWas>{{d.at("Library/Caches/Two"), LeftReason::UntickedInside, {}},
                                                      {d.at("Library/Linked/keep"), LeftReason::BehindLink, {}}}));
    EXPECT_TRUE(fs::exists(d.at("Library/Caches/Two/b")));
    EXPECT_TRUE(fs::exists(d.at("/Elsewhere/keep")));
    EXPECT_TRUE(outcome.leftAgainstTheTicks());

    CleanOutcome report = outcome;
    report.purged.push_back({d.at("Library/Safari/History.db"), 3});
    const std::vector<std::string> lines = reportLines(report);
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_EQ(lines[0],
              "Removed " + d.at("Library/Caches/One") + " (" + sizeTextFor(static_cast<std::int64_t>(one)).text + ")");
    EXPECT_EQ(lines[1], "Purged " + d.at("Library/Safari/History.db") + ": 3 rows removed");
    EXPECT_EQ(lines[2], "Left " + d.at("Library/Caches/Two") + ": unticked inside");
    EXPECT_EQ(lines[3], "Left " + d.at("Library/Linked/keep") + ": behind a link");
    EXPECT_EQ(lines[4], "Freed " + sizeTextFor(static_cast<std::int64_t>(one)).text +
                            " in 1 locations; 3 rows removed from 1 history databases; 2 left as they were");
    EXPECT_EQ(reportLines(CleanOutcome{}).back(),
              "Freed 0 byte in 0 locations; 0 rows removed from 0 history databases; 0 left as they were");
}

// A running browser holds back a ticked extension row or the preference reset that touches its files, as its own
// section does; unticked rows, and browsers whose files no ticked row touches, hold nothing back.
TEST_P(CleanScope, ATickedExtensionOrResetRowHoldsTheCleanWhileItsBrowserRuns) {
    const DiskRoot onDisk = disk();
    RecordPtr extensions;
    for (const RecordPtr& section : catalogueOf(onDisk)) {
        if (Section(section).kind() == RecordKind::ExtensionsSection) {
            extensions = section;
        }
    }
    ASSERT_NE(extensions, nullptr);
    const RecordList catalogue{extensions};
    untickEverything(catalogue);
    Section(extensions).setTicked(true);
    const std::string chromeProcess(findBrowser(*GetParam(), "chrome")->processNames.at(0));
    const std::string firefoxProcess(findBrowser(*GetParam(), "firefox")->processNames.at(0));
    const auto namesInTheWay = [&](const std::set<std::string>& running) {
        const testing::FakeRunningApps apps({running});
        std::vector<std::string> names;
        for (const RecordPtr& entry : browsersInTheWay(catalogue, onDisk, apps)) {
            names.push_back(entry->text("NameBrowser"));
        }
        return names;
    };
    const std::set<std::string> both{chromeProcess, firefoxProcess};
    EXPECT_TRUE(namesInTheWay(both).empty());
    itemsNamed(catalogue, "Reader Mode Plus v4.0 (Person 1)").at(0).setTicked(true);
    EXPECT_EQ(namesInTheWay(both), std::vector<std::string>{"Chrome"});
    EXPECT_TRUE(namesInTheWay({firefoxProcess}).empty());
    itemsNamed(catalogue, "Reset Browsers Preferences to Defaults").at(0).setTicked(true);
    EXPECT_EQ(namesInTheWay(both), (std::vector<std::string>{"Chrome", "Firefox"}));
    const testing::FakeRunningApps chrome({{chromeProcess}});
    EXPECT_EQ(browsersStillInTheWay(catalogue, onDisk, chrome).size(), 1U) << "Retry looks at these rows too";
}

INSTANTIATE_TEST_SUITE_P(Layouts, CleanScope, ::testing::Values(&macosLayout(), &linuxLayout()),
                         [](const auto& layout) { return std::string(layout.param->name); });

} // namespace
} // namespace tidewell
