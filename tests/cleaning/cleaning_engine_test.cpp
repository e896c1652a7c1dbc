#include <gtest/gtest.h>

#include <filesystem>

#include "cleaning/cleaning_engine.hpp"
#include "support/disk_builder.hpp"
#include "support/literal_purge.hpp"
#include "support/log_capture.hpp"
#include "support/sample_disk.hpp"

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
    RecordPtr database(const char* name, const std::string& path, Browser browser) const {
        testing::writeHistoryDatabase(path, browser, testing::sampleHistoryUrls());
        return makeRecord({{"NameText", std::string(name)}, {"isChecked", true}, {"Path", FileUrl{path}}});
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
    CleaningEngine(CleanMode::RealTime, boundary())
        .cleanSelected({unticked, makeRecord({{"Type", std::string("Scan")}}), again});
    for (const char* name : {"b", "c"}) {
        EXPECT_TRUE(fs::exists(d.at(name))) << name;
    }
    for (const char* name : {"a", "d", "e"}) {
        EXPECT_FALSE(fs::exists(d.at(name))) << name;
    }
    EXPECT_EQ(logs.lines(), std::vector<std::string>{"Remove Start"});
}

TEST_F(CleaningEngineTest, AnAllListWinsOverAPathAndTheNameChoosesTheRoutine) {
    const std::string chrome = d.at("Chrome/History");
    const RecordPtr emptyList = database("Google Chrome Adult History", chrome, Browser::Chrome);
    emptyList->set("AllList", UrlList{});
    const RecordPtr unknown =
        makeRecord({{"NameText", std::string("Opera Adult History")}, {"isChecked", true}, {"Path", FileUrl{chrome}}});
    const RecordPtr firefox = database("Firefox Adult History", d.at("places.sqlite"), Browser::Firefox);
    CleaningEngine window(CleanMode::Interactive, boundary(), makeAdultWords({"porn"}));
    window.cleanSelected({section({emptyList, unknown, firefox})});
    EXPECT_EQ(testing::tableDump(chrome, "urls").size(), 8U);
    EXPECT_EQ(testing::tableDump(d.at("places.sqlite"), "moz_places").size(), 7U);
    EXPECT_EQ(logs.lines(), std::vector<std::string>{"Chrome Deleted"}); // the window's Firefox text
}

} // namespace
} // namespace tidewell
