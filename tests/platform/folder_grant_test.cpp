#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include "cleaning/safe_remove.hpp"
#include "platform/folder_grant.hpp"
#include "support/disk_builder.hpp"
#include "support/unprivileged.hpp"

namespace tidewell {
namespace {

using testing::DiskBuilder;
using testing::TempFolder;

class FolderGrantTest : public ::testing::Test {
protected:
    TempFolder temp;
    DiskBuilder disk{temp.path()};

    FolderGrant grantOf(std::string_view path) {
        auto grant = createFolderGrant(disk.at(path));
        EXPECT_TRUE(grant.has_value()) << (grant ? "" : grant.error());
        return grant.value_or(FolderGrant{});
    }
};

TEST_F(FolderGrantTest, AGrantNamesTheRealFolderAndHoldsWhileItStaysThere) {
    disk.folder("Documents").link("/Users/shortcut", "ann");
    const FolderGrant viaLink = grantOf("/Users/shortcut");
    EXPECT_EQ(viaLink.path, disk.home());
    EXPECT_TRUE(resolveFolderGrant(viaLink));
    // What the folder holds may change; the grant is for the folder.
    disk.file("Documents/new.txt").folder("Library");
    EXPECT_TRUE(resolveFolderGrant(viaLink));

    EXPECT_FALSE(createFolderGrant(disk.at("missing")));
    disk.file("plain.txt");
    EXPECT_FALSE(createFolderGrant(disk.at("plain.txt")));
}

TEST_F(FolderGrantTest, AMovedReplacedOrLinkedFolderNoLongerCarriesTheGrant) {
    disk.folder("/Users/bob").folder("/Users/cid");

    const FolderGrant moved = grantOf("/Users/ann");
    ASSERT_EQ(::rename(disk.home().c_str(), disk.at("/Users/ann-old").c_str()), 0);
    EXPECT_FALSE(resolveFolderGrant(moved));
    // A new folder at the old path is another folder, even with the same name. The old one still exists, so its
    // inode number cannot be handed to the new one.
    disk.folder("/Users/ann");
    EXPECT_FALSE(resolveFolderGrant(moved));

    const FolderGrant linked = grantOf("/Users/bob");
    ASSERT_EQ(::rename(disk.at("/Users/bob").c_str(), disk.at("/Users/bob-real").c_str()), 0);
    disk.link("/Users/bob", "bob-real");
    EXPECT_FALSE(resolveFolderGrant(linked)) << "a link to the granted folder is not the folder";

    const FolderGrant removed = grantOf("/Users/cid");
    testing::removeTree(disk.at("/Users/cid"));
    EXPECT_FALSE(resolveFolderGrant(removed));
}

TEST_F(FolderGrantTest, GrantsSurviveTheSettingsAndDamagedBytesAreNoGrant) {
    const FolderGrant grant{"/Users/ann b/\"q\"", 18446744073709551615ULL, 42};
    EXPECT_EQ(grantFromBytes(grantToBytes(grant)), grant);

    EXPECT_FALSE(grantFromBytes(""));
    EXPECT_FALSE(grantFromBytes("not json"));
    EXPECT_FALSE(grantFromBytes(R"({"path":"Users/ann","device":1,"inode":2})")) << "relative path";
    EXPECT_FALSE(grantFromBytes(R"({"path":"/Users/ann","device":-1,"inode":2})"));
    EXPECT_FALSE(grantFromBytes(R"({"path":"/Users/ann","inode":2})"));
    EXPECT_FALSE(grantFromBytes(R"(["/Users/ann",1,2])"));
}

TEST_F(FolderGrantTest, OnlyStartedGrantsMakeAnythingWritable) {
    disk.folder("Documents").folder("/Users/anna").folder("/Outside").link("Documents/out", "../../../Outside");
    StartedGrants started;
    EXPECT_FALSE(started.isWritableFileAtPath(disk.home())) << "nothing is reachable before a grant is started";
    EXPECT_FALSE(started.boundary());

    const FolderGrant home = grantOf("/Users/ann");
    ASSERT_TRUE(started.startAccessing(home));
    ASSERT_TRUE(started.startAccessing(home));
    EXPECT_EQ(started.folders(), std::vector<std::string>{disk.home()});
    EXPECT_EQ(started.boundary(), disk.home());

    EXPECT_TRUE(started.isWritableFileAtPath(disk.home()));
    EXPECT_TRUE(started.isWritableFileAtPath(disk.at("Documents")));
    EXPECT_TRUE(started.isWritableFileAtPath(disk.at("Documents/../Documents")));
    EXPECT_FALSE(started.isWritableFileAtPath(disk.at("/Users/anna"))) << "a sibling sharing the name's start";
    EXPECT_FALSE(started.isWritableFileAtPath(disk.at("/Users")));
    EXPECT_FALSE(started.isWritableFileAtPath(disk.at("Documents/out"))) << "a link leading out of the grant";
    EXPECT_FALSE(started.isWritableFileAtPath(disk.at("Documents/missing")));

    // A later grant widens what is reachable, but the boundary stays the first.
    disk.folder("/Elsewhere");
    const FolderGrant elsewhere = grantOf("/Elsewhere");
    ::rmdir(disk.at("/Elsewhere").c_str());
    EXPECT_FALSE(started.startAccessing(elsewhere)) << "a grant that no longer resolves is not started";
    ASSERT_TRUE(started.startAccessing(grantOf("/Outside")));
    EXPECT_TRUE(started.isWritableFileAtPath(disk.at("Documents/out")));
    EXPECT_EQ(started.boundary(), disk.home());
}

TEST(FolderPathsTest, InsideComparesWholeComponents) {
    EXPECT_TRUE(isInsideFolder("/a/b", "/a/b"));
    EXPECT_TRUE(isInsideFolder("/a/b/c", "/a/b"));
    EXPECT_FALSE(isInsideFolder("/a/bc", "/a/b"));
    EXPECT_FALSE(isInsideFolder("/a", "/a/b"));
    EXPECT_TRUE(isInsideFolder("/anything", "/"));
    EXPECT_FALSE(isInsideFolder("relative", "/"));
}

TEST(FolderPathsTest, WritabilityFollowsTheFileSystemInsideAGrant) {
    TempFolder temp;
    DiskBuilder disk{temp.path()};
    disk.folder("locked").folder("open");
    // The child drops the super-user's rights, so it must be able to walk down to the folders.
    for (const std::string& path : {temp.path(), disk.at("/Users"), disk.home()}) {
        ::chmod(path.c_str(), 0755);
    }
    ::chmod(disk.at("locked").c_str(), 0555);
    ::chmod(disk.at("open").c_str(), 0777);
    const auto grant = createFolderGrant(disk.home());
    ASSERT_TRUE(grant);
    const std::string locked = disk.at("locked");
    const std::string open = disk.at("open");
    const auto seen = testing::runUnprivileged([&] {
        StartedGrants started;
        if (!started.startAccessing(*grant)) {
            return std::int64_t{-1};
        }
        return std::int64_t{started.isWritableFileAtPath(open) ? 2 : 0} +
               (started.isWritableFileAtPath(locked) ? 1 : 0);
    });
    ::chmod(disk.at("locked").c_str(), 0755);
    EXPECT_EQ(seen, 2) << "the open folder is writable, the read-only one is not";
}

// The grant names the real folder; the catalogue's locations come from the disk root. Both must agree even when
// the root is reached through a link, or the window's clean would find every location outside its grant.
TEST(FolderGrantBoundary, AGrantBoundsTheCatalogueOfADiskReachedThroughALink) {
    TempFolder temp;
    DiskBuilder d(temp.path() + "/real-disk");
    d.file("Library/Caches/old", 10);
    ASSERT_EQ(::symlink((temp.path() + "/real-disk").c_str(), (temp.path() + "/linked-disk").c_str()), 0);
    const auto disk = DiskRoot::make(temp.path() + "/linked-disk", "ann");
    ASSERT_TRUE(disk);
    EXPECT_EQ(disk->homePath(), temp.path() + "/real-disk/Users/ann");
    const auto grant = createFolderGrant(disk->homePath());
    ASSERT_TRUE(grant);
    EXPECT_TRUE(removeItem(DeletionBoundary(grant->path), disk->inHome("Library/Caches/old").path).removed);
}

} // namespace
} // namespace tidewell
