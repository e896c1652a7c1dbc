#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tidewell {

/// Tells in one pass over a text whether any of a set of words occurs in it as literal text, with the letters A to
/// Z matching their lower-case forms and every other byte matching only itself: "%", "_", "'", "\\" and '"' are
/// ordinary characters, and so are bytes beyond ASCII, compared as they are.
///
/// An automaton over all the words at once (a trie with failure links), so a text costs one step per byte whatever
/// the number of words. It is laid out compactly: the trie's nodes in breadth-first order, each with the byte that
/// leads to it, where its children start, and its failure link, about 9 bytes a node. A word that has another
/// word as its beginning adds nothing (the shorter one already matches), so a list of 100,000 words in 10 MB
/// needs at most about 90 MB.
class WordMatcher {
public:
    /// Empty words are ignored: they would match every text. At most 2^32 - 2 bytes of words in all.
    explicit WordMatcher(const std::vector<std::string>& words);

    /// Whether no word was given.
    [[nodiscard]] bool empty() const { return m_label.size() <= 1; }

    /// Whether some word occurs in text.
    [[nodiscard]] bool matchesAny(std::string_view text) const;

    /// The bytes the matcher's tables take.
    [[nodiscard]] std::size_t memoryBytes() const;

    /// An automaton of at most this many nodes (a list of some thousand words) also gets a full table of its steps,
    /// 1 KiB a node, so that a text costs one look-up per byte.
    static constexpr std::uint32_t kDenseNodeLimit = 8192;
    /// Whether it has that table.
    [[nodiscard]] bool hasFullTable() const { return !m_dense.empty(); }

private:
    [[nodiscard]] std::uint32_t childOf(std::uint32_t node, std::uint8_t byte) const;
    [[nodiscard]] bool isFinal(std::uint32_t node) const { return ((m_final[node / 64] >> (node % 64)) & 1U) != 0; }

    static constexpr std::uint32_t kNone = 0; // the root is no one's child

    std::array<std::uint32_t, 256> m_fromRoot{}; // the root's step for each byte, which most bytes of a text take
    std::vector<std::uint8_t> m_label;           // node -> the (folded) byte that leads to it
    std::vector<std::uint32_t> m_firstChild;     // node -> its first child; its children end where the next's start
    std::vector<std::uint32_t> m_fail;           // node -> the longest proper suffix of its text that is a node
    std::vector<std::uint64_t> m_final;          // node -> a word ends here, or at a node its failure links reach
    std::vector<std::uint32_t> m_dense;          // node * 256 + byte -> the next node, for a small automaton
};

} // namespace tidewell
