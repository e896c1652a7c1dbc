#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <random>

#include "base/byte_count.hpp"
#include "base/folders.hpp"
#include "catalogue/items.hpp"
#include "catalogue/size_walker.hpp"
#include "support/catalogue_helpers.hpp"
#include "support/disk_builder.hpp"
#include "support/unprivileged.hpp"

namespace tidewell {
namespace {

using testing::DiskBuilder;
using testing::TempFolder;

std::int64_t allocated(const std::string& path) {
    struct stat st {};
    EXPECT_EQ(::lstat(path.c_str(), &st), 0) << path;
    return static_cast<std::int64_t>(st.st_blocks) * 512;
}

// What a deep enumeration sums, written the plain recursive way: entries in listing order, folders adding
// nothing of their own, links not followed, and the first folder that cannot be listed ending everything.
TreeSum plainWalk(const std::string& folder) {
    if (::access(folder.c_str(), R_OK | X_OK) != 0) {
        return {0, true};
    }
    TreeSum sum;
    for (const std::string& name : listFolderNames(folder)) {
        const std::string path = folder + "/" + name;
        struct stat st {};
        ::lstat(path.c_str(), &st);
        sum = sum.then(S_ISDIR(st.st_mode) ? plainWalk(path) : TreeSum{allocated(path), false});
        if (sum.stopped) {
            break;
        }
    }
    return sum;
}

// A tree of folders, files of assorted sizes and links, the same for a given seed.
void growTree(DiskBuilder& d, const std::string& base, std::mt19937& random, int depth) {
    std::uniform_int_distribution<int> count(0, 6);
    std::uniform_int_distribution<std::size_t> size(0, 20000);
    for (int i = count(random); i > 0; --i) {
        d.file(base + "/f" + std::to_string(i), size(random));
    }
    if (count(random) == 0) {
        d.link(base + "/link", "/usr");
    }
    if (depth > 0) {
        for (int i = count(random) / 2; i > 0; --i) {
            growTree(d, base + "/d" + std::to_string(i), random, depth - 1);
        }
    }
}

class FileSize : public ::testing::Test {
protected:
    TempFolder temp;
    DiskBuilder d{temp.path()};
    SizeCounter sizes{0};
};

TEST_F(FileSize, MeasuresAllocatedSpaceAndNothingForMissingOrEmpty) {
    d.file("one-byte", 1).folder("empty");
    EXPECT_EQ(sizes.allocatedSize(d.at("missing")), 0);
    EXPECT_EQ(sizes.allocatedSize(d.at("empty")), 0);
    EXPECT_EQ(sizes.allocatedSize(d.at("one-byte")), allocated(d.at("one-byte")));
    EXPECT_GE(sizes.allocatedSize(d.at("one-byte")), 512) << "allocated, not logical, size";
}

TEST_F(FileSize, NeverFollowsLinks) {
    d.file("/elsewhere/big", 500000).file("cache/own", 10000);
    d.link("cache/to-folder", temp.path() + "/elsewhere").link("cache/to-file", temp.path() + "/elsewhere/big");
    d.link("linked-cache", d.at("cache"));
    const std::int64_t expected =
        allocated(d.at("cache/own")) + allocated(d.at("cache/to-folder")) + allocated(d.at("cache/to-file"));
    EXPECT_EQ(sizes.allocatedSize(d.at("cache")), expected);
    // A location that is itself a link measures the link alone; one reached through a link measures nothing,
    // and so does one outside the folder the counter holds, however it is spelt.
    EXPECT_EQ(sizes.allocatedSize(d.at("linked-cache")), allocated(d.at("linked-cache")));
    EXPECT_EQ(sizes.allocatedSize(d.at("cache/to-folder/big")), 0);
    EXPECT_EQ(sizes.measureFolder(d.at("linked-cache/to-folder")).bytes, 0);
    SizeCounter home(0, {}, HeldFolder(d.home()));
    EXPECT_EQ(home.allocatedSize(d.at("cache")), expected);
    EXPECT_EQ(home.allocatedSize(d.at("/elsewhere/big")), 0);
    EXPECT_EQ(home.allocatedSize(d.at("cache/../../elsewhere/big")), 0);
}

TEST_F(FileSize, DevicesAndPipesCountTheirOwnSpaceWithoutBeingOpened) {
    d.file("odd/plain", 3000);
    ASSERT_EQ(::mkfifo(d.at("odd/fifo").c_str(), 0644), 0);
    const int sock = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string socketPath = d.at("odd/socket");
    ASSERT_LT(socketPath.size(), sizeof address.sun_path);
    socketPath.copy(address.sun_path, socketPath.size());
    ASSERT_EQ(::bind(sock, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(sizes.allocatedSize(d.at("odd")), allocated(d.at("odd/plain")));
    ::close(sock);
}

TEST_F(FileSize, WalksTenThousandLevelsWithinAHandfulOfDescriptors) {
    const std::string top = temp.path() + "/deep";
    ASSERT_EQ(::mkdir(top.c_str(), 0755), 0);
    constexpr int kDepth = 10000;
    int fd = ::open(top.c_str(), O_RDONLY | O_DIRECTORY);
    std::int64_t fileBytes = 0;
    for (int level = 0; level < kDepth; ++level) {
        const int file = ::openat(fd, "f", O_WRONLY | O_CREAT, 0644);
        ASSERT_EQ(::write(file, "x", 1), 1);
        struct stat st {};
        ::fstat(file, &st);
        fileBytes += static_cast<std::int64_t>(st.st_blocks) * 512;
        ::close(file);
        ASSERT_EQ(::mkdirat(fd, "d", 0755), 0);
        const int next = ::openat(fd, "d", O_RDONLY | O_DIRECTORY);
        ::close(fd);
        fd = next;
    }
    ::close(fd);
    // Each walk (the first and each worker's) keeps a bounded number of folders open, far below one per level.
    const testing::DescriptorLimit limit(256);
    ASSERT_TRUE(limit.lowered());
    for (const unsigned workers : {0U, 2U}) {
        SizeCounter counter(workers);
        EXPECT_EQ(counter.measureFolder(top), (TreeSum{fileBytes, false})) << workers;
    }
}

TEST_F(FileSize, ParallelWalksAndReusedSumsMatchAPlainWalk) {
    std::mt19937 random(20261121);
    growTree(d, "Library/Caches", random, 5);
    growTree(d, "Library/Caches/com.apple.Safari", random, 4);
    const TreeSum expected = plainWalk(d.at("Library/Caches"));
    ASSERT_FALSE(expected.stopped);

    SizeCounter plain(0);
    plain.setReuse(false);
    EXPECT_EQ(plain.measureFolder(d.at("Library/Caches")), expected);

    SizeCounter parallel(3);
    EXPECT_EQ(parallel.allocatedSize(d.at("Library/Caches/com.apple.Safari")),
              plainWalk(d.at("Library/Caches/com.apple.Safari")).bytes);
    EXPECT_EQ(parallel.measureFolder(d.at("Library/Caches")), expected) << "with the Safari folder's sum reused";
}

TEST_F(FileSize, AFolderRightBelowAMeasuredOneKeepsItsSumWithinOneCounter) {
    d.file("cache/thumbnails/normal/a.png", 3000).file("cache/thumbnails/b.png", 3000).file("cache/other", 3000);
    for (const unsigned workers : {0U, 1U, 3U}) {
        SizeCounter counter(workers);
        const std::int64_t thumbnails = plainWalk(d.at("cache/thumbnails")).bytes;
        const std::int64_t normal = plainWalk(d.at("cache/thumbnails/normal")).bytes;
        ASSERT_EQ(counter.allocatedSize(d.at("cache")), plainWalk(d.at("cache")).bytes);
        // The disk changes behind the counter's back: a folder right below the measured one answers from the walk
        // already made, a folder further down is walked afresh.
        d.file("cache/thumbnails/normal/new-" + std::to_string(workers), 9000);
        EXPECT_EQ(counter.allocatedSize(d.at("cache/thumbnails")), thumbnails) << workers;
        EXPECT_GT(counter.allocatedSize(d.at("cache/thumbnails/normal")), normal) << workers;
        EXPECT_GT(SizeCounter(workers).allocatedSize(d.at("cache/thumbnails")), thumbnails) << workers;
    }
}

TEST_F(FileSize, StopsAtTheFirstUnreadableFolderAndKeepsThePartialSum) {
    ASSERT_EQ(::chmod(temp.path().c_str(), 0755), 0);
    std::mt19937 random(7);
    for (int i = 0; i < 8; ++i) {
        growTree(d, "tree/" + std::string(1, static_cast<char>('a' + i)), random, 2);
    }
    d.file("tree/e/secret/inside", 90000);
    ASSERT_EQ(::chmod(d.at("tree/e/secret").c_str(), 0), 0);
    const std::string tree = d.at("tree");

    const auto oracle = testing::runUnprivileged([&] { return plainWalk(tree).bytes; });
    const auto sequential = testing::runUnprivileged([&] { return SizeCounter(0).measureFolder(tree).bytes; });
    const auto parallel = testing::runUnprivileged([&] { return SizeCounter(2).measureFolder(tree).bytes; });
    const auto stopped =
        testing::runUnprivileged([&] { return std::int64_t{SizeCounter(2).measureFolder(tree).stopped}; });
    ASSERT_TRUE(oracle && sequential && parallel && stopped);
    EXPECT_EQ(*sequential, *oracle);
    EXPECT_EQ(*parallel, *oracle);
    EXPECT_EQ(*stopped, 1);
    ::chmod(d.at("tree/e/secret").c_str(), 0755);
    EXPECT_LT(*oracle, plainWalk(tree).bytes);
}

TEST(MeasureItems, CountsOverlapsEachTimeAndWritesTheItemTexts) {
    TempFolder temp;
    DiskBuilder d(temp.path());
    d.file("folder/a", 5000).file("folder/b", 5000);
    const std::int64_t a = allocated(d.at("folder/a"));
    const std::int64_t folder = a + allocated(d.at("folder/b"));
    const RecordList items{
        makeItem({FileUrl{d.at("folder")}, FileUrl{d.at("folder/a")}, FileUrl{d.at("folder/a")}}, "Overlap", false),
        makeItem({}, "Empty", false),
        makeItem({FileUrl{d.at("missing")}}, "Missing", false),
    };
    SizeCounter sizes(0);
    EXPECT_EQ(measureItems(items, sizes).bytes, folder + 2 * a);
    EXPECT_TRUE(items[0]->flag("isEnabled"));
    EXPECT_EQ(items[0]->text("sizeText"), formatByteCount(folder + 2 * a));
    for (const std::size_t i : {1U, 2U}) {
        EXPECT_EQ(items[i]->text("sizeText"), "0 byte");
        EXPECT_FALSE(items[i]->flag("isEnabled"));
        EXPECT_TRUE(items[i]->flag("isChecked"));
    }
}

} // namespace
} // namespace tidewell
