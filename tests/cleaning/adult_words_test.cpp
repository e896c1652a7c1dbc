#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "cleaning/adult_words.hpp"
#include "support/hostile_inputs.hpp"

namespace tidewell {
namespace {

using Words = std::vector<std::string>;

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
              (Words{"porn", "x%x"}));
    EXPECT_FALSE(readWordListPlist("<plist version=\"1.0\"><dict><key>a</key><string>b</string></dict></plist>"));
    EXPECT_FALSE(readWordListPlist("<plist><array><string>unclosed"));
    using namespace std::string_literals;
    EXPECT_EQ(readWordListPlist("<plist><array><string>ab\0c</string></array></plist>"s), Words{"ab"});
    EXPECT_FALSE(readWordListPlist(""));
    EXPECT_EQ(readWordListPlist(testing::binaryPlist({{{}, {1, 2}, true}, {"porn", {}, false}, {"xxx", {}, false}})),
              (Words{"porn", "xxx"}));
}

TEST(AdultWords, AWordListIsAPropertyListOrOneWordPerLine) {
    EXPECT_EQ(readWordsText("porn\r\n\nX%X\n it's \n"), (Words{"porn", "X%X", "it's"}));
    // As an editor may save it: a byte-order mark, spaces and tabs around words, lines of spaces alone.
    EXPECT_EQ(readWordsText("\xEF\xBB\xBFporn\r\n \t \r\n\tsex cam  \r\n\r\n   \nxxx\t"),
              (Words{"porn", "sex cam", "xxx"}));
    EXPECT_EQ(readWordsText("\xEF\xBB\xBF"), Words{});
    EXPECT_EQ(readWordsText("\n  <?xml version=\"1.0\"?><plist><array><string>xxx</string></array></plist>"),
              Words{"xxx"});
    EXPECT_EQ(readWordsText("\xEF\xBB\xBF<?xml version=\"1.0\"?><plist><array><string> a </string></array></plist>"),
              Words{" a "});
    EXPECT_FALSE(readWordsText("<plist><dict/></plist>"));
    EXPECT_EQ(whyWordsRefused("<plist><dict/></plist>"), "the word list is not a property list whose root is an array");
}

// Past each limit a list is refused whole, with the reason, before libplist reads it: deep nesting (XML, and a
// binary list's references, a cycle among them), more values than words allowed (a binary list of 20 arrays, each
// holding the next twice, expands to a million values), more bytes or more lines than allowed. At the limits it is
// read.
TEST(AdultWords, AListPastItsLimitsIsRefusedWholeWithTheReason) {
    struct Case {
        const char* what;
        std::string contents;
        const char* reason;
    };
    std::string manyLines;
    for (std::size_t i = 0; i <= kMaxWords; ++i) {
        manyLines += "w\n";
    }
    std::string manyStrings = "<plist><array>";
    for (std::size_t i = 0; i <= kMaxWords; ++i) {
        manyStrings += "<string>w</string>";
    }
    manyStrings += "</array></plist>";
    const std::vector<Case> refused{
        {"200,000 nested XML arrays", testing::nestedXmlPlist(200000), "nests deeper"},
        {"33 nested XML arrays", testing::nestedXmlPlist(kMaxWordListNesting + 1), "nests deeper"},
        {"a binary array holding itself", testing::cyclicBinaryPlist(), "nests deeper"},
        {"binary arrays 100 deep", testing::deepBinaryPlist(100), "nests deeper"},
        {"binary arrays doubling 20 times", testing::doublingBinaryPlist(20), "more than 100000 words"},
        {"100,001 lines", manyLines, "more than 100000 words"},
        {"100,001 strings", manyStrings, "more than 100000 words"},
        {"13 MB of words", testing::randomWordLines(13'000'000, 1), "larger than 10000000 bytes"},
    };
    for (const Case& c : refused) {
        EXPECT_FALSE(readWordsText(c.contents)) << c.what;
        const std::string why = whyWordsRefused(c.contents);
        EXPECT_NE(why.find(c.reason), std::string::npos) << c.what << ": " << why;
    }
    manyLines.resize(manyLines.size() - 2);
    EXPECT_EQ(readWordsText(manyLines).value().size(), kMaxWords);
    EXPECT_EQ(readWordsText(testing::nestedXmlPlist(kMaxWordListNesting - 2)).value(), Words{});
    EXPECT_EQ(readWordsText(testing::doublingBinaryPlist(15)).value(), Words{});
    std::string largest;
    for (std::size_t i = 0; i < kMaxWords; ++i) {
        largest += std::string(kMaxWordListBytes / kMaxWords - 1, static_cast<char>('a' + i % 26)) + "\n";
    }
    ASSERT_EQ(largest.size(), kMaxWordListBytes);
    EXPECT_EQ(readWordsText(largest).value().size(), kMaxWords);
}

// The matcher finds exactly what a byte-wise search of every word finds, ASCII letters folded; checked against
// that plain search on random words and texts of a small alphabet, where words overlap and contain each other.
TEST(WordMatcher, FindsWhatAPlainSearchOfEachWordFinds) {
    std::mt19937 random(20261121);
    const std::string alphabet = "abAB%_'\xc3\xa9";
    const auto text = [&](std::size_t most) {
        std::string out;
        for (std::size_t i = 0, n = random() % (most + 1); i < n; ++i) {
            out.push_back(alphabet[random() % alphabet.size()]);
        }
        return out;
    };
    const auto folded = [](std::string s) {
        for (char& c : s) {
            c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        }
        return s;
    };
    // Small lists get the full table of steps; every tenth round's list is large enough to go without it.
    for (int round = 0; round < 2000; ++round) {
        Words words;
        for (std::size_t i = 0, n = round % 10 == 9 ? 3000 : random() % 8; i < n; ++i) {
            std::string word = text(5);
            while (round % 10 == 9 && word.size() < 7) {
                word.push_back(alphabet[random() % alphabet.size()]);
            }
            words.push_back(std::move(word));
        }
        const WordMatcher matcher(words);
        ASSERT_EQ(matcher.hasFullTable(), round % 10 != 9) << "round " << round;
        for (int probe = 0; probe < 20; ++probe) {
            const std::string haystack = text(12);
            const bool expected = std::ranges::any_of(words, [&](const std::string& word) {
                return !word.empty() && folded(haystack).find(folded(word)) != std::string::npos;
            });
            ASSERT_EQ(matcher.matchesAny(haystack), expected) << "round " << round << ": " << haystack;
        }
    }
}

} // namespace
} // namespace tidewell
