#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "sample_disk/sample_disk.hpp"
#include "support/tool_run.hpp"

namespace tidewell::cli {
namespace {

using testing::runTool;
using testing::TempFolder;
using testing::ToolRun;

class InventoryCommands : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        s_temp = new TempFolder();
        testing::writeSampleDisk(s_temp->path() + "/disk");
        testing::DiskBuilder(s_temp->path() + "/bare", "bob");
    }
    static void TearDownTestSuite() { delete s_temp; }

    static ToolRun on(std::vector<std::string> args, const std::string& disk = "disk") {
        args.insert(args.begin(), {"--root", s_temp->path() + "/" + disk, "--user", disk == "disk" ? "ann" : "bob"});
        return runTool(args);
    }
    static std::string home() { return s_temp->path() + "/disk/Users/ann"; }

    static inline TempFolder* s_temp = nullptr;
};

TEST_F(InventoryCommands, ExtensionsJsonHoldsEveryBrowsersInventoryWithTheirExactKeys) {
    const ToolRun run = on({"extensions", "--json"});
    ASSERT_EQ(run.status, 0) << run.err;
    const nlohmann::ordered_json all = nlohmann::ordered_json::parse(run.out);
    ASSERT_EQ(all.size(), 8U);
    // A macOS disk has none of the other Chrome-family browsers.
    for (const char* key : {"chromium", "brave", "edge", "vivaldi", "opera"}) {
        EXPECT_TRUE(all[key].is_null()) << key;
    }
    ASSERT_EQ(all["chrome"].size(), 5U);
    for (const auto& record : all["chrome"]) {
        EXPECT_EQ(record.size(), 5U);
        EXPECT_EQ(record.begin().key(), "urlExt");
        EXPECT_TRUE(record["urlExt"].get<std::string>().starts_with("file:///")) << record;
        EXPECT_TRUE(record["sizeExt"].is_number_integer());
    }
    EXPECT_EQ(all["chrome"][4]["nameExt"], "Page Notes");
    EXPECT_EQ(all["chrome"][4]["PersonExt"], "Work");
    ASSERT_EQ(all["firefox"].size(), 1U);
    EXPECT_EQ(all["firefox"][0]["urlExt"].get<std::string>().front(), '/'); // the path as Firefox recorded it
    EXPECT_GT(all["firefox"][0]["sizeExt"].get<std::int64_t>(), 26000);
    EXPECT_EQ(all["safari"].size(), 3U);
    // Nothing installed: every browser is null.
    const nlohmann::ordered_json bare = nlohmann::ordered_json::parse(on({"extensions", "--json"}, "bare").out);
    EXPECT_EQ(bare.size(), 8U);
    EXPECT_TRUE(std::ranges::all_of(bare, [](const nlohmann::ordered_json& value) { return value.is_null(); }));
}

TEST_F(InventoryCommands, ExtensionsTextGroupsByBrowser) {
    const ToolRun run = on({"extensions"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(run.out.starts_with("Chrome\n")) << run.out;
    EXPECT_NE(run.out.find("\n    Tab Tidy  v1.0.0  (Person 1)  41 KB\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("Firefox\n    Quick Notes  v3.2.1  (Default)  "), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("Safari\n    " + home() + "/Library/Safari/Extensions/"), std::string::npos);
    EXPECT_EQ(on({"extensions"}, "bare").out, "Chrome: no profile registry\nFirefox\n    none\nSafari\n    none\n");
}

TEST_F(InventoryCommands, InventoryListsEachKindSystemFirst) {
    const std::string root = s_temp->path() + "/disk";
    EXPECT_EQ(on({"inventory", "launch-agents"}).out, root + "/Library/LaunchAgents/com.example.updater.agent.plist\n" +
                                                          home() + "/Library/LaunchAgents/com.example.sync.plist\n");
    EXPECT_EQ(on({"inventory", "launch-daemons", "--json"}).out,
              "[\n  \"file://" + root + "/Library/LaunchDaemons/com.example.printhelper.plist\"\n]\n");
    const ToolRun apps = on({"inventory", "apps"});
    EXPECT_TRUE(apps.out.ends_with("/Users/ann/Applications/Sketch Pad.app\n")) << apps.out;
    EXPECT_EQ(std::ranges::count(apps.out, '\n'), 6);
    const auto support = nlohmann::json::parse(on({"inventory", "app-support", "--json"}).out);
    EXPECT_EQ(support[0], "file://" + root + "/Library/Application%20Support/Example%20Audio");
    EXPECT_EQ(on({"inventory", "apps", "--json"}, "bare").out, "[]\n");
}

TEST_F(InventoryCommands, AnUnknownOrMissingKindIsAUsageErrorThatListsTheKinds) {
    for (const std::vector<std::string>& args :
         {std::vector<std::string>{"inventory"}, {"inventory", "fonts"}, {"inventory", "apps", "extra"}}) {
        const ToolRun run = on(args);
        EXPECT_EQ(run.status, 2);
        EXPECT_TRUE(run.out.empty());
        EXPECT_EQ(std::ranges::count(run.err, '\n'), 1) << run.err;
    }
    EXPECT_EQ(on({"inventory"}).err,
              "tidewell-cli: inventory needs a kind: launch-agents, launch-daemons, app-support, apps\n");
    EXPECT_NE(on({"inventory", "fonts"}).err.find("unknown inventory 'fonts'; the kinds are: launch-agents,"),
              std::string::npos);
}

} // namespace
} // namespace tidewell::cli
