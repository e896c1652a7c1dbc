#include <gtest/gtest.h>

#include <cstdlib>

#include "layout/disk_root.hpp"
#include "catalogue/items.hpp"
#include "catalogue/record_json.hpp"
#include "catalogue/records.hpp"
#include "support/catalogue_helpers.hpp"
#include "support/disk_builder.hpp"

namespace tidewell {
namespace {

TEST(Records, TicksCompareAsNumbersAndAbsentKeysReadFalse) {
    const Record record{{"on", true},
                        {"one", std::int64_t{1}},
                        {"off", false},
                        {"mixed", std::int64_t{-1}},
                        {"name", std::string("x")}};
    EXPECT_TRUE(isTrue(record, "on"));
    EXPECT_TRUE(isTrue(record, "one"));
    EXPECT_FALSE(isTrue(record, "mixed"));
    EXPECT_FALSE(isTrue(record, "absent"));
    EXPECT_FALSE(isTrue(record, "name"));

    EXPECT_FALSE(isNotFalse(record, "off"));
    EXPECT_TRUE(isNotFalse(record, "mixed"));
    EXPECT_TRUE(isNotFalse(record, "absent")); // an absent value is not equal to false
    EXPECT_TRUE(isNotFalse(record, "name"));

    EXPECT_FALSE(record.flag("absent"));
    EXPECT_TRUE(record.flag("mixed"));
    EXPECT_EQ(record.number("on"), 1);
    EXPECT_EQ(record.number("name"), std::nullopt);
}

TEST(Records, SettingAKeyKeepsItsPlaceAndRecordsAreShared) {
    auto item = makeRecord({{"AllList", UrlList{}}, {"NameText", std::string("a")}, {"isChecked", true}});
    const RecordPtr sameItem = item;
    item->set("isChecked", std::int64_t{0});
    item->set("isEnabled", false);
    EXPECT_EQ(testing::keysOf(*sameItem), (std::vector<std::string>{"AllList", "NameText", "isChecked", "isEnabled"}));
    EXPECT_FALSE(isNotFalse(*sameItem, "isChecked"));
}

TEST(Records, JsonKeepsKeysOrderAndKinds) {
    auto item = getDicForList({FileUrl{"/Users/ann/My Caches/é"}}, "Downloads", false);
    const Record section{{"Name", std::string("S")}, {"List", RecordList{item}}, {"isChecked", std::int64_t{-1}}};
    const auto json = toJson(section);
    EXPECT_EQ(json.dump(),
              R"({"Name":"S","List":[{"AllList":["file:///Users/ann/My%20Caches/%C3%A9"],"NameText":"Downloads",)"
              R"("isChecked":false,"sizeText":"0KB","isExt":false,"isHeader":true}],"isChecked":-1})");
}

TEST(ItemFactory, TicksEverythingButDownloadsAndMarksEmptyLists) {
    const auto downloads = getDicForList({}, "Downloads", false);
    EXPECT_FALSE(downloads->flag("isChecked"));
    EXPECT_FALSE(downloads->flag("isHeader"));
    EXPECT_EQ(testing::keysOf(*downloads),
              (std::vector<std::string>{"AllList", "NameText", "isChecked", "sizeText", "isExt", "isHeader"}));
    EXPECT_EQ(downloads->text("sizeText"), "0KB");

    for (const char* name : {"Mail Download", "downloads", "Downloads ", "Cookies"}) {
        const auto item = getDicForList({FileUrl{"/x"}}, name, true);
        EXPECT_TRUE(item->flag("isChecked")) << name;
        EXPECT_TRUE(item->flag("isHeader"));
        EXPECT_TRUE(item->flag("isExt"));
    }
}

TEST(FileUrls, EncodeThePathAndTakeItApart) {
    EXPECT_EQ(FileUrl{"/a b/c%d/e#f?g/h:i@j+k"}.text(), "file:///a%20b/c%25d/e%23f%3Fg/h:i@j+k");
    EXPECT_EQ(FileUrl{"/a/b/"}.lastPathComponent(), "b");
    EXPECT_EQ(FileUrl{"/"}.lastPathComponent(), "");
    EXPECT_EQ(FileUrl{"/a/"}.appending("/b").path, "/a/b");
}

TEST(DiskRoots, HomeComesFromTheLoginNameNeverFromHome) {
    testing::TempFolder temp;
    const char* savedHome = std::getenv("HOME");
    ::setenv("HOME", "/somewhere/else", 1);
    const auto disk = DiskRoot::make(temp.path() + "/", "ann");
    if (savedHome != nullptr) {
        ::setenv("HOME", savedHome, 1);
    }
    ASSERT_TRUE(disk.has_value());
    EXPECT_EQ(disk->homeUrl().path, temp.path() + "/Users/ann");
    EXPECT_EQ(disk->resolve("/Applications/Safari.app"), temp.path() + "/Applications/Safari.app");

    const auto system = DiskRoot::make("/", "ann");
    ASSERT_TRUE(system.has_value());
    EXPECT_EQ(system->homeUrl().text(), "file:///Users/ann");
    EXPECT_EQ(system->resolve("/Applications"), "/Applications");
}

TEST(DiskRoots, RefuseNamesThatLeaveUsersAndRootsThatAreNotFolders) {
    testing::TempFolder temp;
    for (const char* login : {"", ".", "..", "a/b", "../root"}) {
        EXPECT_FALSE(DiskRoot::make(temp.path(), login).has_value()) << login;
    }
    EXPECT_FALSE(DiskRoot::make(temp.path() + "/missing", "ann").has_value());
    testing::DiskBuilder(temp.path()).file("/plain-file");
    EXPECT_FALSE(DiskRoot::make(temp.path() + "/plain-file", "ann").has_value());
    EXPECT_FALSE(DiskRoot::processLoginName().empty());
}

} // namespace
} // namespace tidewell
