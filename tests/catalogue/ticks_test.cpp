#include <gtest/gtest.h>

#include "catalogue/items.hpp"
#include "catalogue/ticks.hpp"
#include "support/catalogue_helpers.hpp"

namespace tidewell {
namespace {

using testing::itemAt;

RecordPtr item(const std::string& name, bool header = true) {
    return getDicForList(header ? UrlList{FileUrl{"/x/" + name}} : UrlList{}, name, true);
}

RecordPtr section(const std::string& name, RecordList items, bool grouped = false) {
    return makeRecord({{"Name", name},
                       {"List", std::move(items)},
                       {"isChecked", true},
                       {"isEnabled", true},
                       {"isFromThornsweep", grouped}});
}

std::vector<std::int64_t> ticks(const Record& s) {
    std::vector<std::int64_t> out;
    for (const RecordPtr& row : *s.list("List")) {
        out.push_back(row->number("isChecked").value_or(99));
    }
    return out;
}

std::unique_ptr<Catalogue> catalogueOf(const RecordList& sections) {
    auto catalogue = std::make_unique<Catalogue>();
    for (const RecordPtr& s : sections) {
        catalogue->append(s);
    }
    return catalogue;
}

TEST(ItemTableTicks, AMixedBoxTicksTheSectionAndAllItsItems) {
    const RecordPtr safari = section("Safari", {item("a"), item("b")});
    itemAt(*safari, 0).set("isChecked", std::int64_t{0});
    safari->set("isChecked", std::int64_t{-1});
    const auto catalogue = catalogueOf({safari});

    EXPECT_EQ(checkBoxAction(*catalogue, 0, Tick::Mixed), Tick::On);
    EXPECT_EQ(ticks(*safari), (std::vector<std::int64_t>{1, 1}));
    EXPECT_EQ(safari->find("isChecked")->index(), 0U) << "the section's tick is stored as a boolean";
    EXPECT_TRUE(safari->flag("isChecked"));

    EXPECT_EQ(checkBoxAction(*catalogue, 0, Tick::Off), Tick::Off);
    EXPECT_EQ(ticks(*safari), (std::vector<std::int64_t>{0, 0}));
    EXPECT_FALSE(safari->flag("isChecked"));
}

TEST(ItemTableTicks, TheFourthRowNeverPassesItsTickDown) {
    RecordList sections;
    for (const char* name : {"A", "B", "C", "D", "E"}) {
        sections.push_back(section(name, {item("one"), item("two")}));
    }
    const auto catalogue = catalogueOf(sections);
    checkBoxAction(*catalogue, 3, Tick::Off);
    EXPECT_FALSE(sections[3]->flag("isChecked"));
    EXPECT_EQ(ticks(*sections[3]), (std::vector<std::int64_t>{1, 1}));
    checkBoxAction(*catalogue, 4, Tick::Off);
    EXPECT_EQ(ticks(*sections[4]), (std::vector<std::int64_t>{0, 0}));
}

TEST(ItemTableTicks, TheRemoveButtonFollowsSectionTicksAndThePromotionRow) {
    const RecordPtr a = section("A", {item("one")});
    const RecordPtr b = section("B", {item("one")});
    const auto plain = catalogueOf({a, b});
    EXPECT_TRUE(removeButtonEnabled(*plain));
    checkBoxAction(*plain, 0, Tick::Off);
    checkBoxAction(*plain, 1, Tick::Off);
    EXPECT_FALSE(removeButtonEnabled(*plain));
    b->set("isChecked", std::int64_t{-1});
    EXPECT_TRUE(removeButtonEnabled(*plain));

    const auto withPromotion = catalogueOf({a, makeRecord({{"Type", std::string("Scan")}})});
    EXPECT_TRUE(removeButtonEnabled(*withPromotion)) << "a record without isChecked passes the filter";
    EXPECT_FALSE(removeButtonEnabled(Catalogue{}));
}

TEST(DetailsTicks, PlainSectionsStoreWholeNumbersOnTheFirstRowOfThatName) {
    const RecordPtr s = section("Chrome", {item("Cookies (A)"), item("Twin"), item("Twin")});
    Tick state = Tick::Off;
    EXPECT_TRUE(selectionCheckBoxAction(*s, "Twin", state));
    EXPECT_EQ(ticks(*s), (std::vector<std::int64_t>{1, 0, 1}));
    EXPECT_EQ(itemAt(*s, 1).find("isChecked")->index(), 1U) << "stored as a whole number";

    state = Tick::Mixed;
    EXPECT_TRUE(selectionCheckBoxAction(*s, "Cookies (A)", state));
    EXPECT_EQ(state, Tick::On);
    EXPECT_EQ(ticks(*s), (std::vector<std::int64_t>{1, 0, 1}));

    EXPECT_FALSE(selectionCheckBoxAction(*s, "No such row", state));
}

TEST(DetailsTicks, GroupedCaptionsPassTheirTickToTheirGroup) {
    const RecordPtr s =
        section("Browser Extensions",
                {item("Safari Extensions", false), item("s1"), item("s2"), item("Google Chrome Extensions", false),
                 item("c1"), item("c2"), item("c3"), item("Reset Browsers Preferences to Defaults", false)},
                true);
    Tick state = Tick::Off;
    selectionCheckBoxAction(*s, "Google Chrome Extensions", state);
    EXPECT_EQ(ticks(*s), (std::vector<std::int64_t>{1, 1, 1, 0, 0, 0, 0, 1}));

    state = Tick::Mixed; // a caption showing mixed becomes ticked, with its group
    s->list("List")->at(3)->set("isChecked", std::int64_t{-1});
    selectionCheckBoxAction(*s, "Google Chrome Extensions", state);
    EXPECT_EQ(ticks(*s), (std::vector<std::int64_t>{1, 1, 1, 1, 1, 1, 1, 1}));
}

TEST(DetailsTicks, GroupedItemsSetTheirCaptionsTriState) {
    const RecordPtr s =
        section("Browser Extensions",
                {item("Chrome Extensions", false), item("c1"), item("c2"), item("c3"), item("Reset", false)}, true);
    Tick state = Tick::Off;
    selectionCheckBoxAction(*s, "c2", state);
    EXPECT_EQ(ticks(*s), (std::vector<std::int64_t>{-1, 1, 0, 1, 1}));
    state = Tick::Off;
    selectionCheckBoxAction(*s, "c1", state);
    state = Tick::Off;
    selectionCheckBoxAction(*s, "c3", state);
    EXPECT_EQ(ticks(*s), (std::vector<std::int64_t>{0, 0, 0, 0, 1}));
    state = Tick::On;
    selectionCheckBoxAction(*s, "c1", state);
    state = Tick::On;
    selectionCheckBoxAction(*s, "c2", state);
    state = Tick::On;
    selectionCheckBoxAction(*s, "c3", state);
    EXPECT_EQ(ticks(*s), (std::vector<std::int64_t>{1, 1, 1, 1, 1}));
}

TEST(DetailsTicks, TheLastGroupedRowChangesOnlyItselfAndReloadsNothing) {
    const RecordPtr s =
        section("Browser Extensions", {item("Safari Extensions", false), item("s1"), item("Reset", false)}, true);
    Tick state = Tick::Off;
    EXPECT_FALSE(selectionCheckBoxAction(*s, "Reset", state));
    EXPECT_EQ(ticks(*s), (std::vector<std::int64_t>{1, 1, 0}));
}

TEST(DetailsTicks, AGroupWithoutACaptionUsesTheFirstRow) {
    const RecordPtr s =
        section("Browser Extensions", {item("first"), item("second"), item("third"), item("Reset", false)}, true);
    Tick state = Tick::Off;
    selectionCheckBoxAction(*s, "third", state);
    // The count starts at the second row; its tri-state lands in the first row itself.
    EXPECT_EQ(ticks(*s), (std::vector<std::int64_t>{-1, 1, 0, 1}));
    state = Tick::Off;
    selectionCheckBoxAction(*s, "second", state);
    EXPECT_EQ(ticks(*s), (std::vector<std::int64_t>{0, 0, 0, 1}));
}

TEST(DetailsTicks, DuplicateNamesCountTheClickedStateForEveryTwin) {
    const RecordPtr s =
        section("Browser Extensions", {item("Caption", false), item("Twin"), item("Twin"), item("Reset", false)}, true);
    itemAt(*s, 2).set("isChecked", std::int64_t{0});
    Tick state = Tick::On;
    selectionCheckBoxAction(*s, "Twin", state);
    // The first twin is set; the second is unticked but counts as ticked because its name is the clicked one.
    EXPECT_EQ(ticks(*s), (std::vector<std::int64_t>{1, 1, 0, 1}));
}

TEST(DetailsTicks, DoneFoldsTheRowsIntoTheSectionsTick) {
    const RecordPtr s = section("Safari", {item("a"), item("b"), item("c")});
    doneActionFromselectionView(*s);
    EXPECT_EQ(s->number("isChecked"), 1);
    itemAt(*s, 1).set("isChecked", std::int64_t{0});
    doneActionFromselectionView(*s);
    EXPECT_EQ(s->number("isChecked"), -1);
    itemAt(*s, 0).set("isChecked", false);
    itemAt(*s, 2).set("isChecked", std::int64_t{-1}); // a mixed caption does not count as ticked
    doneActionFromselectionView(*s);
    EXPECT_EQ(s->number("isChecked"), 0);
    EXPECT_EQ(s->find("isChecked")->index(), 1U);
}

} // namespace
} // namespace tidewell
