#include "cleaning/word_matcher.hpp"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace tidewell {

namespace {

std::uint8_t foldAscii(char c) {
    const auto byte = static_cast<std::uint8_t>(c);
    return byte >= 'A' && byte <= 'Z' ? static_cast<std::uint8_t>(byte - 'A' + 'a') : byte;
}

// The words to build from: folded, sorted, each once, and without those that begin with another word, whose
// matches the shorter word already finds. Sorted, a word and all that begin with it lie together, so comparing
// with the last word kept is enough.
std::vector<std::string> wordsToBuild(const std::vector<std::string>& words) {
    std::vector<std::string> folded;
    folded.reserve(words.size());
    for (const std::string& word : words) {
        if (word.empty()) {
            continue;
        }
        std::string copy(word.size(), '\0');
        std::ranges::transform(word, copy.begin(), [](char c) { return static_cast<char>(foldAscii(c)); });
        folded.push_back(std::move(copy));
    }
    std::ranges::sort(folded);
    std::vector<std::string> kept;
    for (std::string& word : folded) {
        if (kept.empty() || !word.starts_with(kept.back())) {
            kept.push_back(std::move(word));
        }
    }
    return kept;
}

// The trie's size: each word adds the nodes below its common beginning with the word before it.
std::size_t nodeCount(const std::vector<std::string>& words) {
    std::size_t nodes = 1;
    for (std::size_t i = 0; i < words.size(); ++i) {
        std::size_t common = 0;
        if (i > 0) {
            const auto [a, b] = std::ranges::mismatch(words[i - 1], words[i]);
            common = static_cast<std::size_t>(a - words[i - 1].begin());
        }
        nodes += words[i].size() - common;
    }
    return nodes;
}

} // namespace

WordMatcher::WordMatcher(const std::vector<std::string>& words) {
    std::vector<std::string> sorted = wordsToBuild(words);
    const std::size_t nodes = nodeCount(sorted);
    if (nodes >= std::numeric_limits<std::uint32_t>::max()) {
        throw std::length_error("word list too large for the matcher");
    }
    m_label.assign(nodes, 0);
    m_firstChild.assign(nodes + 1, 0);
    m_final.assign(nodes / 64 + 1, 0);

    // The trie breadth first, one level at a time: a node stands for the words (a range of the sorted list) that
    // share its text; its children split that range by the next byte. A node whose range is one word that ends
    // here is final and has no children.
    struct Range {
        std::uint32_t first;
        std::uint32_t end;
    };
    std::vector<Range> level{{0, static_cast<std::uint32_t>(sorted.size())}};
    std::uint32_t levelStart = 0;
    std::uint32_t next = 1;
    for (std::size_t depth = 0; !level.empty(); ++depth) {
        std::vector<Range> below;
        for (std::uint32_t k = 0; k < level.size(); ++k) {
            const std::uint32_t node = levelStart + k;
            m_firstChild[node] = next;
            const Range range = level[k];
            if (range.end - range.first == 1 && sorted[range.first].size() == depth) {
                m_final[node / 64] |= std::uint64_t{1} << (node % 64);
                continue;
            }
            for (std::uint32_t i = range.first; i < range.end;) {
                const char byte = sorted[i][depth];
                std::uint32_t j = i;
                while (j < range.end && sorted[j][depth] == byte) {
                    ++j;
                }
                m_label[next++] = static_cast<std::uint8_t>(byte);
                below.push_back({i, j});
                i = j;
            }
        }
        levelStart += static_cast<std::uint32_t>(level.size());
        level = std::move(below);
    }
    m_firstChild[nodes] = next;
    sorted = {};

    // Failure links in the same order: a node's link is found from its parent's, which comes earlier.
    m_fail.assign(nodes, 0);
    for (std::uint32_t node = 0; node < nodes; ++node) {
        for (std::uint32_t child = m_firstChild[node]; child < m_firstChild[node + 1]; ++child) {
            std::uint32_t fail = 0;
            if (node != 0) {
                for (std::uint32_t back = m_fail[node];; back = m_fail[back]) {
                    if (const std::uint32_t step = childOf(back, m_label[child]); step != kNone) {
                        fail = step;
                        break;
                    }
                    if (back == 0) {
                        break;
                    }
                }
            }
            m_fail[child] = fail;
            if (isFinal(fail)) {
                m_final[child / 64] |= std::uint64_t{1} << (child % 64);
            }
        }
    }
    for (unsigned byte = 0; byte < 256; ++byte) {
        m_fromRoot[byte] = childOf(0, foldAscii(static_cast<char>(byte)));
    }
    // A small automaton gets a full table, so each byte of a text costs one look-up. A node's failure link comes
    // earlier in breadth-first order, so its row is complete when a row needs it.
    if (nodes <= kDenseNodeLimit) {
        m_dense.assign(std::size_t{nodes} * 256, 0);
        for (std::uint32_t node = 0; node < nodes; ++node) {
            for (unsigned byte = 0; byte < 256; ++byte) {
                const std::uint32_t step = childOf(node, foldAscii(static_cast<char>(byte)));
                m_dense[std::size_t{node} * 256 + byte] = step != kNone ? step
                                                          : node == 0   ? 0
                                                                      : m_dense[std::size_t{m_fail[node]} * 256 + byte];
            }
        }
    }
}

std::uint32_t WordMatcher::childOf(std::uint32_t node, std::uint8_t byte) const {
    const auto first = m_label.begin() + m_firstChild[node];
    const auto end = m_label.begin() + m_firstChild[node + 1];
    const auto found = std::lower_bound(first, end, byte);
    return found != end && *found == byte ? static_cast<std::uint32_t>(found - m_label.begin()) : kNone;
}

bool WordMatcher::matchesAny(std::string_view text) const {
    if (empty()) {
        return false;
    }
    std::uint32_t state = 0;
    if (!m_dense.empty()) {
        for (const char c : text) {
            state = m_dense[std::size_t{state} * 256 + static_cast<std::uint8_t>(c)];
            if (isFinal(state)) {
                return true;
            }
        }
        return false;
    }
    for (const char c : text) {
        const std::uint8_t byte = foldAscii(c);
        while (state != 0) {
            if (const std::uint32_t step = childOf(state, byte); step != kNone) {
                state = step;
                break;
            }
            state = m_fail[state];
        }
        if (state == 0) {
            state = m_fromRoot[static_cast<std::uint8_t>(c)];
        }
        if (isFinal(state)) {
            return true;
        }
    }
    return false;
}

std::size_t WordMatcher::memoryBytes() const {
    return sizeof(*this) + m_label.capacity() + m_firstChild.capacity() * sizeof(std::uint32_t) +
           m_fail.capacity() * sizeof(std::uint32_t) + m_final.capacity() * sizeof(std::uint64_t) +
           m_dense.capacity() * sizeof(std::uint32_t);
}

} // namespace tidewell
