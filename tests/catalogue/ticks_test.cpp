#include <gtest/gtest.h>

#include "catalogue/items.hpp"
#include "catalogue/ticks.hpp"

namespace tidewell {
namespace {

using Ticks = std::vector<std::int64_t>;

RecordPtr item(const std::string& name, bool caption = false) {
    return makeItem(caption ? UrlList{} : UrlList{FileUrl{"/x/" + name}}, name, true);
}

Section section(const std::string& name, RecordList items, bool grouped = false) {
    return Section(makeRecord({{"Name", name},
                               {"List", std::move(items)},
                               {"isChecked", true},
                               {"isEnabled", true},
                               {"isFromThornsweep", grouped}}));
}

Ticks ticks(const Section& s) {
    Ticks out;
    for (const Item& row : s.items()) {
        out.push_back(row.record()->number("isChecked").value_or(99));
    }
    return out;
}

std::unique_ptr<Catalogue> catalogueOf(const std::vector<Section>& sections) {
    auto catalogue = std::make_unique<Catalogue>();
    for (const Section& s : sections) {
        catalogue->append(s.record());
    }
    return catalogue;
}

// A tick box to click in the details panel, as it shows `state` before the click.
bool click(const Section& s, const std::string& name, Tick state) {
    return tickItemNamed(s, name, state);
}

TEST(ItemTableTicks, ASectionsBoxTicksItsItemsOnEveryRow) {
    std::vector<Section> sections;
    for (const char* name : {"A", "B", "C", "D", "E"}) {
        sections.push_back(section(name, {item("one"), item("two")}));
    }
    const auto catalogue = catalogueOf(sections);
    sections[0].items()[0].setTick(Tick::Off);
    sections[0].setTick(Tick::Mixed);
    EXPECT_EQ(tickSection(*catalogue, 0, Tick::Mixed), Tick::On) << "a mixed box becomes on";
    EXPECT_EQ(ticks(sections[0]), (Ticks{1, 1}));
    EXPECT_EQ(sections[0].record()->find("isChecked")->index(), 0U) << "the section's tick is stored as a boolean";

    // The fourth row (where "Adult History" stands) is no exception.
    EXPECT_EQ(tickSection(*catalogue, 3, Tick::Off), Tick::Off);
    EXPECT_EQ(sections[3].tick(), Tick::Off);
    EXPECT_EQ(ticks(sections[3]), (Ticks{0, 0}));
    sections[3].items()[1].setTick(Tick::Mixed);
    EXPECT_EQ(tickSection(*catalogue, 3, Tick::On), Tick::On);
    EXPECT_EQ(ticks(sections[3]), (Ticks{1, 1}));
    for (const Item& row : sections[3].items()) {
        EXPECT_EQ(row.record()->find("isChecked")->index(), 0U) << "the items' ticks are stored as booleans";
    }
    tickSection(*catalogue, 4, Tick::Off);
    EXPECT_EQ(ticks(sections[4]), (Ticks{0, 0}));
    EXPECT_EQ(tickSection(*catalogue, 9, Tick::On), Tick::On) << "a row outside the catalogue changes nothing";

    // Clean is enabled while some section is not unticked: a mixed one, or the promotion row, which has no tick.
    EXPECT_TRUE(anythingToClean(*catalogue));
    for (std::size_t row = 0; row < sections.size(); ++row) {
        tickSection(*catalogue, row, Tick::Off);
    }
    EXPECT_FALSE(anythingToClean(*catalogue));
    sections[1].setTick(Tick::Mixed);
    EXPECT_TRUE(anythingToClean(*catalogue));
    sections[1].setTick(Tick::Off);
    catalogue->append(makeRecord({{"Type", std::string("Scan")}}, {RecordKind::PromotionRow}));
    EXPECT_TRUE(anythingToClean(*catalogue));
    EXPECT_FALSE(anythingToClean(Catalogue{}));
}

TEST(DetailsTicks, APlainSectionsRowIsTheFirstOfItsNameAndDoneFoldsTheRowsIntoTheSection) {
    const Section s = section("Chrome", {item("Cookies (A)"), item("Twin"), item("Twin")});
    EXPECT_TRUE(click(s, "Twin", Tick::Off));
    EXPECT_EQ(ticks(s), (Ticks{1, 0, 1}));
    EXPECT_EQ(s.items()[1].record()->find("isChecked")->index(), 1U) << "stored as a whole number";
    Tick mixed = Tick::Mixed;
    EXPECT_TRUE(tickItemNamed(s, "Cookies (A)", mixed));
    EXPECT_EQ(mixed, Tick::On);
    EXPECT_FALSE(click(s, "No such row", Tick::On));

    settleSectionTick(s);
    EXPECT_EQ(s.record()->number("isChecked"), -1);
    EXPECT_EQ(s.record()->find("isChecked")->index(), 1U);
    click(s, "Twin", Tick::Mixed);
    settleSectionTick(s);
    EXPECT_EQ(s.tick(), Tick::On);
    s.items()[0].setTicked(false);
    s.items()[2].setTick(Tick::Mixed); // a mixed row does not count as ticked
    click(s, "Twin", Tick::Off);
    settleSectionTick(s);
    EXPECT_EQ(s.tick(), Tick::Off);
}

TEST(DetailsTicks, InAGroupedSectionCaptionsAndTheirItemsFollowEachOther) {
    const Section s =
        section("Browser Extensions",
                {item("Safari Extensions", true), item("s1"), item("s2"), item("Google Chrome Extensions", true),
                 item("c1"), item("c2"), item("c3"), item("Reset Browsers Preferences to Defaults", true)},
                true);
    // A caption passes its tick to its group; a caption showing mixed becomes ticked, with its group.
    click(s, "Google Chrome Extensions", Tick::Off);
    EXPECT_EQ(ticks(s), (Ticks{1, 1, 1, 0, 0, 0, 0, 1}));
    click(s, "Google Chrome Extensions", Tick::Mixed);
    EXPECT_EQ(ticks(s), (Ticks{1, 1, 1, 1, 1, 1, 1, 1}));
    // An item sets its caption's tri-state.
    click(s, "c2", Tick::Off);
    EXPECT_EQ(ticks(s), (Ticks{1, 1, 1, -1, 1, 0, 1, 1}));
    click(s, "c1", Tick::Off);
    click(s, "c3", Tick::Off);
    EXPECT_EQ(ticks(s), (Ticks{1, 1, 1, 0, 0, 0, 0, 1}));
    click(s, "c1", Tick::On);
    click(s, "c2", Tick::On);
    click(s, "c3", Tick::On);
    EXPECT_EQ(ticks(s), (Ticks{1, 1, 1, 1, 1, 1, 1, 1}));
    // The last row changes only itself, and the panel is not reloaded.
    EXPECT_FALSE(click(s, "Reset Browsers Preferences to Defaults", Tick::Off));
    EXPECT_EQ(ticks(s), (Ticks{1, 1, 1, 1, 1, 1, 1, 0}));
}

TEST(DetailsTicks, AGroupWithoutACaptionUsesItsFirstRowAndTwinsCountTheClickedState) {
    const Section noCaption =
        section("Browser Extensions", {item("first"), item("second"), item("third"), item("Reset", true)}, true);
    click(noCaption, "third", Tick::Off);
    // The count starts at the second row; its tri-state lands in the first row itself.
    EXPECT_EQ(ticks(noCaption), (Ticks{-1, 1, 0, 1}));
    click(noCaption, "second", Tick::Off);
    EXPECT_EQ(ticks(noCaption), (Ticks{0, 0, 0, 1}));

    const Section twins =
        section("Browser Extensions", {item("Caption", true), item("Twin"), item("Twin"), item("Reset", true)}, true);
    twins.items()[2].setTick(Tick::Off);
    click(twins, "Twin", Tick::On);
    // The first twin is set; the second is unticked but counts as ticked because its name is the clicked one.
    EXPECT_EQ(ticks(twins), (Ticks{1, 1, 0, 1}));
}

} // namespace
} // namespace tidewell
