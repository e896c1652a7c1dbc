#include <gtest/gtest.h>

#include <cstdlib>

#include "layout/locations.hpp"
#include "layout/profiles_ini.hpp"
#include "support/disk_builder.hpp"

namespace tidewell {
namespace {

TEST(DiskRoots, HomeComesFromTheLayoutAndTheLoginNameNeverFromHome) {
    testing::TempFolder temp;
    const char* savedHome = std::getenv("HOME");
    ::setenv("HOME", "/somewhere/else", 1);
    const auto disk = DiskRoot::make(temp.path() + "/", "ann");
    if (savedHome != nullptr) {
        ::setenv("HOME", savedHome, 1);
    }
    ASSERT_TRUE(disk.has_value());
    EXPECT_EQ(&disk->layout(), &macosLayout());
    EXPECT_EQ(disk->homeUrl().path, temp.path() + "/Users/ann");
    EXPECT_EQ(disk->resolve("/Applications/Safari.app"), temp.path() + "/Applications/Safari.app");

    const auto system = DiskRoot::make("/", "ann");
    ASSERT_TRUE(system.has_value());
    EXPECT_EQ(system->homeUrl().text(), "file:///Users/ann");
    EXPECT_EQ(system->resolve("/Applications"), "/Applications");
}

TEST(DiskRoots, RefuseNamesThatLeaveTheHomesAndRootsThatAreNotFolders) {
    testing::TempFolder temp;
    for (const char* login : {"", ".", "..", "a/b", "../root"}) {
        EXPECT_FALSE(DiskRoot::make(temp.path(), login).has_value()) << login;
    }
    EXPECT_FALSE(DiskRoot::make(temp.path() + "/missing", "ann").has_value());
    testing::DiskBuilder(temp.path()).file("/plain-file");
    EXPECT_FALSE(DiskRoot::make(temp.path() + "/plain-file", "ann").has_value());
    EXPECT_FALSE(DiskRoot::processLoginName().empty());
}

// What a layout's tables may say beyond what the macOS disk needs: a browser with several candidate data folders
// and a cache folder of its profiles, and a location that names its anchor's folder itself.
TEST(Locations, ABrowserUsesItsFirstDataFolderThatExistsAndItsProfilesCaches) {
    testing::TempFolder temp;
    const testing::DiskBuilder d(temp.path());
    const Browser browser{.key = "b",
                          .name = "B",
                          .application = "/Applications/B.app",
                          .icon = {},
                          .processNames = {"b"},
                          .family = BrowserFamily::Chrome,
                          .dataFolders = {".config/b", "snap/b/common/b"},
                          .cacheFolder = ".cache/b",
                          .profiles = ProfileRule::LocalState,
                          .adultHistoryName = "B Adult History",
                          .historyDatabase = {Anchor::Profile, "History"},
                          .profileHistory = {Anchor::Profile, "History"},
                          .history = nullptr,
                          .extensions = {Anchor::Profile, "Extensions"},
                          .extensionsCaption = "B Extensions",
                          .preferenceFiles = {}};
    EXPECT_EQ(dataFolderOf(d.disk(), browser).path, d.at(".config/b")) << "none exists: the first";
    testing::DiskBuilder(temp.path()).text("snap/b/common/b/Local State", R"({"profile":{"info_cache":{"P":{}}}})");
    EXPECT_EQ(dataFolderOf(d.disk(), browser).path, d.at("snap/b/common/b"));
    const std::optional<std::vector<BrowserProfile>> profiles = profilesOf(d.disk(), browser);
    ASSERT_TRUE(profiles && profiles->size() == 1);

    AnchorFolders anchors = anchorsOf(d.disk(), browser);
    anchors.profile = &profiles->front();
    EXPECT_EQ(locationOf({Anchor::ProfileCache, "Cache"}, anchors).path, d.at(".cache/b/P/Cache"));
    EXPECT_EQ(locationOf({Anchor::CacheFolder, ""}, anchors).path, d.at(".cache/b"));
    EXPECT_EQ(locationOf({Anchor::Profile, "History"}, anchors).path, d.at("snap/b/common/b/P/History"));
    EXPECT_EQ(locationOf({Anchor::Root, "/etc/xdg"}, anchors).path, d.at("/etc/xdg"));
    EXPECT_EQ(locationOf({Anchor::Home, ""}, anchors).path, d.home());
}

} // namespace
} // namespace tidewell

namespace tidewell {
namespace {

// Profiles come in the order of their [ProfileN] numbers, not of the file; a path that could leave the data
// folder, or whose form disagrees with IsRelative=, names no profile.
TEST(ProfilesIni, ListsEveryUsableProfileInNumberOrder) {
    const std::vector<IniProfile> profiles = profilesFromIni("[General]\r\nVersion=2\r\n"
                                                             "[Profile1]\r\nName=default\r\nIsRelative=1\r\n"
                                                             "Path=v7wz8jxu.default\r\n"
                                                             "[Profile0]\nName = default-esr \nPath=c9y3p1td.default-esr\n"
                                                             "[Profile10]\nName=elsewhere\nIsRelative=0\nPath=/mnt/p\n"
                                                             "[Profile2]\nName=climbs\nPath=../../etc\n"
                                                             "[Profile3]\nName=mismatch\nIsRelative=0\nPath=rel\n"
                                                             "[Profile4]\nName=no path\n"
                                                             "[Install3B60]\nDefault=c9y3p1td.default-esr\n");
    ASSERT_EQ(profiles.size(), 3U);
    EXPECT_EQ(profiles[0].name, "default-esr");
    EXPECT_EQ(profiles[0].path, "c9y3p1td.default-esr");
    EXPECT_EQ(profiles[1].path, "v7wz8jxu.default");
    EXPECT_EQ(profiles[2].path, "/mnt/p");
    EXPECT_FALSE(profiles[2].relative);
}

} // namespace
} // namespace tidewell
