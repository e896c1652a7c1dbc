#include <gtest/gtest.h>

#include <filesystem>

#include "cleaning/cleaning_engine.hpp"
#include "layout/disk_layout.hpp"
#include "sample_disk/sample_disk.hpp"
#include "support/disk_builder.hpp"
#include "support/literal_purge.hpp"
#include "support/log_capture.hpp"

namespace tidewell {
namespace {

namespace fs = std::filesystem;
using testing::Browser;

class CleaningEngineTest : public ::testing::Test {
protected:
    RecordPtr locations(std::initializer_list<const char*> paths, Value tick) const {
        UrlList urls;
        for (const char* path : paths) {
            urls.push_back(FileUrl{d.at(path)});
        }
        return makeRecord({{"AllList", urls}, {"NameText", std::string("Item")}, {"isChecked", std::move(tick)}});
    }
    // An Adult History item of a browser of the layout, its database written with that browser's rows.
    RecordPtr database(const char* key, const std::string& path, Browser browser) const {
        testing::writeHistoryDatabase(path, browser, testing::sampleHistoryUrls());
        return makeRecord({{"NameText", std::string("Adult History")}, {"isChecked", true}, {"Path", FileUrl{path}}},
                          {RecordKind::HistoryItem, findBrowser(macosLayout(), key)});
    }
    static RecordPtr section(RecordList items, Value tick = true) {
        return makeRecord({{"Name", std::string("S")}, {"List", std::move(items)}, {"isChecked", std::move(tick)}});
    }
    [[nodiscard]] DeletionBoundary boundary() const { return DeletionBoundary(d.home()); }

    testing::TempFolder temp;
    testing::DiskBuilder d{temp.path() + "/disk"};
    testing::LogCapture logs;
};

TEST_F(CleaningEngineTest, CleansExactlyTheItemsTickedTrueWhateverTheirSectionsTick) {
    for (const char* name : {"a", "b", "c", "d", "e"}) {
        d.text(name, name);
    }
    const RecordPtr unticked =
        section({locations({"a"}, true), locations({"b"}, std::int64_t{-1}),
                 makeRecord({{"AllList", UrlList{FileUrl{d.at("c")}}}}), locations({"d"}, std::int64_t{1})},
                false);
    const RecordPtr again = section({locations({"a", "e"}, true)}); // "a" is gone by then: passed over
    std::vector<std::pair<std::size_t, std::size_t>> progress;
    CleaningEngine(CleanMode::RealTime, boundary())
        .clean(planClean({unticked, makeRecord({{"Type", std::string("Scan")}}), again}),
               [&](std::size_t done, std::size_t total) { progress.emplace_back(done, total); });
    EXPECT_EQ(progress, (std::vector<std::pair<std::size_t, std::size_t>>{{1, 4}, {2, 4}, {3, 4}, {4, 4}}));
    for (const char* name : {"b", "c"}) {
        EXPECT_TRUE(fs::exists(d.at(name))) << name;
    }
    for (const char* name : {"a", "d", "e"}) {
        EXPECT_FALSE(fs::exists(d.at(name))) << name;
    }
    EXPECT_EQ(logs.lines(), std::vector<std::string>{"Remove Start"});
}

// The purge is chosen by the item's browser, never by its name: an item of no browser purges nothing, whatever it
// is called.
TEST_F(CleaningEngineTest, AnAllListWinsOverAPathAndTheBrowserChoosesThePurge) {
    const std::string chrome = d.at("Chrome/History");
    const RecordPtr emptyList = database("chrome", chrome, Browser::Chrome);
    emptyList->set("AllList", UrlList{});
    const RecordPtr unknown = makeRecord(
        {{"NameText", std::string("Google Chrome Adult History")}, {"isChecked", true}, {"Path", FileUrl{chrome}}});
    const RecordPtr firefox = database("firefox", d.at("places.sqlite"), Browser::Firefox);
    CleaningEngine window(CleanMode::Interactive, boundary(), makeAdultWords({"porn"}));
    window.cleanTicked({section({emptyList, unknown, firefox})});
    EXPECT_EQ(testing::tableDump(chrome, "urls").size(), 8U);
    EXPECT_EQ(testing::tableDump(d.at("places.sqlite"), "moz_places").size(), 7U);
    EXPECT_EQ(logs.lines(), std::vector<std::string>{"Chrome Deleted"}); // the window's Firefox text
}

} // namespace
} // namespace tidewell
