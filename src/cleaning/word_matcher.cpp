#include "cleaning/word_matcher.hpp"

#include <deque>
#include <limits>

namespace tidewell {

namespace {

constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

unsigned char foldAscii(unsigned char byte) {
    return byte >= 'A' && byte <= 'Z' ? static_cast<unsigned char>(byte - 'A' + 'a') : byte;
}

} // namespace

WordMatcher::WordMatcher(const std::vector<std::string>& words) {
    // Each byte the words hold gets a class of its own; an upper-case letter shares its lower-case letter's.
    for (const std::string& word : words) {
        for (const char c : word) {
            const unsigned char folded = foldAscii(static_cast<unsigned char>(c));
            if (m_class[folded] == 0) {
                m_class[folded] = static_cast<std::uint16_t>(m_classes++);
            }
        }
    }
    for (unsigned byte = 'A'; byte <= 'Z'; ++byte) {
        m_class[byte] = m_class[byte - 'A' + 'a'];
    }

    // The trie of the words.
    m_next.assign(m_classes, kNone);
    m_final.assign(1, 0);
    for (const std::string& word : words) {
        if (word.empty()) {
            continue;
        }
        m_empty = false;
        std::uint32_t state = 0;
        for (const char c : word) {
            const std::size_t slot = state * m_classes + m_class[static_cast<unsigned char>(c)];
            if (m_next[slot] == kNone) {
                m_next[slot] = static_cast<std::uint32_t>(m_final.size());
                m_final.push_back(0);
                m_next.resize(m_next.size() + m_classes, kNone);
            }
            state = m_next[slot];
        }
        m_final[state] = 1;
    }

    // Breadth first, every missing step becomes the step of the longest suffix that is also a prefix, so the
    // matcher never goes back in the text.
    std::vector<std::uint32_t> fallback(m_final.size(), 0);
    std::deque<std::uint32_t> queue;
    for (std::size_t c = 0; c < m_classes; ++c) {
        std::uint32_t& next = m_next[c];
        if (next == kNone) {
            next = 0;
        } else {
            queue.push_back(next);
        }
    }
    while (!queue.empty()) {
        const std::uint32_t state = queue.front();
        queue.pop_front();
        const std::uint32_t back = fallback[state];
        m_final[state] = static_cast<std::uint8_t>(m_final[state] | m_final[back]);
        for (std::size_t c = 0; c < m_classes; ++c) {
            std::uint32_t& next = m_next[state * m_classes + c];
            const std::uint32_t viaBack = m_next[back * m_classes + c];
            if (next == kNone) {
                next = viaBack;
            } else {
                fallback[next] = viaBack;
                queue.push_back(next);
            }
        }
    }
}

bool WordMatcher::matchesAny(std::string_view text) const {
    if (m_empty) {
        return false;
    }
    const std::uint32_t* next = m_next.data();
    const std::uint8_t* final = m_final.data();
    const std::size_t classes = m_classes;
    std::uint32_t state = 0;
    for (const char c : text) {
        state = next[state * classes + m_class[static_cast<unsigned char>(c)]];
        if (final[state] != 0) {
            return true;
        }
    }
    return false;
}

} // namespace tidewell
