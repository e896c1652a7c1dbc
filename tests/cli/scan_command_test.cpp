#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>

#include "sample_disk/sample_disk.hpp"
#include "support/tool_run.hpp"

namespace tidewell::cli {
namespace {

using testing::runTool;
using testing::TempFolder;
using testing::ToolRun;

std::size_t lineCount(const std::string& text) {
    return static_cast<std::size_t>(std::ranges::count(text, '\n'));
}

class ScanCommand : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        s_temp = new TempFolder();
        testing::writeSampleDisk(s_temp->path() + "/disk");
        // A home that leads off the disk.
        testing::DiskBuilder(s_temp->path() + "/elsewhere", "x");
        testing::DiskBuilder(s_temp->path() + "/disk").link("/Users/mallory", s_temp->path() + "/elsewhere");
    }
    static void TearDownTestSuite() { delete s_temp; }

    static std::vector<std::string> on(std::vector<std::string> args) {
        args.insert(args.begin(), {"--root", s_temp->path() + "/disk", "--user", "ann"});
        return args;
    }
    static nlohmann::json catalogue(const std::vector<std::string>& args) {
        const ToolRun run = runTool(on(args));
        EXPECT_EQ(run.status, 0) << run.err;
        return nlohmann::json::parse(run.out);
    }
    static const nlohmann::json& sectionNamed(const nlohmann::json& sections, const std::string& name) {
        for (const auto& section : sections) {
            if (section.value("Name", "") == name) {
                return section;
            }
        }
        throw std::runtime_error("no section " + name);
    }

    static inline TempFolder* s_temp = nullptr;
};

TEST_F(ScanCommand, TextShowsEachSectionWithItsItemsThenTheTotal) {
    const ToolRun run = runTool(on({"scan"}));
    ASSERT_EQ(run.status, 0) << run.err;
    std::istringstream lines(run.out);
    std::vector<std::string> sectionLines;
    std::string line;
    while (std::getline(lines, line)) {
        if (line.starts_with("[")) {
            sectionLines.push_back(line.substr(0, line.find("  ")));
        } else if (line.starts_with("    Thornsweep")) {
            sectionLines.push_back(line);
        }
    }
    EXPECT_EQ(sectionLines, (std::vector<std::string>{"[x] Safari", "[x] Chrome", "[x] Firefox", "[x] Adult History",
                                                      "[ ] Browser Extensions", "[x] System", "[x] Mail", "[x] Flash",
                                                      "    Thornsweep: Detects and Removes"
                                                      " Adware"}));
    EXPECT_NE(run.out.find("    [ ] Bookmarks"), std::string::npos);
    EXPECT_NE(run.out.find("    [x] Cookies (Work)"), std::string::npos);
    EXPECT_NE(run.out.find("      [ ] Tab Tidy v1.0.0 (Person 1)"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("    [ ] Login Data (Work)"), std::string::npos) << run.out;
    // The last line is the total of the eight sections (the promotion row is none), written as the sections' sizes are.
    const std::string lastLine = run.out.substr(run.out.rfind('\n', run.out.size() - 2) + 1);
    const std::regex total(R"(Total: (0 byte|[0-9]+(\.[0-9]+)? (bytes?|KB|MB|GB|TB)) in 8 sections\n)");
    EXPECT_TRUE(std::regex_match(lastLine, total)) << lastLine;
    EXPECT_TRUE(run.err.empty()) << run.err;
}

TEST_F(ScanCommand, JsonHoldsEveryRecordWithItsExactKeysAndKinds) {
    const nlohmann::json sections = catalogue({"scan", "--json"});
    ASSERT_EQ(sections.size(), 9U);
    const auto& safari = sections[0];
    std::vector<std::string> keys;
    for (const auto& [key, value] : safari.items()) {
        keys.push_back(key);
    }
    std::ranges::sort(keys);
    EXPECT_EQ(keys,
              (std::vector<std::string>{"Img", "List", "Name", "Size", "isChecked", "isEnabled", "isFromThornsweep"}));
    EXPECT_TRUE(safari["isChecked"].is_boolean());
    EXPECT_TRUE(safari["Img"].get<std::string>().ends_with("/Applications/Safari.app"));
    const auto& cookies = safari["List"][0];
    EXPECT_EQ(cookies["NameText"], "Cookies");
    EXPECT_TRUE(cookies["AllList"][0].get<std::string>().starts_with("file:///"));
    EXPECT_EQ(sections.back(), (nlohmann::json{{"Type", "Scan"}}));
    const auto& chrome = sectionNamed(sections, "Chrome");
    EXPECT_EQ(chrome["List"][9]["NameText"], "Cookies (Work)");
    EXPECT_NE(chrome["List"][0]["AllList"][0].get<std::string>().find("Application%20Support"), std::string::npos);
}

TEST_F(ScanCommand, TicksApplyInTheOrderGivenAsTheWindowWould) {
    const nlohmann::json sections =
        catalogue({"scan", "--json", "--untick", "Safari", "--tick", "Safari/Bookmarks", "--untick", "Chrome", "--tick",
                   "Chrome/Cookies (Work)", "--tick", "Firefox"});
    const auto& safari = sectionNamed(sections, "Safari");
    EXPECT_EQ(safari["isChecked"], -1);
    EXPECT_EQ(safari["List"][3]["isChecked"], 1);
    EXPECT_EQ(safari["List"][0]["isChecked"], false);
    const auto& chrome = sectionNamed(sections, "Chrome");
    EXPECT_EQ(chrome["isChecked"], -1);
    EXPECT_EQ(chrome["List"][9]["isChecked"], 1);
    EXPECT_EQ(chrome["List"][10]["isChecked"], false);
    EXPECT_EQ(sectionNamed(sections, "Firefox")["isChecked"], true);

    // The fourth row (Adult History) passes its tick to its items as every section does.
    const nlohmann::json fourth = catalogue({"scan", "--json", "--untick", "Adult History"});
    EXPECT_EQ(fourth[3]["Name"], "Adult History");
    EXPECT_EQ(fourth[3]["isChecked"], false);
    for (const auto& item : fourth[3]["List"]) {
        EXPECT_EQ(item["isChecked"], false) << item["NameText"];
    }
}

TEST_F(ScanCommand, TicksShowInTextModeAfterTheScan) {
    const ToolRun run = runTool(on({"scan", "--untick", "Mail"}));
    ASSERT_EQ(run.status, 0);
    const std::string after = run.out.substr(run.out.find("After the ticks:"));
    EXPECT_NE(after.find("[ ] Mail"), std::string::npos);
    EXPECT_NE(after.find("    [ ] Mail Download"), std::string::npos);
}

TEST_F(ScanCommand, UsageErrorsSayWhatIsWrongOnOneLine) {
    const std::vector<std::vector<std::string>> wrong{
        on({"scan", "--tick", "Opera"}),
        on({"scan", "--untick", "Safari/Nothing"}),
        on({"scan", "--bogus"}),
        {"--root", s_temp->path() + "/no-such-disk", "scan"},
        {"--root", s_temp->path() + "/disk", "--user", "../ann", "scan"},
        {"--root", s_temp->path() + "/disk"},
        on({"frobnicate"}),
    };
    for (const auto& args : wrong) {
        const ToolRun run = runTool(args);
        EXPECT_EQ(run.status, 2) << args.back();
        EXPECT_EQ(lineCount(run.err), 1U) << run.err;
        EXPECT_TRUE(run.err.starts_with("tidewell-cli: ")) << run.err;
    }
    const std::string disk = s_temp->path() + "/disk";
    const std::vector<std::pair<std::vector<std::string>, std::string>> said{
        {on({"scan", "--tick", "Opera"}), "no section named 'Opera'"},
        {on({"frobnicate"}),
         "unknown command 'frobnicate'; the commands are: scan, extensions, inventory, clean, purge"},
        {{"--root", disk}, "no command given; the commands are: scan,"},
        // Without <root>/Users/nobody the disk is taken for a Linux one.
        {{"--root", disk, "--user", "nobody", "scan"},
         "no home folder for 'nobody': nothing at " + disk + "/home/nobody"},
        {{"--root", disk, "--user", "nobody", "--layout", "macos", "scan"},
         "no home folder for 'nobody': nothing at " + disk + "/Users/nobody"},
        {{"--root", disk, "--user", "mallory", "clean", "--yes"},
         "the home folder " + disk + "/Users/mallory leads to " + s_temp->path() + "/elsewhere, outside the disk root"},
    };
    for (const auto& [args, text] : said) {
        const ToolRun run = runTool(args);
        EXPECT_EQ(run.status, 2) << text;
        EXPECT_NE(run.err.find(text), std::string::npos) << run.err;
    }
}

TEST_F(ScanCommand, HelpAndVersionGoToStandardOutput) {
    const ToolRun version = runTool({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_TRUE(version.out.starts_with("tidewell-cli ")) << version.out;
    const ToolRun help = runTool({"scan", "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("--tick"), std::string::npos) << help.out;
}

} // namespace
} // namespace tidewell::cli
