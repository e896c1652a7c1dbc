#include <gtest/gtest.h>

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
    d.folder("Library/Application Support/Firefox/Profiles/Default");
    EXPECT_EQ(itemNames(adultHistorySection(d.disk())), std::vector<std::string>{"Google Chrome Adult History"})
        << "no item for a Firefox without a profile whose name holds \"default\"";

    d.allApps().folder("Library/Application Support/Firefox/Profiles/abc.default-release");
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
        EXPECT_EQ(keysOf(*item.record()), (std::vector<std::string>{"NameText", "isChecked", "isEnabled", "Path", "AllPaths"}));
        EXPECT_TRUE(item.isTicked() && item.isEnabled());
        EXPECT_EQ(item.kind(), RecordKind::HistoryItem);
        EXPECT_EQ(item.browser(), findBrowser(macosLayout(), databases[i].first));
        ASSERT_NE(item.historyDatabase(), nullptr);
        EXPECT_EQ(item.historyDatabase()->path, d.at(databases[i].second));
    }
}

} // namespace
} // namespace tidewell
