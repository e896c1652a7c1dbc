#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>

#include "base/folders.hpp"
#include "inventory/inventories.hpp"
#include "support/catalogue_helpers.hpp"
#include "support/disk_builder.hpp"

namespace tidewell {
namespace {

using testing::DiskBuilder;
using testing::keysOf;
using testing::TempFolder;

const std::string kExtensions = "Library/Application Support/Google/Chrome/Default/Extensions/";
const std::string kProfiles = "Library/Application Support/Firefox/Profiles/";
const std::vector<std::string> kRecordKeys{"urlExt", "verExt", "nameExt", "sizeExt", "PersonExt"};

std::vector<std::string> paths(const UrlList& urls) {
    std::vector<std::string> out;
    std::ranges::transform(urls, std::back_inserter(out), &FileUrl::path);
    return out;
}

class Inventories : public ::testing::Test {
protected:
    TempFolder temp;
    DiskBuilder d{temp.path()};
    SizeCounter sizes{0};

    static const Browser& browser(std::string_view key) { return *findBrowser(macosLayout(), key); }
    RecordList chrome() { return chromeExtensions(d.disk(), browser("chrome"), sizes).value(); }
    RecordList firefox() {
        RecordList records;
        for (FirefoxExtension& extension : firefoxExtensions(d.disk(), browser("firefox"), sizes)) {
            records.push_back(std::move(extension.record));
        }
        return records;
    }
    UrlList listing(std::string_view kind) {
        for (const InventoryListing& listing : macosLayout().inventories) {
            if (listing.kind == kind) {
                return inventoryListing(d.disk(), listing);
            }
        }
        return {};
    }
};

TEST_F(Inventories, ChromeIsNullWithoutLocalStateAndEmptyWhenItIsMalformed) {
    EXPECT_FALSE(chromeExtensions(d.disk(), browser("chrome"), sizes).has_value());
    d.text(kExtensions + "id/1_0/manifest.json", R"({"name":"Kept out","version":"1"})");
    for (const char* localState : {"not json", R"({"profile":{}})", R"({"profile":{"info_cache":[]}})", "[]"}) {
        d.text("Library/Application Support/Google/Chrome/Local State", localState);
        EXPECT_TRUE(chrome().empty()) << localState;
    }
}

TEST_F(Inventories, ChromeRecordsEveryVersionOfEveryProfileWithTheWholeFolderSize) {
    d.chromeLocalState({{"Default", "Person 1"}, {"Profile 1", "Work"}});
    d.text(kExtensions + "tabs/1.0_0/manifest.json", R"({"name":"Tab Tidy","version":"1.0"})")
        .text(kExtensions + "tabs/1.1_0/manifest.json", R"({"name":"Tab Tidy","version":"1.1"})")
        .file(kExtensions + "tabs/1.1_0/big.js", 50000)
        .folder(kExtensions + "tabs/empty_0")
        .file(kExtensions + "tabs/nomanifest_0/a.js")
        .folder(kExtensions + "tabs/manifestfolder_0/manifest.json")
        .text(kExtensions + "tabs/array_0/manifest.json", "[]")
        .file(kExtensions + "stray-file")
        .text("Library/Application Support/Google/Chrome/Profile 1/Extensions/tabs/1.0_0/manifest.json",
              R"({"name":"Tab Tidy","version":7})");
    const RecordList records = chrome();
    ASSERT_EQ(records.size(), 3U);
    EXPECT_EQ(keysOf(*records[0]), kRecordKeys);
    EXPECT_NE(records[0]->text("verExt"), records[1]->text("verExt"));
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(records[i]->url("urlExt")->path, d.at(kExtensions + "tabs"));
        EXPECT_EQ(records[i]->text("PersonExt"), "Person 1");
        // The whole identifier folder: every version and the passed-over folders' files too.
        EXPECT_GE(*records[i]->number("sizeExt"), 50000 + 4 * 4096);
    }
    EXPECT_EQ(records[2]->text("PersonExt"), "Work");
    EXPECT_EQ(records[2]->text("verExt"), ""); // a version that is not text reads as empty
}

TEST_F(Inventories, ChromeResolvesMessagePlaceholdersByItsLocaleRules) {
    d.chromeLocalState({{"Default", "Person 1"}});
    struct Case {
        std::string id, name;
        std::vector<std::pair<std::string, std::string>> locales; // folder and messages.json ("" folder: empty)
        std::string expected;                                     // "-": no record
    };
    const std::string notes = R"({"appName":{"message":"Notes"}})";
    const std::vector<Case> cases{
        {"plain", "__MSG_appName__", {{"en", notes}}, "Notes"},
        {"lowered", "__MSG_Ext_Name__", {{"en", R"({"ext_name":{"message":"Low"}})"}}, "Low"},
        {"caseKept", "__MSG_Ext_Name__", {{"en", R"({"Ext_Name":{"message":"x"}})"}}, "__MSG_Ext_Name__"},
        {"noUnderscore", "__MSG_AppName__", {{"en", R"({"appname":{"message":"x"}})"}}, "__MSG_AppName__"},
        {"noLocales", "__MSG_appName__", {}, "-"},
        {"enFirst", "__MSG_appName__", {{"en_US", "{}"}, {"en", notes}, {"en_GB", "{}"}}, "Notes"},
        {"enUsNext", "__MSG_appName__", {{"en_GB", "{}"}, {"en_US", notes}, {"de", "{}"}}, "Notes"},
        {"enGbBeforeOthers", "__MSG_appName__", {{"fr", "{}"}, {"en_GB", notes}}, "Notes"},
        {"anyOther", "__MSG_appName__", {{"de", notes}}, "Notes"},
        {"emptyLocales", "__MSG_appName__", {{"", ""}}, "__MSG_appName__"},
        {"badMessages", "__MSG_appName__", {{"en", "{\"appName\":"}}, "__MSG_appName__"},
        {"notText", "__MSG_appName__", {{"en", R"({"appName":{"message":42}})"}}, ""},
        {"dotted", "__MSG_a.b__", {{"en", R"({"a":{"b":{"message":"Dotted"}}})"}}, "Dotted"},
        {"contains", "My __MSG_appName__", {{"en", notes}}, "My __MSG_appName__"},
    };
    for (const Case& c : cases) {
        d.text(kExtensions + c.id + "/1_0/manifest.json", R"({"name":")" + c.name + R"(","version":"1"})");
        for (const auto& [locale, messages] : c.locales) {
            locale.empty() ? d.folder(kExtensions + c.id + "/1_0/_locales")
                           : d.text(kExtensions + c.id + "/1_0/_locales/" + locale + "/messages.json", messages);
        }
    }
    d.text(kExtensions + "numberName/1_0/manifest.json", R"({"name":5,"version":"1"})");
    std::map<std::string, std::string> names;
    for (const RecordPtr& record : chrome()) {
        names[record->url("urlExt")->lastPathComponent()] = record->text("nameExt");
    }
    for (const Case& c : cases) {
        EXPECT_EQ(names.contains(c.id) ? names[c.id] : "-", c.expected) << c.id;
    }
    EXPECT_EQ(names.at("numberName"), "");
}

TEST_F(Inventories, FirefoxListsEveryProfilesAddonsAsRecorded) {
    const std::string packed = d.at("elsewhere/packed.xpi");
    const std::string unpacked = d.at("elsewhere/unpacked");
    d.file("elsewhere/packed.xpi", 9000).file("elsewhere/unpacked/a.js", 9000).file("elsewhere/unpacked/b.js", 9000);
    d.text(kProfiles + "a.default/extensions.json",
           R"({"addons":[{"defaultLocale":{"name":"Default"},"path":"/x"},{"defaultLocale":{"name":"default"},)"
           R"("version":"2","descriptor":")" +
               unpacked + R"(","path":")" + packed + R"("},{"descriptor":7,"path":")" + packed + R"("},"x",{}]})")
        .text(kProfiles + "b.other/extensions.json", R"({"addons":[{"defaultLocale":{"name":"B"},"version":"1"}]})")
        .text(kProfiles + "c.broken/extensions.json", R"({"addons":[{"defaultLocale":{"name":"C"})")
        .text(kProfiles + "d.wrong/extensions.json", R"({"addons":{"defaultLocale":{"name":"D"}}})")
        .folder(kProfiles + "e.empty");
    // Profiles in listing order, add-ons in list order: "Default" is skipped, "default" and no name are not; an
    // add-on recorded nowhere names no place and is left out.
    const std::map<std::string, std::vector<std::string>> perProfile{{"a.default", {"default", ""}}};
    std::vector<std::string> expected;
    for (const std::string& profile : listFolderNames(d.at(kProfiles))) {
        if (perProfile.contains(profile)) {
            expected.insert(expected.end(), perProfile.at(profile).begin(), perProfile.at(profile).end());
        }
    }
    const RecordList records = firefox();
    std::vector<std::string> names;
    std::map<std::string, RecordList> byName;
    for (const RecordPtr& record : records) {
        EXPECT_EQ(keysOf(*record), kRecordKeys);
        EXPECT_EQ(record->text("PersonExt"), "Default");
        names.push_back(record->text("nameExt"));
        byName[names.back()].push_back(record);
    }
    EXPECT_EQ(names, expected);
    EXPECT_EQ(byName["default"][0]->text("urlExt"), unpacked); // "descriptor" wins over "path"
    EXPECT_GE(*byName["default"][0]->number("sizeExt"), 18000);
    EXPECT_EQ(byName[""][0]->text("urlExt"), packed); // a descriptor that is not text leaves "path"
    EXPECT_EQ(*byName[""][0]->number("sizeExt"), 0);  // a packed add-on measures nothing
}

// A location in "extensions.json" can name anything: the inventory lists an absolute path of plain names as
// recorded, measures only a real folder, follows no link, and leaves out every location that is not such a path
// (empty, relative, climbing, cut short by a NUL byte).
TEST_F(Inventories, OddFirefoxLocationsAreListedWithoutHarmOrLeftOut) {
    d.file("/outside/secret/data", 70000).link("linked", temp.path() + "/outside/secret").file("real/data", 70000);
    ASSERT_EQ(::mkfifo(d.at("fifo").c_str(), 0600), 0);
    const std::vector<std::string> locations{"",
                                             "relative/addon",
                                             "../../../../../../../../tmp",
                                             "/dev/null",
                                             d.at("linked"),
                                             d.at("fifo"),
                                             d.at("missing\n%20 ÿ"),
                                             d.at("real"),
                                             d.at("/outside/secret") + std::string(1, '\0') + "x",
                                             d.home() + "/../../outside/secret/../secret"};
    nlohmann::ordered_json addons = nlohmann::ordered_json::array();
    for (const std::string& location : locations) {
        addons.push_back({{"path", location}, {"version", "1"}});
    }
    d.text(kProfiles + "p.default/extensions.json", nlohmann::ordered_json{{"addons", addons}}.dump());
    const RecordList records = firefox();
    const std::vector<std::string> listed(locations.begin() + 3, locations.begin() + 8);
    ASSERT_EQ(records.size(), listed.size());
    for (std::size_t i = 0; i < listed.size(); ++i) {
        EXPECT_EQ(records[i]->text("urlExt"), listed[i]) << i;
        EXPECT_EQ(*records[i]->number("sizeExt"), listed[i] == d.at("real") ? sizes.allocatedSize(d.at("real/data")) : 0)
            << listed[i];
    }
}

TEST_F(Inventories, ListingsGoSystemFolderFirstAndApplicationsAreFoundOutsideBundlesOnly) {
    d.file("Library/Safari/Extensions/Extensions.plist")
        .file("Library/Safari/Extensions/.DS_Store")
        .file("/Library/LaunchAgents/sys.plist")
        .file("/Library/LaunchDaemons/daemon.plist")
        .file("Library/LaunchDaemons/.hidden.plist");
    EXPECT_EQ(safariExtensions(d.disk(), browser("safari")).size(), 2U);
    // No personal LaunchAgents folder: the system listing alone.
    EXPECT_EQ(paths(listing("launch-agents")), std::vector{d.at("/Library/LaunchAgents/sys.plist")});
    EXPECT_EQ(paths(listing("launch-daemons")),
              (std::vector{d.at("/Library/LaunchDaemons/daemon.plist"), d.at("Library/LaunchDaemons/.hidden.plist")}));
    EXPECT_TRUE(folderEntries(FileUrl{d.at("/Library/LaunchAgents/sys.plist")}).empty());

    for (const char* app : {"/Applications/Top.app", "/Applications/Top.app/Contents/Helpers/Nested.app",
                            "/Applications/Utilities/Tool.app", "/Applications/Loud.APP",
                            "/Applications/Loud.APP/Inside.app", "/Applications/Kit.framework/Versions/Hidden.app",
                            "/Applications/Plain.app.d/Deep.app", "/Applications/.hidden/Secret.app",
                            "Projects/build/Mine.app", "Library/.cache/Cached.app", "/elsewhere/Linked.app"}) {
        d.app(app);
    }
    d.file("/Applications/File.app").link("Links", temp.path() + "/elsewhere");
    std::vector<std::string> found = paths(listing("apps"));
    ASSERT_FALSE(found.empty());
    EXPECT_EQ(found.back(), d.at("Projects/build/Mine.app")); // the home folder's come after /Applications'
    std::ranges::sort(found);
    EXPECT_EQ(found, (std::vector{d.at("/Applications/Plain.app.d/Deep.app"), d.at("/Applications/Top.app"),
                                  d.at("/Applications/Utilities/Tool.app"), d.at("Projects/build/Mine.app")}));
}

} // namespace
} // namespace tidewell
