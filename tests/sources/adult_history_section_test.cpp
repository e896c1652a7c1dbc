#include <gtest/gtest.h>

#include <algorithm>

#include "sources/adult_history_section.hpp"
#include "support/catalogue_helpers.hpp"
#include "support/disk_builder.hpp"

namespace tidewell {
namespace {

using testing::itemNames;
using testing::keysOf;

TEST(AdultHistorySection, HoldsOneDatabaseItemPerInstalledBrowserInChromeSafariFirefoxOrder) {
    testing::TempFolder temp;
    testing::DiskBuilder d{temp.path() + "/disk"};
    EXPECT_TRUE(itemNames(adultHistorySection(d.disk())).empty());
    d.app("/Applications/Firefox.app").app("/Applications/Google Chrome.app");
    // Every folder of Firefox's profiles is a profile whose history is purged, whatever its name.
    const std::string profiles = "Library/Application Support/Firefox/Profiles/";
    d.folder(profiles + "Default");
    EXPECT_EQ(itemNames(adultHistorySection(d.disk())),
              (std::vector<std::string>{"Google Chrome Adult History", "Firefox Adult History"}));

    d.allApps().folder(profiles + "abc.default-release").folder(profiles + "work").text(profiles + "notes.txt", "n");
    d.link(profiles + "elsewhere", d.at("/Elsewhere")).folder("/Elsewhere");
    const RecordPtr section = testing::sectionOn(d.disk(), "Adult History");
    ASSERT_NE(section, nullptr);
    EXPECT_EQ(keysOf(*section), (std::vector<std::string>{"Name", "Img", "List", "isChecked", "isEnabled"}));
    EXPECT_EQ(Section(section).name(), "Adult History");
    EXPECT_EQ(Section(section).kind(), RecordKind::AdultHistorySection);
    EXPECT_EQ(itemNames(section), (std::vector<std::string>{"Google Chrome Adult History", "Safari Adult History",
                                                            "Firefox Adult History"}));
    const std::vector<std::pair<std::string, std::string>> databases{
        {"chrome", "Library/Application Support/Google/Chrome/Default/History"},
        {"safari", "Library/Safari/History.db"},
        {"firefox", "Library/Application Support/Firefox/Profiles/abc.default-release/places.sqlite"}};
    for (std::size_t i = 0; i < databases.size(); ++i) {
        const Item item = testing::itemAt(section, i);
        EXPECT_EQ(keysOf(*item.record()),
                  (std::vector<std::string>{"NameText", "isChecked", "isEnabled", "Path", "AllPaths"}));
        EXPECT_TRUE(item.isTicked() && item.isEnabled());
        EXPECT_EQ(item.kind(), RecordKind::HistoryItem);
        EXPECT_EQ(item.browser(), findBrowser(macosLayout(), databases[i].first));
        ASSERT_NE(item.historyDatabase(), nullptr);
        EXPECT_EQ(item.historyDatabase()->path, d.at(databases[i].second));
    }
    // Chrome: every profile "Local State" names; Firefox: the first named "default", then every other folder.
    d.chromeLocalState({{"Default", "Person 1"}, {"Profile 3", "Work"}, {"Guest Profile", "Guest"}});
    const RecordPtr again = adultHistorySection(d.disk());
    const auto pathsOf = [](const Item& item) {
        std::vector<std::string> paths;
        for (const FileUrl& database : item.historyDatabases()) {
            paths.push_back(database.path);
        }
        return paths;
    };
    const std::string chrome = "Library/Application Support/Google/Chrome/";
    EXPECT_EQ(pathsOf(testing::itemAt(again, 0)),
              (std::vector<std::string>{d.at(chrome + "Default/History"), d.at(chrome + "Profile 3/History"),
                                        d.at(chrome + "Guest Profile/History")}));
    std::vector<std::string> firefox = pathsOf(testing::itemAt(again, 2));
    ASSERT_EQ(firefox.size(), 3U);
    EXPECT_EQ(firefox.front(), d.at(profiles + "abc.default-release/places.sqlite"));
    std::sort(firefox.begin() + 1, firefox.end());
    EXPECT_EQ(firefox[1], d.at(profiles + "Default/places.sqlite"));
    EXPECT_EQ(firefox[2], d.at(profiles + "work/places.sqlite"));
}

} // namespace
} // namespace tidewell
