#include <gtest/gtest.h>

#include "cleaning/adult_words.hpp"
#include "support/disk_builder.hpp"

namespace tidewell {
namespace {

TEST(AdultWords, TheShippedListIsFoundAndHoldsOnlyPlainLowerCaseFragments) {
    const AdultWords words = loadAdultWords();
    ASSERT_GE(words->size(), 200U);
    for (const std::string& word : *words) {
        EXPECT_FALSE(word.empty());
        EXPECT_EQ(word.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789.-"), std::string::npos) << word;
    }
}

TEST(AdultWords, AWordListPropertyListIsAnArrayOfWhichOnlyStringsCount) {
    EXPECT_EQ(readWordListPlist("<plist version=\"1.0\"><array><string>porn</string><integer>5</integer>"
                                "<dict/><string>x%x</string></array></plist>"),
              (std::vector<std::string>{"porn", "x%x"}));
    EXPECT_EQ(readWordListPlist("<plist version=\"1.0\"><dict><key>a</key><string>b</string></dict></plist>"),
              std::nullopt);
    EXPECT_EQ(readWordListPlist("<plist><array><string>unclosed"), std::nullopt);
    using namespace std::string_literals;
    EXPECT_EQ(readWordListPlist("<plist><array><string>ab\0c</string></array></plist>"s),
              std::vector<std::string>{"ab"});
    EXPECT_EQ(readWordListPlist(""), std::nullopt);
}

TEST(AdultWords, AWordFileIsAPropertyListOrOneWordPerLine) {
    const testing::TempFolder temp;
    testing::DiskBuilder d(temp.path());
    d.text("/words.txt", "porn\r\n\nX%X\n it's \n")
        .text("/words.plist", "\n  <?xml version=\"1.0\"?><plist><array><string>xxx</string></array></plist>")
        .text("/dict.plist", "<plist><dict/></plist>");
    EXPECT_EQ(readWordsFile(d.at("/words.txt")), (std::vector<std::string>{"porn", "X%X", " it's "}));
    EXPECT_EQ(readWordsFile(d.at("/words.plist")), std::vector<std::string>{"xxx"});
    EXPECT_EQ(readWordsFile(d.at("/dict.plist")), std::nullopt);
    EXPECT_EQ(readWordsFile(d.at("/missing.txt")), std::nullopt);
}

} // namespace
} // namespace tidewell
