#include <gtest/gtest.h>

#include <algorithm>

#include "base/byte_count.hpp"
#include "base/folders.hpp"
#include "sample_disk/sample_disk.hpp"
#include "support/catalogue_helpers.hpp"
#include "support/disk_builder.hpp"

namespace tidewell {
namespace {

using testing::itemAt;
using testing::itemNames;
using testing::locationPaths;
using testing::sectionOn;
using Paths = std::vector<std::string>;

// The exact items and locations of each section on a full disk are in the sample disk's recorded outputs; these
// are the rules behind them.
class SourceSections : public ::testing::Test {
protected:
    testing::TempFolder temp;
    testing::DiskBuilder d{temp.path() + "/disk"};
    const std::string chrome = "Library/Application Support/Google/Chrome/";
    const std::string profiles = "Library/Application Support/Firefox/Profiles/";
};

TEST_F(SourceSections, ASourceNeedsItsApplicationButSystemIsAlwaysThere) {
    d.file("Library/Safari/History.db", 5000).file(profiles + "a.default/cookies.sqlite", 5000);
    d.chromeLocalState({{"Default", "Person 1"}});
    d.file("Library/Containers/com.apple.mail/Data/Library/Mail Downloads/x.pdf", 5000);
    d.file("Library/Caches/Adobe/Flash Player/x", 5000);
    for (const char* name : {"Safari", "Chrome", "Firefox", "Mail", "Flash"}) {
        const BuilderOutcome outcome = testing::runBuilder(testing::builderNamed(name), d.disk());
        EXPECT_FALSE(outcome.section) << name;
        EXPECT_TRUE(outcome.handOver) << name;
    }
    const RecordPtr system = sectionOn(d.disk(), "System");
    ASSERT_TRUE(system);
    EXPECT_EQ(Section(system).image(), d.at("/System/Library/CoreServices/Finder.app"));

    d.allApps();
    for (const char* name : {"Safari", "Chrome", "Firefox", "Mail", "Flash"}) {
        const RecordPtr section = sectionOn(d.disk(), name);
        ASSERT_TRUE(section) << name;
        EXPECT_EQ(Section(section).name(), name);
        EXPECT_EQ(Section(section).kind(), RecordKind::SourceSection);
        EXPECT_EQ(Section(section).tick(), Tick::On) << name;
    }
    EXPECT_EQ(Section(sectionOn(d.disk(), "Chrome")).browser(), findBrowser(macosLayout(), "chrome"));
    EXPECT_EQ(Section(sectionOn(d.disk(), "Mail")).browser(), nullptr);
}

TEST_F(SourceSections, SafariMakesBookmarksByHandAndStartsWithDownloadsUnticked) {
    d.app("/Applications/Safari.app");
    const RecordPtr empty = sectionOn(d.disk(), "Safari");
    EXPECT_EQ(Section(empty).sizeText(), "0 byte");
    EXPECT_FALSE(Section(empty).isEnabled()) << "an empty section is shown disabled but ticked";

    d.file("Library/Safari/History.db", 40000).file("Library/Safari/Bookmarks.plist");
    const RecordPtr safari = sectionOn(d.disk(), "Safari");
    ASSERT_EQ(Section(safari).itemCount(), 14U);
    for (std::size_t i = 0; i < 14; ++i) {
        EXPECT_EQ(itemAt(safari, i).isTicked(), i != 3 && i != 4) << itemAt(safari, i).name();
    }
    // Bookmarks is made by hand: four keys of its own, then what measurement writes.
    EXPECT_EQ(testing::keysOf(*itemAt(safari, 3).record()),
              (Paths{"AllList", "NameText", "isChecked", "sizeText", "isEnabled"}));
    EXPECT_TRUE(itemAt(safari, 2).isEnabled());
    EXPECT_FALSE(itemAt(safari, 0).isEnabled());
}

TEST_F(SourceSections, ChromeFollowsItsLocalState) {
    d.app("/Applications/Google Chrome.app");
    const BuilderOutcome neverStarted = testing::runBuilder(testing::builderNamed("Chrome"), d.disk());
    EXPECT_FALSE(neverStarted.section);
    EXPECT_FALSE(neverStarted.handOver) << "without a Local State there is no hand-over either";

    for (const char* localState :
         {"not json", "[1,2]", R"({"profile":{"info_cache":[]}})", R"({"other":1})", "\xEF\xBB\xBF{\"profile\":{}}"}) {
        d.text(chrome + "Local State", localState);
        const RecordPtr section = sectionOn(d.disk(), "Chrome");
        ASSERT_TRUE(section) << localState;
        EXPECT_EQ(itemNames(section), Paths{"Browser Caches"});
        EXPECT_EQ(locationPaths(itemAt(section, 0)), Paths{d.at("Library/Caches/Google/Chrome")});
    }

    // Profiles keep their own names, even repeated or missing, in the order "Local State" lists them.
    d.text(chrome + "Local State",
           R"({"profile":{"info_cache":{"Profile 3":{"name":"Twin"},"Default":{"name":"Twin"},"Profile 9":{"x":1},)"
           R"("Profile 7":{"name":42}}}})");
    const Paths names = itemNames(sectionOn(d.disk(), "Chrome"));
    ASSERT_EQ(names.size(), 37U);
    EXPECT_EQ((Paths{names[0], names[9], names[18], names[27], names[36]}),
              (Paths{"Cookies (Twin)", "Cookies (Twin)", "Cookies ()", "Cookies ()", "Browser Caches"}));

    // The caches: each profile's five folders in profile order, then the shared cache folder. "Pepper Data" is
    // listed twice and measured twice.
    d.chromeLocalState({{"Default", "Person 1"}, {"Profile 1", "Work"}});
    d.file(chrome + "Default/Pepper Data/plugin.dat", 10000);
    const RecordPtr section = sectionOn(d.disk(), "Chrome");
    ASSERT_EQ(Section(section).itemCount(), 19U);
    EXPECT_EQ(locationPaths(itemAt(section, 18)),
              (Paths{d.at(chrome + "Default/Application Cache"), d.at(chrome + "Default/GPUCache"),
                     d.at(chrome + "Default/Code Cache"), d.at(chrome + "Default/Service Worker/CacheStorage"),
                     d.at(chrome + "Default/Service Worker/ScriptCache"), d.at(chrome + "Profile 1/Application Cache"),
                     d.at(chrome + "Profile 1/GPUCache"), d.at(chrome + "Profile 1/Code Cache"),
                     d.at(chrome + "Profile 1/Service Worker/CacheStorage"),
                     d.at(chrome + "Profile 1/Service Worker/ScriptCache"),
                     d.at("Library/Caches/Google/Chrome")}));
    const Item storage = itemAt(section, 8);
    EXPECT_EQ(storage.name(), "Local Storage (Person 1)");
    EXPECT_EQ(locationPaths(storage)[4], locationPaths(storage)[6]);
    EXPECT_EQ(storage.sizeText(),
              formatByteCount(2 * SizeCounter(0).allocatedSize(d.at(chrome + "Default/Pepper Data"))));
}

TEST_F(SourceSections, FirefoxCleansTheFirstProfileNamedDefaultInListingOrder) {
    d.app("/Applications/Firefox.app");
    d.file(profiles + "x1y2.Default/prefs.js", 3000);
    const RecordPtr none = sectionOn(d.disk(), "Firefox");
    ASSERT_TRUE(none);
    EXPECT_TRUE(itemNames(none).empty()) << "the case of \"default\" matters";
    EXPECT_FALSE(Section(none).isEnabled());

    d.file(profiles + "abcd.default/prefs.js", 3000).file(profiles + "efgh.default-release/prefs.js", 3000);
    std::string first;
    for (const std::string& name : listFolderNames(d.at(profiles))) {
        if (name.find("default") != std::string::npos) {
            first = name;
            break;
        }
    }
    const RecordPtr section = sectionOn(d.disk(), "Firefox");
    EXPECT_EQ(itemNames(section), (Paths{"Cookies", "Browser Caches", "Login Data", "LastSession", "User preferences",
                                         "Local Storage", "Crash Reports"}));
    EXPECT_EQ(locationPaths(itemAt(section, 4)),
              (Paths{d.at(profiles + first + "/user.js"), d.at(profiles + first + "/xulstore.json"),
                     d.at(profiles + first + "/prefs.js")}));
}

// The containers' caches and logs and the trash are listed entry by entry from the real folders, so a clean
// empties them and keeps the folders; each item's size is what its entries hold.
TEST_F(SourceSections, SystemListsQuarantineRecordsAndTheEntriesOfTheContainersCachesLogsAndTheTrash) {
    const std::string containers = "Library/Containers/";
    d.file("Library/Preferences/com.apple.LaunchServices.QuarantineEventsV2", 100)
        .file("Library/Preferences/COM.APPLE.LAUNCHSERVICES.QUARANTINEEVENTSV2-journal", 100)
        .file("Library/Preferences/com.apple.LaunchServices.plist", 100);
    d.file(containers + "com.example.notes/Data/Library/Caches/index.db", 5000)
        .file(containers + "com.example.notes/Data/Library/Caches/fonts/a.bin", 9000)
        .file(containers + "com.example.notes/Data/Library/Logs/notes.log", 5000)
        .file(containers + "org.example.paint/Data/Library/Caches/tiles.db", 20000)
        .folder(containers + "org.example.empty/Data/Library/Logs")
        .file(containers + ".DS_Store/Data/Library/Caches/never")
        .file(containers + "stray-file")
        .file(".Trash/old.txt", 5000)
        .file(".Trash/Old Folder/inside.txt", 7000);
    const RecordPtr system = sectionOn(d.disk(), "System");
    EXPECT_EQ(itemNames(system), (Paths{"System Cache Files", "Applications Cache Files", "System Log Files",
                                        "Applications Log Files", "System Downloads Log", "Trash Files"}));
    const auto sorted = [&](std::size_t item) {
        Paths paths = locationPaths(itemAt(system, item));
        std::ranges::sort(paths);
        return paths;
    };
    EXPECT_EQ(sorted(4), (Paths{d.at("Library/Preferences/COM.APPLE.LAUNCHSERVICES.QUARANTINEEVENTSV2-journal"),
                                d.at("Library/Preferences/com.apple.LaunchServices.QuarantineEventsV2")}));
    // ".DS_Store" in the containers folder is passed over; a stray file there holds no caches.
    EXPECT_EQ(sorted(1), (Paths{d.at(containers + "com.example.notes/Data/Library/Caches/fonts"),
                                d.at(containers + "com.example.notes/Data/Library/Caches/index.db"),
                                d.at(containers + "org.example.paint/Data/Library/Caches/tiles.db")}));
    EXPECT_EQ(sorted(3), (Paths{d.at(containers + "com.example.notes/Data/Library/Logs/notes.log")}));
    EXPECT_EQ(sorted(5), (Paths{d.at(".Trash/Old Folder"), d.at(".Trash/old.txt")}));
    SizeCounter oracle(0);
    for (const std::size_t item : {1U, 3U, 5U}) {
        std::int64_t bytes = 0;
        for (const std::string& path : locationPaths(itemAt(system, item))) {
            bytes += oracle.allocatedSize(path);
        }
        ASSERT_GT(bytes, 0) << item;
        EXPECT_EQ(itemAt(system, item).sizeText(), sizeTextFor(bytes).text) << item;
    }

    // Empty folders list nothing and read "0 byte".
    testing::removeTree(d.at(".Trash"));
    d.folder(".Trash");
    EXPECT_TRUE(locationPaths(itemAt(sectionOn(d.disk(), "System"), 5)).empty());
    EXPECT_EQ(itemAt(sectionOn(d.disk(), "System"), 5).sizeText(), "0 byte");
}

// Saved passwords, extensions and the preference reset are kept unless a person ticks them, on either layout; so
// is everything Safari starts unticked. Everything else starts ticked.
TEST(DefaultTicks, PasswordsExtensionsAndThePreferenceResetStartUnticked) {
    for (const DiskLayout* layout : {&macosLayout(), &linuxLayout()}) {
        SCOPED_TRACE(layout->name);
        const testing::TempFolder temp;
        testing::writeSampleDisk(temp.path() + "/disk", "ann", *layout);
        const DiskRoot disk = testing::DiskBuilder(temp.path() + "/disk", "ann", *layout).disk();
        std::size_t passwords = 0;
        std::size_t extensionRows = 0;
        for (const SectionBuilder& builder : sectionBuilders(*layout)) {
            const RecordPtr record = testing::runBuilder(builder, disk).section;
            if (!record || Section(record).isPromotion()) {
                continue;
            }
            const Section section(record);
            const bool extensions = section.name() == "Browser Extensions";
            EXPECT_EQ(section.tick(), extensions ? Tick::Off : Tick::On) << section.name();
            for (const Item& item : section.items()) {
                const bool password = item.name().starts_with("Login Data");
                const bool safariKept =
                    section.name() == "Safari" && (item.name() == "Bookmarks" || item.name() == "Downloads");
                passwords += password ? 1 : 0;
                extensionRows += extensions ? 1 : 0;
                EXPECT_EQ(item.tick(), password || extensions || safariKept ? Tick::Off : Tick::On)
                    << section.name() << " / " << item.name();
                // The window warns when one of these is ticked; nothing else warns.
                const std::string_view warning = item.record()->role().tickWarning;
                if (password) {
                    EXPECT_EQ(warning, "saved passwords") << section.name() << " / " << item.name();
                } else if (extensions) {
                    EXPECT_EQ(warning, item.record() == section.items().back().record() ? "the browsers' settings"
                                       : item.isCaption()                                ? "the browser's extensions"
                                                                                         : "the extension")
                        << item.name();
                } else {
                    EXPECT_EQ(warning, "") << section.name() << " / " << item.name();
                }
            }
        }
        // Chrome's two profiles and Firefox's one on macOS; on Linux two Chrome, one Chromium and two Firefox.
        EXPECT_EQ(passwords, layout == &macosLayout() ? 3U : 5U);
        EXPECT_GT(extensionRows, 6U);
    }
}

} // namespace
} // namespace tidewell
