#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/folders.hpp"
#include "catalogue/record_json.hpp"
#include "sources/extensions_section.hpp"
#include "support/catalogue_helpers.hpp"
#include "support/disk_builder.hpp"

namespace tidewell {
namespace {

using testing::DiskBuilder;
using testing::itemNames;
using testing::locationPaths;
using testing::runBuilder;
using testing::TempFolder;

const std::string kChrome = "Library/Application Support/Google/Chrome/";
const std::string kProfiles = "Library/Application Support/Firefox/Profiles/";

class ExtensionsSection : public ::testing::Test {
protected:
    TempFolder temp;
    DiskBuilder d{temp.path()};

    RecordPtr build() { return runBuilder(buildBrowserExtensionsSection, d.disk()).section; }
    static Item lastRow(const RecordPtr& section) { return Section(section).items().back(); }
};

TEST_F(ExtensionsSection, WithoutBrowsersOnlyAnEmptyResetRowRemains) {
    d.file("Library/Safari/Extensions/Clip.safariextz").chromeLocalState({{"Default", "Person 1"}});
    const BuilderOutcome outcome = runBuilder(buildBrowserExtensionsSection, d.disk());
    ASSERT_TRUE(outcome.section);
    EXPECT_TRUE(outcome.handOver);
    EXPECT_EQ(toJson(*outcome.section).dump(),
              R"({"Name":"Browser Extensions","List":[{"AllList":[],"NameText":"Reset Browsers Preferences to )"
              R"(Defaults","isChecked":false,"sizeText":"","isExt":true,"isHeader":false,"isEnabled":true}],)"
              R"("Size":"","Img":"Browser_ext","isChecked":false,"isEnabled":true,"isFromThornsweep":true})");
}

TEST_F(ExtensionsSection, GroupsRowsByBrowserAndEndsWithTheResetRow) {
    d.allApps()
        .file("Library/Safari/Extensions/Extensions.plist")
        .file("Library/Safari/Extensions/.DS_Store")
        .file("Library/Safari/Extensions/Clip.Saver.safariextz")
        .file("Library/Safari/Extensions/Downloads.safariextz")
        .chromeLocalState({{"Default", "Person 1"}, {"Profile 1", "Work"}})
        .text(kChrome + "Default/Extensions/notes/2.0_0/manifest.json", R"({"name":"Notes","version":"2.0"})")
        .text(kChrome + "Profile 1/Extensions/notes/2.0_0/manifest.json", R"({"name":"Notes","version":"2.0"})")
        .file(kProfiles + "x.default/extensions/kept/a.js")
        .folder(kProfiles + "y.default")
        .folder(kProfiles + "z.DEFAULT");
    const std::string kept = d.at(kProfiles + "x.default/extensions/kept");
    d.text(kProfiles + "x.default/extensions.json",
           R"({"addons":[{"defaultLocale":{"name":"Kept"},"version":"1","path":")" + kept +
               R"("},{"defaultLocale":{"name":"Gone"},"version":"1","path":")" + d.at("gone") + R"("}]})");
    const RecordPtr section = build();
    ASSERT_TRUE(section);
    std::vector<std::string> names = itemNames(section);
    ASSERT_EQ(names.size(), 9U);
    std::sort(names.begin() + 1, names.begin() + 3); // Safari's rows come in the folder's listing order
    EXPECT_EQ(names,
              (std::vector<std::string>{"Safari Extensions", "Clip.Saver", "Downloads", "Google Chrome Extensions",
                                        "Notes v2.0 (Person 1)", "Notes v2.0 (Work)", "Firefox Extensions", "Kept v1",
                                        "Reset Browsers Preferences to Defaults"}));
    const std::vector<Item> rows = Section(section).items();
    EXPECT_EQ(locationPaths(rows[5]), std::vector<std::string>{d.at(kChrome + "Profile 1/Extensions/notes")});
    EXPECT_EQ(locationPaths(rows[7]), std::vector<std::string>{kept});
    for (const Item& row : rows) {
        EXPECT_EQ(row.sizeText(), "") << row.name();
        EXPECT_TRUE(row.isEnabled() && row.record()->flag("isExt"));
        EXPECT_EQ(row.isCaption(), locationPaths(row).empty() || row.record() == rows.back().record());
        EXPECT_EQ(row.tick(), Tick::Off) << row.name() << ": a person's extensions and settings are kept by default";
    }
    // Only the first "default" profile the folder lists gives reset files.
    const std::vector<std::string> listed = listFolderNames(d.at(kProfiles));
    const std::string chosen =
        *std::ranges::find_if(listed, [](const std::string& n) { return n.ends_with(".default"); });
    std::vector<std::string> reset{d.at("Library/Safari/Configurations.plist.signed"),
                                   d.at(kChrome + "Default/Preferences"), d.at(kChrome + "Profile 1/Preferences")};
    for (const std::string file : {"user.js", "xulstore.json", "prefs.js"}) {
        reset.push_back(d.at(kProfiles + chosen + "/" + file));
    }
    EXPECT_EQ(locationPaths(lastRow(section)), reset);
    EXPECT_EQ(Section(section).tick(), Tick::Off);
}

TEST_F(ExtensionsSection, ABrowserWithNothingListedKeepsOnlyItsResetFiles) {
    d.app("/Applications/Safari.app")
        .app("/Applications/Firefox.app")
        .app("/Applications/Google Chrome.app")
        .file("Library/Safari/Extensions/Extensions.plist")
        .file("Library/Safari/Extensions/.DS_Store")
        .folder(kProfiles + "only.DEFAULT")
        .text(kChrome + "Default/Extensions/notes/2.0_0/manifest.json", R"({"name":"Notes","version":"2.0"})");
    // No "Local State": Chrome lists nothing and has nothing to reset.
    const RecordPtr section = build();
    EXPECT_EQ(itemNames(section), std::vector<std::string>{"Reset Browsers Preferences to Defaults"});
    EXPECT_EQ(locationPaths(lastRow(section)),
              std::vector<std::string>{d.at("Library/Safari/Configurations.plist.signed")});
}

// Add-ons Firefox recorded while the disk was the running system's ("/Users/ann/...", "/home/ann/...") are found
// under the root, measured and listed; a recorded path that climbs out of the home, passes a link or names
// another home is never taken there.
TEST(FirefoxAddOnsOnAnotherRoot, RecordedHomePathsAreResolvedUnderTheRootAndStayInsideTheHome) {
    for (const DiskLayout* layout : {&macosLayout(), &linuxLayout()}) {
        SCOPED_TRACE(layout->name);
        TempFolder temp;
        DiskBuilder d(temp.path(), "ann", *layout);
        const bool macos = layout == &macosLayout();
        const std::string profiles = macos ? kProfiles : ".mozilla/firefox/";
        const std::string recordedHome = std::string(layout->homes) + "/ann/";
        if (macos) {
            d.app("/Applications/Firefox.app");
        } else {
            d.text(profiles + "profiles.ini", "[Profile0]\nName=default\nIsRelative=1\nPath=p.default\n");
        }
        d.file(profiles + "p.default/extensions/kept@example.org/kept.js", 30000)
            .file("/elsewhere/extensions/linked@example.org/x.js", 100)
            .link(profiles + "p.default/linked", d.at("/elsewhere"))
            .file(std::string(layout->homes) + "/bob/extensions/other@example.org/x.js", 100);
        nlohmann::json addons = nlohmann::json::array();
        const std::vector<std::pair<std::string, std::string>> recorded{
            {"Kept", recordedHome + profiles + "p.default/extensions/kept@example.org"},
            {"Linked", recordedHome + profiles + "p.default/linked/extensions/linked@example.org"},
            {"Climbs", recordedHome + profiles + "../../../../../bob/extensions/other@example.org"},
            {"Other home", std::string(layout->homes) + "/bob/extensions/other@example.org"},
            {"Almost", std::string(layout->homes) + "/annex/x"},
        };
        for (const auto& [name, path] : recorded) {
            addons.push_back({{"defaultLocale", {{"name", name}}}, {"version", "1"}, {"path", path}});
        }
        d.text(profiles + "p.default/extensions.json", nlohmann::json{{"addons", addons}}.dump());

        const RecordPtr section = runBuilder(buildBrowserExtensionsSection, d.disk()).section;
        const std::vector<std::string> names = itemNames(section);
        EXPECT_EQ(std::vector<std::string>(names.end() - 3, names.end()),
                  (std::vector<std::string>{"Firefox Extensions", "Kept v1", "Reset Browsers Preferences to Defaults"}));
        const Item kept = Section(section).items().at(names.size() - 2);
        EXPECT_EQ(locationPaths(kept), std::vector<std::string>{d.at(profiles + "p.default/extensions/kept@example.org")});

        // The recorded path is resolved only inside the home, a component at a time.
        const DiskRoot disk = d.disk();
        EXPECT_EQ(disk.recordedInHome(recordedHome + "a/b"), d.at("a/b"));
        for (const std::string& wrong : {recordedHome, recordedHome + "a/../../bob", recordedHome + "a//b",
                                         recordedHome + "./a", recordedHome + std::string("a\0b", 3),
                                         std::string(layout->homes) + "/annex/a", std::string("relative/a")}) {
            EXPECT_FALSE(disk.recordedInHome(wrong)) << wrong;
        }
    }
}

} // namespace
} // namespace tidewell
