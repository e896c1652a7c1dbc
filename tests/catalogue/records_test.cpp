#include <gtest/gtest.h>

#include "catalogue/items.hpp"
#include "catalogue/record_json.hpp"
#include "catalogue/record_views.hpp"
#include "support/catalogue_helpers.hpp"

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

// The views read and write the shared record itself: what one holder changes, the others see.
TEST(Records, ViewsShareTheRecordAndKeepEachKeysPlace) {
    const RecordPtr item = makeItem({FileUrl{"/a"}}, "Cookies", false);
    const Item sameItem(item);
    Item(item).setTick(Tick::Off);
    item->set("isEnabled", false);
    EXPECT_EQ(
        testing::keysOf(*sameItem.record()),
        (std::vector<std::string>{"AllList", "NameText", "isChecked", "sizeText", "isExt", "isHeader", "isEnabled"}));
    EXPECT_EQ(sameItem.tick(), Tick::Off);
    EXPECT_FALSE(sameItem.isCaption());

    const Section section(makeRecord({{"Name", std::string("S")}, {"List", RecordList{item, makeItem({}, "C", true)}}},
                                     {RecordKind::SourceSection}));
    EXPECT_EQ(section.summary(), "Cookies, C") << "without one of its own, the item names";
    EXPECT_TRUE(section.items()[1].isCaption());
    EXPECT_TRUE(section.isNotUnticked()) << "a section without a tick is not unticked";
    section.setTick(Tick::Mixed);
    EXPECT_EQ(section.tick(), Tick::Mixed);
    const Section promotion(makeRecord({{"Type", std::string("Scan")}}, {RecordKind::PromotionRow, nullptr, {}, "Ad"}));
    EXPECT_TRUE(promotion.isPromotion());
    EXPECT_EQ(promotion.summary(), "Ad");
}

// A record's role is not among its keys: the export shows exactly the keys, in their order, with their kinds.
TEST(Records, JsonKeepsKeysOrderAndKindsAndLeavesTheRoleOut) {
    const RecordPtr item = makeItem({FileUrl{"/Users/ann/My Caches/é"}}, "Downloads", false, false);
    const Record section{{{"Name", std::string("S")}, {"List", RecordList{item}}, {"isChecked", std::int64_t{-1}}},
                         {RecordKind::SourceSection, nullptr, "icon", "summary"}};
    EXPECT_EQ(toJson(section).dump(),
              R"({"Name":"S","List":[{"AllList":["file:///Users/ann/My%20Caches/%C3%A9"],"NameText":"Downloads",)"
              R"("isChecked":false,"sizeText":"0KB","isExt":false,"isHeader":true}],"isChecked":-1})");
    const RecordPtr caption = makeItem({}, "Caption", true);
    EXPECT_FALSE(caption->flag("isHeader"));
    EXPECT_TRUE(caption->flag("isChecked"));
    EXPECT_TRUE(caption->flag("isExt"));
}

TEST(FileUrls, EncodeThePathAndTakeItApart) {
    EXPECT_EQ(FileUrl{"/a b/c%d/e#f?g/h:i@j+k"}.text(), "file:///a%20b/c%25d/e%23f%3Fg/h:i@j+k");
    EXPECT_EQ(FileUrl{"/a/b/"}.lastPathComponent(), "b");
    EXPECT_EQ(FileUrl{"/"}.lastPathComponent(), "");
    EXPECT_EQ(FileUrl{"/a/"}.appending("/b").path, "/a/b");
}

} // namespace
} // namespace tidewell
