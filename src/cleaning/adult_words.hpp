#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cleaning/word_matcher.hpp"

namespace tidewell {

/// `adultWords`: the URL fragments whose visits the history purge removes, in list order, with the matcher made
/// from them once. Shared read-only by the purge tasks that use it; a holder that loads a new list replaces the
/// pointer, never the contents.
class AdultWordList {
public:
    explicit AdultWordList(std::vector<std::string> words) : m_words(std::move(words)), m_matcher(m_words) {}

    [[nodiscard]] const std::vector<std::string>& words() const { return m_words; }
    [[nodiscard]] const WordMatcher& matcher() const { return m_matcher; }
    [[nodiscard]] std::size_t size() const { return m_words.size(); }
    [[nodiscard]] auto begin() const { return m_words.begin(); }
    [[nodiscard]] auto end() const { return m_words.end(); }

private:
    std::vector<std::string> m_words;
    WordMatcher m_matcher;
};
using AdultWords = std::shared_ptr<const AdultWordList>;

/// The file name of the shipped word list.
inline constexpr std::string_view kAdultWordFile = "adultWord.plist";

/// What a word list may be: at most this many bytes (10 MB), this many words (for a property list: values below
/// its root array, whatever their kind), and this many levels of nesting. Past them it is refused whole before
/// anything else reads it, so a hostile list can neither exhaust memory nor overflow a parser's stack.
inline constexpr std::size_t kMaxWordListBytes = 10'000'000;
inline constexpr std::size_t kMaxWords = 100'000;
inline constexpr std::size_t kMaxWordListNesting = 32;

/// Why a word list is refused whole before anything else reads it: it is past one of the limits above (nesting
/// counted from the XML's tags or the binary list's references, a reference cycle counting as too deep, and a
/// shared object once per reference). Nothing when it is within them.
[[nodiscard]] std::optional<std::string> wordListPastLimits(std::string_view contents);
/// The same for the size alone, of a list not read yet.
[[nodiscard]] std::optional<std::string> wordListSizePastLimit(std::uint64_t bytes);

/// The strings of a property list (XML or binary) whose root is an array, in order; entries that are not strings
/// are passed over, and a string holding a NUL byte counts up to it. Nothing when the data is past the limits,
/// is not a property list, or its root is not an array.
[[nodiscard]] std::optional<std::vector<std::string>> readWordListPlist(std::string_view contents);

/// The words of a word list given by hand: a property list when it starts like one ("bplist", or "<?xml",
/// "<!DOCTYPE" or "<plist" after white space), read as readWordListPlist does; otherwise text with one word per
/// line, where a line ends at "\n" or "\r\n", spaces and tabs around a word are dropped, and lines left empty are
/// passed over (an empty word would match every visit). A UTF-8 byte-order mark at the start is dropped in either
/// case. Nothing when it is past the limits, or a property list that is not an array.
[[nodiscard]] std::optional<std::vector<std::string>> readWordsText(std::string_view contents);

/// Why readWordsText gives nothing for a text: the limit it is past, or that it is not an array of words.
[[nodiscard]] std::string whyWordsRefused(std::string_view contents);

/// The shipped word list, found next to the running program or in its installed data folder. A missing,
/// unreadable or refused list gives no words: nothing matches, and the purge routines still run and log.
[[nodiscard]] AdultWords loadAdultWords();

/// Wraps a list for sharing, with its matcher.
[[nodiscard]] AdultWords makeAdultWords(std::vector<std::string> words);

} // namespace tidewell
