#include <gtest/gtest.h>

#include <cstdint>
#include <utility>
#include <vector>

#include "base/byte_count.hpp"

namespace tidewell {
namespace {

TEST(ByteCount, WritesCountsAsTheDecimalFormatterDoes) {
    const std::vector<std::pair<std::int64_t, const char*>> cases{
        {0, "Zero KB"},
        {1, "1 byte"},
        {2, "2 bytes"},
        {999, "999 bytes"},
        {1000, "1 KB"},
        {1499, "1 KB"},
        {1500, "2 KB"}, // a tie goes to the even neighbour
        {2500, "2 KB"},
        {4096, "4 KB"},
        {999'499, "999 KB"},
        {999'500, "1 MB"}, // rounds to 1000 KB, written in the next unit
        {1'000'000, "1 MB"},
        {1'050'000, "1 MB"}, // 1.05 is a tie: even neighbour 1.0, trailing zero dropped
        {1'250'001, "1.3 MB"},
        {12'345'678, "12.3 MB"},
        {999'960'000, "1 GB"},
        {1'200'000'000, "1.2 GB"},
        {1'234'567'890, "1.23 GB"},
        {2'000'000'000, "2 GB"},
        {5'555'555'555'555, "5.56 TB"},
        {INT64_MAX, "9.22 EB"},
    };
    for (const auto& [bytes, text] : cases) {
        EXPECT_EQ(formatByteCount(bytes), text) << bytes;
    }
}

TEST(ByteCount, ZeroRuleLooksAtTheTextNotTheNumber) {
    const SizeText zero = sizeTextFor(std::int64_t{0});
    EXPECT_EQ(zero.text, "0 byte");
    EXPECT_FALSE(zero.enabled);

    const SizeText small = sizeTextFor(std::int64_t{1});
    EXPECT_EQ(small.text, "1 byte");
    EXPECT_TRUE(small.enabled);

    // Another locale's zero text is not recognised: it stays as it is and enabled.
    const SizeText foreign = sizeTextFor(std::string("Null KB"));
    EXPECT_EQ(foreign.text, "Null KB");
    EXPECT_TRUE(foreign.enabled);
}

} // namespace
} // namespace tidewell
