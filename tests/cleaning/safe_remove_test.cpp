#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
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

// The location went, all of it.
bool wentWhole(const Removal& removal) {
    return removal.removed && !removal.left && removal.kept.empty();
}

bool exists(const std::string& path) {
    struct stat st {};
    return ::lstat(path.c_str(), &st) == 0;
}

TEST(DeletionBoundary, AdmitsOnlyWhatLiesStrictlyInsideAfterNormalisationAndNothingHoldingANul) {
    const TempFolder temp;
    DiskBuilder(temp.path()).folder("Users/ann");
    const std::string d = temp.path();
    const DeletionBoundary boundary(d + "/Users//ann/");
    EXPECT_EQ(boundary.path(), d + "/Users/ann");
    for (const char* inside : {"/Users/ann/x", "/Users/ann/./x//", "/Users/ann/a/../../ann/b", "/Users/ann/x/y"}) {
        EXPECT_TRUE(boundary.admits(d + inside)) << inside;
    }
    using namespace std::string_literals;
    for (const std::string& outside :
         {"/Users/ann"s, "/Users/ann/"s, "/Users/ann/x/.."s, "/Users"s, "/Users/annex/x"s, "/Users/ann/../bob/x"s,
          "/Users/ann/../../../../etc"s, "/Users/ann/..\0/..\0/x"s, "/Users/ann/x\0"s}) {
        EXPECT_FALSE(boundary.admits(d + outside)) << outside;
    }
    for (const char* outside : {"/", "", "Users/ann/x"}) {
        EXPECT_FALSE(boundary.admits(outside)) << outside;
    }
    EXPECT_EQ(boundary.componentsInside(d + "/Users/ann/a/./b/../c/"), (std::vector<std::string>{"a", "c"}));
    EXPECT_FALSE(DeletionBoundary("relative/home").admits("relative/home/x"));
    EXPECT_FALSE(DeletionBoundary(d + "/Users/bob").valid()) << "a folder that is not there holds nothing";
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

// Links inside a ticked folder go as links; a ticked link goes itself, however its path ends.
TEST_F(SafeRemove, LinksGoAsLinksAndTheirTargetsStay) {
    d.text("Library/Caches/Tick/a.txt", "a")
        .text("Library/Caches/Tick/Sub/b.txt", "b")
        .link("Library/Caches/Tick/toFolder", d.at("/Elsewhere"))
        .link("Library/Caches/Tick/Sub/toFile", d.at("/outside.txt"))
        .link("Library/Caches/Tick/relative", "../../../../../Elsewhere/Sub");
    for (const char* name : {"Plain", "Slash", "Dot"}) {
        d.link(std::string("Library/Caches/") + name, d.at("/Elsewhere"));
    }
    for (const char* ticked : {"Tick", "Plain", "Slash/", "Dot/."}) {
        EXPECT_TRUE(wentWhole(removeItem(boundary(), d.at(std::string("Library/Caches/") + ticked)))) << ticked;
    }
    EXPECT_TRUE(fs::is_empty(d.at("Library/Caches")));
    expectDecoyIntact();
}

TEST_F(SafeRemove, NothingIsReachedThroughALinkOnTheWayOrOutsideTheGrantedFolderAndTheReasonIsGiven) {
    d.link("Library/Way", d.at("/Elsewhere")).text("Library/File", "f");
    for (const std::string& target : {d.at("Library/Way/keep.txt"), d.at("Library/Way/Sub"), d.at("Library/File/x")}) {
        EXPECT_EQ(removeItem(boundary(), target), (Removal{false, LeftReason::BehindLink})) << target;
    }
    for (const std::string& target :
         {d.at("/Elsewhere/keep.txt"), d.at("/outside.txt"), d.home(), d.home() + "/", d.home() + "/Library/..",
          d.at("/Users"), std::string("/"), d.home() + "/../../Elsewhere"}) {
        EXPECT_EQ(removeItem(boundary(), target), (Removal{false, LeftReason::OutsideBoundary})) << target;
    }
    EXPECT_EQ(removeItem(boundary(), d.at("Library/Missing/x")), (Removal{}));
    expectDecoyIntact();
    EXPECT_TRUE(exists(d.at("Library/Way")));
}

// The home is held from the start: a home swapped for a link afterwards changes nothing; and a path longer than the
// system takes whole is reached one component at a time.
TEST_F(SafeRemove, TheHeldHomeOutlivesASwapAndPathsOfAnyLengthAreReached) {
    d.text("Library/Caches/Tick/a.txt", "a");
    const DeletionBoundary held = boundary();
    std::filesystem::rename(d.home(), d.at("/Users/moved"));
    ::symlink(d.at("/Elsewhere").c_str(), d.home().c_str());
    d.text("/Elsewhere/Library/Caches/Tick/a.txt", "decoy"); // what the path now names
    decoy = testing::treeContents(d.at("/Elsewhere"));
    EXPECT_TRUE(wentWhole(removeItem(held, d.at("Library/Caches/Tick"))));
    EXPECT_FALSE(exists(d.at("/Users/moved/Library/Caches/Tick")));
    expectDecoyIntact();

    // Forty folders of 200 bytes each below the home: more than a path the system takes at once.
    std::string relative;
    int at = ::open(d.at("/Users/moved").c_str(), O_RDONLY | O_DIRECTORY);
    for (int i = 0; i < 40; ++i) {
        const std::string name(200, static_cast<char>('a' + i % 26));
        relative += "/" + name;
        ::mkdirat(at, name.c_str(), 0755);
        const int next = ::openat(at, name.c_str(), O_RDONLY | O_DIRECTORY);
        ::close(at);
        at = next;
    }
    ::close(::openat(at, "leaf", O_CREAT | O_WRONLY | O_CLOEXEC, 0644));
    ::close(at);
    ASSERT_GT(relative.size(), std::size_t{PATH_MAX});
    EXPECT_TRUE(wentWhole(removeItem(held, d.home() + relative + "/leaf")));
    EXPECT_TRUE(wentWhole(removeItem(held, d.home() + relative.substr(0, 201))));
    EXPECT_FALSE(exists(d.at("/Users/moved/") + std::string(200, 'a')));
}

TEST_F(SafeRemove, CleaningMetadataThatPointsAwayChangesNothingOutsideTheHome) {
    // Chrome profiles whose names climb out of Chrome's folder, and add-on locations of "/", the home and a folder
    // outside it, all ticked.
    d.allApps().chromeLocalState({{"../../../Elsewhere", "Up"}, {"../../../../../../Elsewhere", "Out"}});
    d.text("Library/Elsewhere/Cookies", "in the home");
    const DiskRoot disk = d.disk();
    const BuilderOutcome chrome = testing::runBuilder(testing::builderNamed("Chrome"), disk);
    ASSERT_NE(chrome.section, nullptr);
    const RecordPtr addOns = makeRecord(
        {{"Name", std::string("Browser Extensions")},
         {"List",
          RecordList{makeRecord({{"AllList", UrlList{FileUrl{"/"}, disk.homeUrl(), FileUrl{d.at("/Elsewhere")}}},
                                 {"NameText", std::string("Add-on")},
                                 {"isChecked", true}})}}});
    CleaningEngine engine(CleanMode::Interactive, boundary());
    engine.cleanTicked({chrome.section, addOns});
    const CleanOutcome outcome = engine.joinAll();
    expectDecoyIntact();
    // Profile names that climb are no profile folders at all: not even the home's "Library/Elsewhere" is touched.
    EXPECT_TRUE(exists(d.at("Library/Elsewhere/Cookies")));
    EXPECT_TRUE(exists(d.at("/Applications/Safari.app")));
    ASSERT_EQ(outcome.left.size(), 3U);
    EXPECT_EQ(outcome.left[0], (LeftAsItWas{"/", LeftReason::OutsideBoundary, {}}));
}

TEST_F(SafeRemove, TenThousandLevelsGoWithinASmallDescriptorLimit) {
    const int fd = testing::makeFolderChain(d.home(), 10000);
    ASSERT_GE(fd, 0);
    ::close(fd);
    const testing::DescriptorLimit limit(64);
    ASSERT_TRUE(limit.lowered());
    const Removal removed = removeItem(boundary(), d.at("d"));
    EXPECT_EQ(removed, (Removal{true, std::nullopt}));
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
    const auto removed = testing::runUnprivileged([&] {
        const Removal result = removeItem(DeletionBoundary(home), home + "/Tick");
        return std::int64_t{result.left ? static_cast<std::int64_t>(*result.left) : -1};
    });
    // The folder itself stays, holding what could not go.
    EXPECT_EQ(removed, static_cast<std::int64_t>(LeftReason::NotRemovable));
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
    const Removal partly = removeItem(boundary(), d.at("Tick"));
    EXPECT_FALSE(partly.removed);
    EXPECT_EQ(partly.left, LeftReason::NotRemovable);
    EXPECT_TRUE(partly.someWent) << "a.txt went";
    EXPECT_TRUE(exists(d.at("Tick/Mounted/other.txt")));
    EXPECT_FALSE(exists(d.at("Tick/a.txt")));
    EXPECT_EQ(removeItem(boundary(), d.at("Tick/Mounted/other.txt")), (Removal{false, LeftReason::OtherMount}));
}

} // namespace
} // namespace tidewell
