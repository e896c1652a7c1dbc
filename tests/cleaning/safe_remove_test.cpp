#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "cleaning/cleaning_engine.hpp"
#include "sources/builders.hpp"
#include "support/catalogue_helpers.hpp"
#include "support/disk_builder.hpp"
#include "support/literal_purge.hpp"
#include "support/unprivileged.hpp"

namespace tidewell {
namespace {

namespace fs = std::filesystem;
using testing::DiskBuilder;
using testing::TempFolder;

bool exists(const std::string& path) {
    struct stat st {};
    return ::lstat(path.c_str(), &st) == 0;
}

TEST(DeletionBoundary, AdmitsOnlyWhatLiesStrictlyInsideAfterNormalisation) {
    const DeletionBoundary boundary("/d/Users//ann/");
    EXPECT_EQ(boundary.grantedFolder(), "/d/Users/ann");
    for (const char* inside :
         {"/d/Users/ann/x", "/d/Users/ann/./x//", "/d/Users/ann/a/../../ann/b", "//d/Users/ann/x/y"}) {
        EXPECT_TRUE(boundary.admits(inside)) << inside;
    }
    for (const char* outside :
         {"/d/Users/ann", "/d/Users/ann/", "/d/Users/ann/x/..", "/d/Users", "/", "", "/d/Users/annex/x",
          "/d/Users/ann/../bob/x", "/d/Users/ann/../../../../etc", "Users/ann/x", "d/Users/ann/x"}) {
        EXPECT_FALSE(boundary.admits(outside)) << outside;
    }
    EXPECT_EQ(boundary.componentsInside("/d/Users/ann/a/./b/../c/"), (std::vector<std::string>{"a", "c"}));
    EXPECT_FALSE(DeletionBoundary("relative/home").admits("relative/home/x"));
}

// A disk with a decoy tree beside the home folder: whatever the cleaning does, nothing of it may change.
class SafeRemove : public ::testing::Test {
protected:
    SafeRemove() : d(temp.path() + "/disk") {
        d.text("/Elsewhere/keep.txt", "keep").text("/Elsewhere/Sub/deep.txt", "deep").text("/outside.txt", "file");
        decoy = testing::treeContents(d.at("/Elsewhere"));
    }
    [[nodiscard]] DeletionBoundary boundary() const { return DeletionBoundary(d.home()); }
    void expectDecoyIntact() const {
        EXPECT_EQ(testing::treeContents(d.at("/Elsewhere")), decoy);
        EXPECT_TRUE(exists(d.at("/outside.txt")));
        EXPECT_TRUE(exists(d.home()));
    }

    TempFolder temp;
    DiskBuilder d;
    std::map<std::string, std::string> decoy;
};

TEST_F(SafeRemove, LinksInsideATickedFolderGoAsLinksAndTheirTargetsStay) {
    d.text("Library/Caches/Tick/a.txt", "a")
        .text("Library/Caches/Tick/Sub/b.txt", "b")
        .link("Library/Caches/Tick/toFolder", d.at("/Elsewhere"))
        .link("Library/Caches/Tick/Sub/toFile", d.at("/outside.txt"))
        .link("Library/Caches/Tick/relative", "../../../../../Elsewhere/Sub");
    EXPECT_TRUE(removeItem(boundary(), d.at("Library/Caches/Tick")));
    EXPECT_FALSE(exists(d.at("Library/Caches/Tick")));
    EXPECT_TRUE(exists(d.at("Library/Caches")));
    expectDecoyIntact();
}

TEST_F(SafeRemove, ATickedLinkIsRemovedItselfWithOrWithoutATrailingSlash) {
    for (const char* name : {"Plain", "Slash", "Dot"}) {
        d.link(std::string("Library/Caches/") + name, d.at("/Elsewhere"));
    }
    EXPECT_TRUE(removeItem(boundary(), d.at("Library/Caches/Plain")));
    EXPECT_TRUE(removeItem(boundary(), d.at("Library/Caches/Slash/")));
    EXPECT_TRUE(removeItem(boundary(), d.at("Library/Caches/Dot/.")));
    EXPECT_TRUE(fs::is_empty(d.at("Library/Caches")));
    expectDecoyIntact();
}

TEST_F(SafeRemove, NothingIsReachedThroughALinkOnTheWayOrOutsideTheGrantedFolder) {
    d.link("Library/Way", d.at("/Elsewhere"));
    for (const std::string& target :
         {d.at("Library/Way/keep.txt"), d.at("Library/Way/Sub"), d.at("/Elsewhere/keep.txt"), d.at("/outside.txt"),
          d.home(), d.home() + "/", d.home() + "/Library/..", d.at("/Users"), std::string("/"),
          d.home() + "/../../Elsewhere"}) {
        EXPECT_FALSE(removeItem(boundary(), target)) << target;
    }
    expectDecoyIntact();
    EXPECT_TRUE(exists(d.at("Library/Way")));
}

TEST_F(SafeRemove, CleaningMetadataThatPointsAwayChangesNothingOutsideTheHome) {
    // Chrome profiles whose names climb out of Chrome's folder, and add-on locations of "/", the home and a folder
    // outside it, all ticked.
    d.allApps().chromeLocalState({{"../../../Elsewhere", "Up"}, {"../../../../../../Elsewhere", "Out"}});
    d.text("Library/Elsewhere/Cookies", "in the home");
    const DiskRoot disk = d.disk();
    const BuilderOutcome chrome = testing::runBuilder(addGoogleChromeDetails, disk);
    ASSERT_NE(chrome.section, nullptr);
    const RecordPtr addOns = makeRecord(
        {{"Name", std::string("Browser Extensions")},
         {"List",
          RecordList{makeRecord({{"AllList", UrlList{FileUrl{"/"}, disk.homeUrl(), FileUrl{d.at("/Elsewhere")}}},
                                 {"NameText", std::string("Add-on")},
                                 {"isChecked", true}})}}});
    CleaningEngine(CleanMode::Interactive, boundary()).cleanSelected({chrome.section, addOns});
    expectDecoyIntact();
    EXPECT_FALSE(exists(d.at("Library/Elsewhere/Cookies"))); // inside the home, where the name leads
    EXPECT_TRUE(exists(d.at("/Applications/Safari.app")));
}

TEST_F(SafeRemove, TenThousandLevelsGoWithinASmallDescriptorLimit) {
    const int fd = testing::makeFolderChain(d.home(), 10000);
    ASSERT_GE(fd, 0);
    ::close(fd);
    rlimit saved{};
    ::getrlimit(RLIMIT_NOFILE, &saved);
    const rlimit small{64, saved.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &small);
    const bool removed = removeItem(boundary(), d.at("d"));
    ::setrlimit(RLIMIT_NOFILE, &saved);
    EXPECT_TRUE(removed);
    EXPECT_FALSE(exists(d.at("d")));
}

TEST_F(SafeRemove, WhatCannotBeRemovedIsPassedOverAndTheRestStillGoes) {
    d.text("Tick/a.txt", "a").text("Tick/Locked/inside.txt", "x").text("Tick/z/b.txt", "b");
    // The tree belongs to "nobody", who removes it but cannot write into the locked folder.
    ::chmod(temp.path().c_str(), 0755);
    for (const auto& entry : fs::recursive_directory_iterator(d.at("Tick"))) {
        ::lchown(entry.path().c_str(), 65534, 65534);
    }
    ::lchown(d.at("Tick").c_str(), 65534, 65534);
    ::chmod(d.at("Tick/Locked").c_str(), 0555);
    const std::string home = d.home();
    const auto removed =
        testing::runUnprivileged([&] { return std::int64_t{removeItem(DeletionBoundary(home), home + "/Tick")}; });
    EXPECT_EQ(removed, 0); // the folder itself stays, holding what could not go
    EXPECT_TRUE(exists(d.at("Tick/Locked/inside.txt")));
    EXPECT_FALSE(exists(d.at("Tick/a.txt")));
    EXPECT_FALSE(exists(d.at("Tick/z")));
}

TEST_F(SafeRemove, AFolderOnAnotherFileSystemIsNeverEntered) {
    d.text("Tick/a.txt", "a").folder("Tick/Mounted");
    if (::mount("tidewell-test", d.at("Tick/Mounted").c_str(), "tmpfs", 0, "size=1m") != 0) {
        GTEST_SKIP() << "no permission to mount a file system here";
    }
    struct Unmount {
        std::string path;
        ~Unmount() { ::umount(path.c_str()); }
    } unmount{d.at("Tick/Mounted")};
    d.text("Tick/Mounted/other.txt", "on another file system");
    removeItem(boundary(), d.at("Tick"));
    EXPECT_TRUE(exists(d.at("Tick/Mounted/other.txt")));
    EXPECT_FALSE(exists(d.at("Tick/a.txt")));
    EXPECT_FALSE(removeItem(boundary(), d.at("Tick/Mounted/other.txt")));
}

} // namespace
} // namespace tidewell
