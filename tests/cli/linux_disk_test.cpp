#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "base/byte_count.hpp"
#include "cli/cli.hpp"
#include "sample_disk/sample_disk.hpp"
#include "support/disk_oracle.hpp"
#include "support/fake_running_apps.hpp"
#include "support/literal_purge.hpp"
#include "support/tool_run.hpp"
#include "support/tree_checksums.hpp"

namespace tidewell::cli {
namespace {

namespace fs = std::filesystem;

using testing::allocatedBelow;
using testing::pathOfUrl;

// Each test works on its own copy of the Linux sample disk, found by --layout auto.
class LinuxDisk : public ::testing::Test {
protected:
    LinuxDisk() { testing::writeSampleDisk(disk, "ann", linuxLayout()); }

    using Run = testing::ToolRun;
    Run run(std::vector<std::string> args) {
        args.insert(args.begin(), {"--root", disk, "--user", "ann"});
        std::ostringstream out;
        std::ostringstream err;
        std::istringstream in;
        CliIo io{out, err, in, false, &nothingRuns, [](std::chrono::seconds) {}};
        const int status = runCli(args, io);
        return {status, out.str(), err.str()};
    }
    nlohmann::json scan() {
        const Run scanned = run({"scan", "--json"});
        EXPECT_EQ(scanned.status, 0) << scanned.err;
        return nlohmann::json::parse(scanned.out);
    }
    static std::vector<std::string> itemNames(const nlohmann::json& section) {
        std::vector<std::string> names;
        for (const auto& item : section["List"]) {
            names.push_back(item["NameText"]);
        }
        return names;
    }
    std::size_t rows(const std::string& database, const char* table) const {
        return testing::tableDump(home + "/" + database, table).size();
    }

    testing::TempFolder temp;
    std::string disk = temp.path() + "/disk";
    std::string home = disk + "/home/ann";
    testing::FakeRunningApps nothingRuns{{}};
};

TEST_F(LinuxDisk, EachSectionIsThereInOrderWithItsItems) {
    const nlohmann::json catalogue = scan();
    std::vector<std::string> sections;
    for (const auto& section : catalogue) {
        sections.push_back(section.value("Name", "<promotion>"));
    }
    EXPECT_EQ(sections, (std::vector<std::string>{"Chrome", "Chromium", "Firefox", "Adult History",
                                                  "Browser Extensions", "System", "Mail", "Flash", "<promotion>"}));
    const std::vector<std::string> chrome = itemNames(catalogue[0]);
    ASSERT_EQ(chrome.size(), 19U);
    EXPECT_EQ(chrome[0], "Cookies (Person 1)");
    EXPECT_EQ(chrome[11], "History (Work)");
    // Two Firefox profiles: each item names its profile; the crash reports are the browser's.
    const std::vector<std::string> firefox = itemNames(catalogue[2]);
    ASSERT_EQ(firefox.size(), 13U);
    EXPECT_EQ(firefox[0], "Cookies (default-release)");
    EXPECT_EQ(firefox[6], "Cookies (default)");
    EXPECT_EQ(firefox[12], "Crash Reports");
    EXPECT_EQ(itemNames(catalogue[3]), (std::vector<std::string>{"Google Chrome Adult History",
                                                                 "Chromium Adult History", "Firefox Adult History"}));
    EXPECT_EQ(catalogue[3]["List"][0]["AllPaths"].size(), 2U) << "both Chrome profiles";
    const std::vector<std::string> extensions = itemNames(catalogue[4]);
    for (const char* caption : {"Chrome Extensions", "Chromium Extensions", "Firefox Extensions",
                                "Reset Browsers Preferences to Defaults"}) {
        EXPECT_NE(std::ranges::find(extensions, caption), extensions.end()) << caption;
    }
    EXPECT_EQ(itemNames(catalogue[5]), (std::vector<std::string>{"System Cache Files", "Thumbnails", "Recent Files",
                                                                 "Trash Files", "Applications Log Files"}));
    EXPECT_EQ(catalogue[5]["List"][3]["AllList"].size(), 4U) << "two trashed files and their two info files";
    EXPECT_EQ(itemNames(catalogue[6]), (std::vector<std::string>{"Mail Cache Files", "Mail Download"}));

    // Without Chrome's registry, Firefox's profiles.ini or any Flash folder, those sections are gone; the current
    // Firefox folder of XDG is taken when ~/.mozilla is absent.
    fs::remove(home + "/.config/google-chrome/Local State");
    fs::remove_all(home + "/.macromedia");
    fs::rename(home + "/.mozilla", disk + "/moved");
    fs::create_directories(home + "/.config/mozilla");
    fs::rename(disk + "/moved/firefox", home + "/.config/mozilla/firefox");
    const nlohmann::json fewer = scan();
    EXPECT_EQ(fewer[0]["Name"], "Chromium");
    EXPECT_EQ(fewer[1]["Name"], "Firefox");
    EXPECT_EQ(itemNames(fewer[1]).size(), 13U);
    EXPECT_EQ(fewer[fewer.size() - 2]["Name"], "Mail");
}

// Nested locations (the browser caches and thumbnails inside ~/.cache) count once in the total; every item
// measures what an independent walk of its locations finds.
TEST_F(LinuxDisk, SizesAgreeWithAnIndependentWalk) {
    const nlohmann::json catalogue = scan();
    std::vector<std::string> places;
    for (const auto& section : catalogue) {
        if (!section.contains("List") || section["Name"] == "Browser Extensions") {
            continue;
        }
        for (const auto& item : section["List"]) {
            std::int64_t bytes = 0;
            for (const auto& url : item.value("AllList", nlohmann::json::array())) {
                const std::string path = pathOfUrl(url.get<std::string>());
                bytes += allocatedBelow(path);
                places.push_back(path);
            }
            if (item.contains("AllList")) {
                EXPECT_EQ(item["sizeText"], sizeTextFor(bytes).text) << item["NameText"];
            }
        }
    }
    std::ranges::sort(places);
    std::int64_t once = 0;
    std::string last = "//";
    for (const std::string& place : places) {
        if (place != last && !place.starts_with(last + "/")) {
            once += allocatedBelow(place);
            last = place;
        }
    }
    ASSERT_GT(allocatedBelow(home + "/.cache/google-chrome"), 0);
    const Run text = run({"scan"});
    EXPECT_NE(text.out.find("Total: " + formatByteCount(once) + " in 8 sections"), std::string::npos) << text.out;
}

TEST_F(LinuxDisk, CleanRemovesExactlyWhatIsTicked) {
    const auto before = testing::treeChecksums(disk);
    const Run cleaned = run({"clean", "--yes", "--untick", "Chrome", "--untick", "Chromium", "--untick", "Firefox",
                             "--untick", "Adult History/Google Chrome Adult History", "--untick",
                             "Adult History/Chromium Adult History", "--untick", "Adult History/Firefox Adult History",
                             "--untick", "Browser Extensions", "--untick", "System",
                             "--untick", "Mail", "--untick", "Flash", "--tick", "System/Trash Files", "--tick",
                             "Firefox/Cookies (default-release)", "--tick", "Chrome/LastSession (Work)"});
    ASSERT_EQ(cleaned.status, 0) << cleaned.err;
    auto expected = before;
    const std::string profile = "home/ann/.config/google-chrome/Profile 1/";
    std::erase_if(expected, [&](const auto& entry) {
        const std::string& path = entry.first;
        return (path.starts_with("home/ann/.local/share/Trash/") && path.find('/', 28) != std::string::npos &&
                path.size() > 33) ||
               path == "home/ann/.mozilla/firefox/k2x9w0aq.default-release/cookies.sqlite" ||
               path.starts_with(profile + "Sessions");
    });
    // The trash's own folders stay.
    ASSERT_TRUE(expected.contains("home/ann/.local/share/Trash/files"));
    ASSERT_TRUE(expected.contains("home/ann/.local/share/Trash/info"));
    EXPECT_EQ(testing::treeDifferences(expected, testing::treeChecksums(disk)), "");
}

TEST_F(LinuxDisk, PurgeRemovesTheAdultRowsOfEveryProfileOfEveryBrowser) {
    const std::vector<std::pair<std::string, const char*>> histories{
        {".config/google-chrome/Default/History", "urls"},
        {".config/google-chrome/Profile 1/History", "urls"},
        {"snap/chromium/common/chromium/Default/History", "urls"},
        {".mozilla/firefox/k2x9w0aq.default-release/places.sqlite", "moz_places"}};
    std::ofstream(temp.path() + "/words.txt") << "porn\n";
    const Run purged = run({"purge", "--words", temp.path() + "/words.txt"});
    ASSERT_EQ(purged.status, 0) << purged.err;
    for (const auto& [database, table] : histories) {
        const std::vector<std::string> left = testing::tableDump(home + "/" + database, table);
        EXPECT_EQ(left.size(), 7U) << database;
        EXPECT_TRUE(std::ranges::none_of(left, [](const std::string& row) { return row.find("porn") != row.npos; }))
            << database;
    }
}

} // namespace
} // namespace tidewell::cli
