#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>

#include "cli/cli.hpp"
#include "sample_disk/sample_disk.hpp"
#include "support/fake_running_apps.hpp"
#include "support/hostile_inputs.hpp"
#include "support/literal_purge.hpp"
#include "support/tool_run.hpp"
#include "support/tree_checksums.hpp"

namespace tidewell::cli {
namespace {

namespace fs = std::filesystem;

using testing::ToolRun;

// Each test cleans its own copy of the sample disk.
class CleaningCommands : public ::testing::Test {
protected:
    CleaningCommands() { testing::writeSampleDisk(disk); }

    ToolRun run(std::vector<std::string> args, const testing::FakeRunningApps& running, std::string answer = "",
                bool terminal = false) {
        args.insert(args.begin(), {"--root", disk, "--user", "ann"});
        std::ostringstream out;
        std::ostringstream err;
        std::istringstream in(answer);
        CliIo io{out, err, in, terminal, &running, [this](std::chrono::seconds wait) { pauses.push_back(wait); }};
        const int status = runCli(args, io);
        return {status, out.str(), err.str()};
    }
    [[nodiscard]] std::map<std::string, std::string> home() const { return testing::treeContents(disk + "/Users"); }
    [[nodiscard]] std::size_t safariVisits() const {
        return testing::tableDump(disk + "/Users/ann/Library/Safari/History.db", "history_items").size();
    }

    testing::TempFolder temp;
    std::string disk = temp.path() + "/disk";
    testing::FakeRunningApps nothingRuns{{}};
    std::vector<std::chrono::seconds> pauses;
};

TEST_F(CleaningCommands, CleanDeletesNothingWithoutAYesOrWhileAConcernedBrowserRuns) {
    const auto before = home();
    const ToolRun unattended = run({"clean"}, nothingRuns);
    EXPECT_EQ(unattended.status, 4);
    EXPECT_NE(unattended.err.find("no terminal to confirm on; --yes answers yes"), std::string::npos) << unattended.err;
    const ToolRun no = run({"clean"}, nothingRuns, "n\n", true);
    EXPECT_EQ(no.status, 4);
    EXPECT_EQ(no.err, "Are you sure you want to erase selected privacy data? [y/N] ");
    const ToolRun stopped = run({"clean"}, testing::FakeRunningApps{{"Google Chrome", "Terminal"}}, " Yes\n", true);
    EXPECT_EQ(stopped.status, 3);
    EXPECT_TRUE(stopped.err.ends_with("] Not added\nClose these browsers to continue: Chrome\n")) << stopped.err;
    EXPECT_EQ(home(), before);
}

TEST_F(CleaningCommands, CleanCanWaitForTheBrowsersToQuitLookingAgainAsRetryDoes) {
    const testing::FakeRunningApps quitting{{"Firefox", "Safari"}, {"Safari"}, {"Safari"}, {}};
    const ToolRun waited = run({"clean", "--yes", "--wait"}, quitting);
    EXPECT_EQ(waited.status, 0);
    const std::size_t said = waited.err.find("Close these browsers to continue: Safari, Firefox\n");
    EXPECT_NE(said, std::string::npos) << waited.err;
    EXPECT_EQ(said, waited.err.rfind("Close these")) << "said once";
    EXPECT_EQ(pauses, std::vector<std::chrono::seconds>(3, std::chrono::seconds(2)));
    EXPECT_FALSE(fs::exists(disk + "/Users/ann/Library/Safari/History.db"));
}

TEST_F(CleaningCommands, CleanRemovesWhatIsTickedAndPrintsTheNewCatalogue) {
    const ToolRun cleaned =
        run({"clean", "--yes", "--json", "--untick", "Safari", "--tick", "Safari/Bookmarks"}, nothingRuns);
    ASSERT_EQ(cleaned.status, 0) << cleaned.err;
    const std::string safari = disk + "/Users/ann/Library/Safari/";
    EXPECT_FALSE(fs::exists(safari + "Bookmarks.plist"));
    EXPECT_TRUE(fs::exists(safari + "LastSession.plist"));
    EXPECT_FALSE(fs::exists(disk + "/Users/ann/Library/Application Support/Google/Chrome/Default/Cookies"));
    EXPECT_EQ(safariVisits(), 5U); // the shipped list found three adult visits
    const auto catalogue = nlohmann::json::parse(cleaned.out);
    EXPECT_EQ(catalogue[0]["Name"], "Safari");
    EXPECT_EQ(catalogue[0]["List"][3]["NameText"], "Bookmarks");
    EXPECT_EQ(catalogue[0]["List"][3]["sizeText"], "0 byte");
    EXPECT_EQ(catalogue[0]["List"][5]["sizeText"], "4 KB");
}

TEST_F(CleaningCommands, PurgeRunsTheHourlyPurgeOnceUnlessABrowserRuns) {
    const auto before = home();
    const ToolRun skipped = run({"purge"}, testing::FakeRunningApps{{"Safari"}});
    EXPECT_EQ(skipped.status, 0);
    EXPECT_NE(skipped.err.find("] App Opens\n"), std::string::npos);
    EXPECT_EQ(home(), before);

    testing::TempFolder words;
    testing::DiskBuilder(words.path()).text("/words.txt", "weather\nsexcam\n");
    const ToolRun purged = run({"purge", "--words", words.path() + "/words.txt"}, nothingRuns);
    EXPECT_EQ(purged.status, 0);
    EXPECT_EQ(safariVisits(), 6U);
    // Each line must be there, after the one before it: a missing line is not found anywhere.
    const std::size_t removeStart = purged.err.find("] Remove Start");
    ASSERT_NE(removeStart, std::string::npos) << purged.err;
    EXPECT_LT(purged.err.find("] Data Collection"), removeStart);
    for (const char* text : {"] Chrome Deleted", "] Safari Deleted", "] Firefox Deleted"}) {
        const std::size_t at = purged.err.find(text);
        ASSERT_NE(at, std::string::npos) << text << " in " << purged.err;
        EXPECT_GT(at, removeStart) << text;
    }
    // A list that cannot be read, or one past its limits, is refused with the reason before anything is purged.
    EXPECT_EQ(run({"purge", "--words", words.path() + "/none.txt"}, nothingRuns).status, 2);
    testing::DiskBuilder(words.path()).text("/nested.plist", testing::nestedXmlPlist(200000));
    const auto unpurged = home();
    const ToolRun refused = run({"purge", "--words", words.path() + "/nested.plist"}, nothingRuns);
    EXPECT_EQ(refused.status, 2);
    EXPECT_TRUE(refused.err.starts_with("tidewell-cli: '" + words.path() + "/nested.plist': the word list "))
        << refused.err;
    EXPECT_EQ(home(), unpurged);
}

// With only the System section's container and trash items ticked, a clean removes exactly the entries of every
// container's caches and logs and of the trash; the folders themselves and everything else stay.
TEST_F(CleaningCommands, CleanEmptiesTheContainersCachesAndLogsAndTheTrashKeepingTheFolders) {
    const std::string home = "Users/ann/";
    const std::string notes = home + "Library/Containers/com.example.notes/Data/Library/";
    testing::DiskBuilder(disk)
        .file("Library/Containers/org.example.paint/Data/Library/Caches/tiles/1.png", 30000)
        .file(".Trash/Old Folder/inside.txt", 7000);
    const auto before = testing::treeChecksums(disk);
    const ToolRun cleaned =
        run({"clean", "--yes", "--untick", "Safari", "--untick", "Chrome", "--untick", "Firefox", "--untick",
             "Adult History", "--untick", "System", "--untick", "Mail", "--untick", "Flash", "--tick",
             "System/Applications Cache Files", "--tick", "System/Applications Log Files", "--tick",
             "System/Trash Files"},
            nothingRuns);
    ASSERT_EQ(cleaned.status, 0) << cleaned.err;
    auto expected = before;
    // Below the trash, or below Data/Library/Caches or Logs of any container.
    const std::regex inside(home + R"((\.Trash|Library/Containers/[^/]+/Data/Library/(Caches|Logs))/.+)");
    const auto emptied = [&](const std::string& path) { return std::regex_match(path, inside); };
    const std::size_t removed = std::erase_if(expected, [&](const auto& entry) { return emptied(entry.first); });
    EXPECT_GE(removed, 10U);
    for (const std::string& kept : {notes + "Caches", notes + "Logs", home + ".Trash"}) {
        ASSERT_TRUE(expected.contains(kept)) << kept;
    }
    EXPECT_EQ(testing::treeDifferences(expected, testing::treeChecksums(disk)), "");
}

// Unticking the "Adult History" section unticks its items, so a clean purges no history database; ticked, it does.
// The browsers' own sections are unticked throughout, so the databases stay for the purge to find.
TEST_F(CleaningCommands, UntickingAdultHistoryStopsItsPurgesOnBothLayouts) {
    struct Case {
        const DiskLayout* layout;
        std::vector<std::string> browsers;
        std::vector<std::pair<std::string, std::string>> histories;
    };
    const std::string chrome = "/Users/ann/Library/Application Support/Google/Chrome/";
    const std::vector<Case> cases{
        {&macosLayout(),
         {"Safari", "Chrome", "Firefox"},
         {{"/Users/ann/Library/Safari/History.db", "history_items"},
          {chrome + "Default/History", "urls"},
          {chrome + "Profile 1/History", "urls"}}},
        {&linuxLayout(),
         {"Chrome", "Chromium", "Firefox"},
         {{"/home/ann/.config/google-chrome/Default/History", "urls"},
          {"/home/ann/.config/google-chrome/Profile 1/History", "urls"},
          {"/home/ann/snap/chromium/common/chromium/Default/History", "urls"},
          {"/home/ann/.mozilla/firefox/k2x9w0aq.default-release/places.sqlite", "moz_places"}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.layout->name);
        for (const bool ticked : {false, true}) {
            const testing::TempFolder own;
            const std::string root = own.path() + "/disk";
            testing::writeSampleDisk(root, "ann", *c.layout);
            std::vector<std::string> args{"--root", root, "--user", "ann", "clean", "--yes"};
            for (const std::string& browser : c.browsers) {
                args.insert(args.end(), {"--untick", browser});
            }
            args.insert(args.end(), {ticked ? "--tick" : "--untick", "Adult History"});
            std::map<std::string, std::size_t> before;
            for (const auto& [database, table] : c.histories) {
                before[database] = testing::tableDump(root + database, table).size();
            }
            std::ostringstream out;
            std::ostringstream err;
            std::istringstream in;
            CliIo io{out, err, in, false, &nothingRuns, [](std::chrono::seconds) {}};
            ASSERT_EQ(runCli(args, io), 0) << err.str();
            for (const auto& [database, table] : c.histories) {
                const std::size_t after = testing::tableDump(root + database, table).size();
                if (ticked) {
                    EXPECT_LT(after, before[database]) << database;
                } else {
                    EXPECT_EQ(after, before[database]) << database;
                }
            }
            EXPECT_EQ(err.str().find(" Deleted") != std::string::npos, ticked) << err.str();
        }
    }
}

// What a purge or clean leaves as it was is named on standard error with the reason, and the run ends with 5; a
// purge that changed nothing does not log that it deleted.
TEST_F(CleaningCommands, PurgeAndCleanEndWithFiveNamingWhatTheyLeftAsItWas) {
    const std::string chrome = disk + "/Users/ann/Library/Application Support/Google/Chrome/Default/History";
    testing::writeHistoryDatabase(disk + "/Elsewhere/History", testing::Browser::Chrome, testing::sampleHistoryUrls());
    fs::remove(chrome);
    fs::create_hard_link(disk + "/Elsewhere/History", chrome);
    std::ofstream(temp.path() + "/words.txt") << "porn\n";
    const ToolRun left = run({"purge", "--words", temp.path() + "/words.txt"}, nothingRuns);
    EXPECT_EQ(left.status, 5);
    EXPECT_NE(left.err.find("tidewell-cli: " + chrome + ": left as it was: "), std::string::npos) << left.err;
    // Only the other profile's database was purged.
    const std::size_t deleted = left.err.find("] Chrome Deleted");
    EXPECT_NE(deleted, std::string::npos) << left.err;
    EXPECT_EQ(left.err.find("] Chrome Deleted", deleted + 1), std::string::npos) << left.err;
    EXPECT_NE(left.err.find("] Safari Deleted"), std::string::npos) << left.err;
    EXPECT_EQ(testing::tableDump(disk + "/Elsewhere/History", "urls").size(), 8U);

    // An add-on that Firefox's list records at the home's Documents folder: listed, never removed.
    const std::string profile =
        disk + "/Users/ann/Library/Application Support/Firefox/Profiles/k2x9w0aq.default-release";
    fs::create_directories(disk + "/Users/ann/Documents");
    std::ofstream(disk + "/Users/ann/Documents/letter.txt") << "dear";
    std::ofstream(profile + "/extensions.json")
        << R"({"addons":[{"defaultLocale":{"name":"Mover"},"version":"1","path":")" << disk
        << R"(/Users/ann/Documents"}]})";
    const ToolRun cleaned = run({"clean", "--yes", "--tick", "Browser Extensions/Firefox Extensions"}, nothingRuns);
    EXPECT_EQ(cleaned.status, 5);
    EXPECT_NE(cleaned.err.find("tidewell-cli: " + disk + "/Users/ann/Documents: left as it was: "), std::string::npos)
        << cleaned.err;
    EXPECT_TRUE(fs::exists(disk + "/Users/ann/Documents/letter.txt"));
}

// The dry run changes nothing and says what would go; the clean then reports what went on standard error after the
// catalogue and, with --report, as JSON whose bytes add up. A ticked location behind a link is left, said so, and
// ends the run with 5; what an unticked row keeps does not.
TEST_F(CleaningCommands, DryRunForetellsAndTheReportSaysWhatWentAndWhatStayed) {
    const std::string home = disk + "/Users/ann";
    const auto before = testing::treeChecksums(disk);
    const ToolRun dry = run({"clean", "--dry-run"}, testing::FakeRunningApps{{"Google Chrome", "Safari"}});
    EXPECT_EQ(dry.status, 0) << dry.err;
    EXPECT_EQ(testing::treeDifferences(before, testing::treeChecksums(disk)), "");
    EXPECT_NE(dry.out.find("Would remove " + home + "/Library/Cookies/Cookies.binarycookies ("), std::string::npos)
        << dry.out;
    // Safari's history database goes with its History row before the purge would reach it: it is not listed.
    const std::string places =
        home + "/Library/Application Support/Firefox/Profiles/k2x9w0aq.default-release/places.sqlite";
    EXPECT_NE(dry.out.find("Would purge " + places + ": 3 matching rows [Firefox Adult History]\n"), std::string::npos)
        << dry.out;
    EXPECT_EQ(dry.out.find("Would purge " + home + "/Library/Safari/History.db"), std::string::npos) << dry.out;
    EXPECT_NE(dry.out.rfind("Would free "), std::string::npos);
    const ToolRun dryJson = run({"clean", "--dry-run", "--json"}, nothingRuns);
    const auto preview = nlohmann::json::parse(dryJson.out);
    EXPECT_EQ(preview["dryRun"], true);
    std::uint64_t previewed = 0;
    for (const auto& location : preview["wouldRemove"]) {
        previewed += location["bytes"].get<std::uint64_t>();
        EXPECT_TRUE(location["url"].get<std::string>().starts_with("file://")) << location;
    }
    EXPECT_EQ(preview["bytesToFree"], previewed);
    EXPECT_EQ(testing::treeDifferences(before, testing::treeChecksums(disk)), "");

    // Chrome's caches folder is reached through a link now: left, and said to be behind one.
    const std::string caches = home + "/Library/Caches/Google";
    fs::rename(caches, disk + "/Elsewhere-Google");
    fs::create_directory_symlink(disk + "/Elsewhere-Google", caches);
    const std::string report = temp.path() + "/report.json";
    const ToolRun cleaned = run({"clean", "--yes", "--report", report}, nothingRuns);
    EXPECT_EQ(cleaned.status, 5) << cleaned.err;
    EXPECT_TRUE(fs::exists(disk + "/Elsewhere-Google/Chrome/Default/Cache/data_1"));
    const std::size_t freed = cleaned.err.rfind("\nFreed ");
    ASSERT_NE(freed, std::string::npos) << cleaned.err;
    EXPECT_NE(cleaned.err.find("\nLeft " + caches + "/Chrome: behind a link\n"), std::string::npos) << cleaned.err;
    std::ifstream in(report);
    const auto written = nlohmann::json::parse(in);
    std::uint64_t bytes = 0;
    for (const auto& removed : written["removed"]) {
        bytes += removed["bytes"].get<std::uint64_t>();
    }
    EXPECT_GT(bytes, 0U);
    EXPECT_EQ(written["bytesFreed"], bytes);
    EXPECT_FALSE(fs::exists(home + "/Library/Cookies/Cookies.binarycookies"));
    bool purgedFirefox = false;
    for (const auto& purged : written["purged"]) {
        purgedFirefox = purgedFirefox || (purged["location"] == places && purged["rowsRemoved"] == 3);
    }
    EXPECT_TRUE(purgedFirefox) << written.dump(1);
    bool behindLink = false;
    for (const auto& left : written["left"]) {
        behindLink = behindLink || (left["location"] == caches + "/Chrome" && left["reason"] == "behind a link");
    }
    EXPECT_TRUE(behindLink) << written.dump(1);
    EXPECT_EQ(run({"clean", "--yes", "--report", temp.path() + "/no/such/folder/r.json"}, nothingRuns).status, 1);
}

} // namespace
} // namespace tidewell::cli
