#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tidewell {

/// Tells in one pass over a text whether any of a set of words occurs in it, with the letters A to Z matching
/// their lower-case forms and every other byte matching only itself: the substring test that SQL's LIKE makes
/// for a pattern "%word%" of a word in plain ASCII. (An automaton over all the words at once, so the cost is one
/// table step per byte of text whatever the number of words.)
class WordMatcher {
public:
    /// Empty words are ignored (the caller decides what an empty word means).
    explicit WordMatcher(const std::vector<std::string>& words);

    /// Whether no word was given.
    [[nodiscard]] bool empty() const { return m_empty; }

    /// Whether some word occurs in text.
    [[nodiscard]] bool matchesAny(std::string_view text) const;

private:
    std::array<std::uint16_t, 256> m_class{}; // byte -> symbol class; 0 for bytes no word holds
    std::size_t m_classes = 1;
    std::vector<std::uint32_t> m_next; // state * m_classes + class -> state
    std::vector<std::uint8_t> m_final; // a word ends at this state
    bool m_empty = true;
};

} // namespace tidewell
