#include "cleaning/adult_words.hpp"

#include <plist/plist.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>

#include "base/folders.hpp"
#include "platform/resources.hpp"

namespace tidewell {

namespace {

// libplist hands out nodes that must be freed; this owns one.
struct PlistDeleter {
    void operator()(plist_t node) const { plist_free(node); }
};
using PlistPtr = std::unique_ptr<void, PlistDeleter>;

// (No formatting library here: the fuzzers build this file on their own.)
std::string tooManyWords() {
    return "the word list holds more than " + std::to_string(kMaxWords) + " words";
}

std::string nestedTooDeep() {
    return "the word list nests deeper than " + std::to_string(kMaxWordListNesting) + " levels";
}

// A text word list may come from an editor that starts it with a byte-order mark; it is no part of the first word.
std::string_view withoutByteOrderMark(std::string_view contents) {
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    return contents.starts_with(kMark) ? contents.substr(kMark.size()) : contents;
}

bool looksLikePlist(std::string_view contents) {
    contents = withoutByteOrderMark(contents);
    if (contents.starts_with("bplist")) {
        return true;
    }
    const std::size_t start = contents.find_first_not_of(" \t\r\n");
    if (start == std::string_view::npos) {
        return false;
    }
    const std::string_view rest = contents.substr(start);
    return rest.starts_with("<?xml") || rest.starts_with("<!DOCTYPE") || rest.starts_with("<plist");
}

// How deep an XML property list nests and how many values it holds, counted from its tags the way libplist's
// reader skips declarations, comments and document types. Where the two could read a text differently (a ">"
// inside a quoted attribute, a "<" inside a string) this counts more, never less.
std::optional<std::string> xmlPastLimits(std::string_view text) {
    std::size_t depth = 0;
    std::size_t values = 0;
    std::size_t at = 0;
    while ((at = text.find('<', at)) != std::string_view::npos) {
        const std::string_view rest = text.substr(at);
        std::string_view closing = ">";
        if (rest.starts_with("<?")) {
            closing = "?>";
        } else if (rest.starts_with("<!--")) {
            closing = "-->";
        }
        const std::size_t end = text.find(closing, at + 1);
        if (end == std::string_view::npos) {
            return std::nullopt; // unfinished: the reader refuses it without going deeper
        }
        const std::string_view tag = text.substr(at + 1, end - at - 1);
        at = end + closing.size();
        if (closing != ">" || tag.starts_with('!')) {
            continue;
        }
        if (tag.starts_with('/')) {
            depth -= depth > 0 ? 1 : 0;
            continue;
        }
        if (!tag.starts_with("plist")) {
            ++values;
        }
        if (!tag.ends_with('/') && ++depth > kMaxWordListNesting) {
            return nestedTooDeep();
        }
    }
    // The root array is not a word.
    return values > kMaxWords + 1 ? std::optional(tooManyWords()) : std::nullopt;
}

// A binary property list: objects found through an offset table, containers holding references to other objects.
// Its nesting and the number of values libplist would make (a shared object is made once per reference) are
// worked out from the references with each object visited once, without recursion; a cycle is too deep.
class BinaryPlistShape {
public:
    explicit BinaryPlistShape(std::string_view data) : m_data(data) {}

    std::optional<std::string> pastLimits() {
        if (m_data.size() < 40) {
            return std::nullopt; // too short to be read at all
        }
        const std::string_view trailer = m_data.substr(m_data.size() - 32);
        m_offsetSize = static_cast<std::uint8_t>(trailer[6]);
        m_refSize = static_cast<std::uint8_t>(trailer[7]);
        const std::uint64_t objects = bigEndian(trailer.substr(8, 8));
        const std::uint64_t top = bigEndian(trailer.substr(16, 8));
        m_offsetTable = bigEndian(trailer.substr(24, 8));
        if (m_offsetSize == 0 || m_offsetSize > 8 || m_refSize == 0 || m_refSize > 8 || top >= objects) {
            return std::nullopt; // malformed: the reader refuses it
        }
        if (objects > 2 * kMaxWords + 16) {
            return tooManyWords();
        }
        m_objects = objects;
        m_height.assign(objects, 0);
        m_values.assign(objects, 0);
        m_state.assign(objects, State::Unseen);
        return walkFrom(top);
    }

private:
    enum class State : std::uint8_t { Unseen, Open, Done };
    struct Frame {
        std::uint64_t object;
        std::vector<std::uint64_t> children;
        std::size_t next = 0;
    };

    std::uint64_t bigEndian(std::string_view bytes) const {
        std::uint64_t value = 0;
        for (const char byte : bytes) {
            value = (value << 8U) | static_cast<std::uint8_t>(byte);
        }
        return value;
    }

    // The objects a container refers to; none for anything else or anything that does not fit the data.
    std::vector<std::uint64_t> childrenOf(std::uint64_t object) const {
        const std::uint64_t entry = m_offsetTable + object * m_offsetSize;
        if (entry + m_offsetSize > m_data.size()) {
            return {};
        }
        std::uint64_t at = bigEndian(m_data.substr(entry, m_offsetSize));
        if (at >= m_data.size()) {
            return {};
        }
        const auto marker = static_cast<std::uint8_t>(m_data[at++]);
        const unsigned kind = marker >> 4U;
        if (kind != 0xA && kind != 0xB && kind != 0xC && kind != 0xD) {
            return {};
        }
        std::uint64_t count = marker & 0xFU;
        if (count == 0xF) {
            if (at >= m_data.size()) {
                return {};
            }
            const auto sizeMarker = static_cast<std::uint8_t>(m_data[at++]);
            const std::uint64_t width = std::uint64_t{1} << (sizeMarker & 0x3U);
            if ((sizeMarker >> 4U) != 0x1 || at + width > m_data.size()) {
                return {};
            }
            count = bigEndian(m_data.substr(at, width));
            at += width;
        }
        if (kind == 0xD) {
            count *= 2; // keys, then values
        }
        if (count > m_data.size() || at + count * m_refSize > m_data.size()) {
            return {};
        }
        std::vector<std::uint64_t> children;
        children.reserve(count);
        for (std::uint64_t i = 0; i < count; ++i) {
            const std::uint64_t child = bigEndian(m_data.substr(at + i * m_refSize, m_refSize));
            if (child < m_objects) {
                children.push_back(child);
            }
        }
        return children;
    }

    std::optional<std::string> walkFrom(std::uint64_t top) {
        std::vector<Frame> stack;
        stack.push_back({top, childrenOf(top)});
        m_state[top] = State::Open;
        while (!stack.empty()) {
            Frame& frame = stack.back();
            if (frame.next < frame.children.size()) {
                const std::uint64_t child = frame.children[frame.next++];
                if (m_state[child] == State::Open || stack.size() >= kMaxWordListNesting) {
                    return nestedTooDeep();
                }
                if (m_state[child] == State::Unseen) {
                    m_state[child] = State::Open;
                    stack.push_back({child, childrenOf(child)});
                }
                continue;
            }
            std::uint64_t values = 1;
            std::uint8_t height = 0;
            for (const std::uint64_t child : frame.children) {
                values += m_values[child];
                height = std::max<std::uint8_t>(height, static_cast<std::uint8_t>(m_height[child] + 1));
            }
            if (height > kMaxWordListNesting) {
                return nestedTooDeep();
            }
            // The root array is not a word.
            if (values > kMaxWords + 1) {
                return tooManyWords();
            }
            m_values[frame.object] = values;
            m_height[frame.object] = height;
            m_state[frame.object] = State::Done;
            stack.pop_back();
        }
        return std::nullopt;
    }

    std::string_view m_data;
    std::uint8_t m_offsetSize = 0;
    std::uint8_t m_refSize = 0;
    std::uint64_t m_offsetTable = 0;
    std::uint64_t m_objects = 0;
    std::vector<std::uint8_t> m_height;
    std::vector<std::uint64_t> m_values;
    std::vector<State> m_state;
};

// One word per line. Spaces and tabs around a word are no part of it (a URL holds none), and a line left empty is
// passed over: an empty word would match every visit.
std::vector<std::string> readLines(std::string_view contents) {
    contents = withoutByteOrderMark(contents);
    std::vector<std::string> words;
    std::size_t start = 0;
    while (start < contents.size()) {
        std::size_t end = contents.find('\n', start);
        if (end == std::string_view::npos) {
            end = contents.size();
        }
        std::string_view line = contents.substr(start, end - start);
        constexpr std::string_view kSpaces = " \t\r\v\f";
        const std::size_t first = line.find_first_not_of(kSpaces);
        line = first == std::string_view::npos ? std::string_view()
                                               : line.substr(first, line.find_last_not_of(kSpaces) - first + 1);
        if (!line.empty()) {
            words.emplace_back(line);
        }
        start = end + 1;
    }
    return words;
}

std::string tooLarge() {
    return "the word list is larger than " + std::to_string(kMaxWordListBytes) + " bytes (10 MB)";
}

} // namespace

std::optional<std::string> wordListSizePastLimit(std::uint64_t bytes) {
    return bytes > kMaxWordListBytes ? std::optional(tooLarge()) : std::nullopt;
}

std::optional<std::string> wordListPastLimits(std::string_view contents) {
    if (std::optional<std::string> refused = wordListSizePastLimit(contents.size())) {
        return refused;
    }
    if (contents.starts_with("bplist")) {
        return BinaryPlistShape(contents).pastLimits();
    }
    if (looksLikePlist(contents)) {
        return xmlPastLimits(contents);
    }
    return readLines(contents).size() > kMaxWords ? std::optional(tooManyWords()) : std::nullopt;
}

std::optional<std::vector<std::string>> readWordListPlist(std::string_view contents) {
    if (contents.empty() || wordListPastLimits(contents)) {
        return std::nullopt;
    }
    plist_t parsed = nullptr;
    plist_from_memory(contents.data(), static_cast<std::uint32_t>(contents.size()), &parsed);
    const PlistPtr root(parsed);
    if (!root || plist_get_node_type(root.get()) != PLIST_ARRAY) {
        return std::nullopt;
    }
    std::vector<std::string> words;
    const std::uint32_t count = plist_array_get_size(root.get());
    words.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        plist_t item = plist_array_get_item(root.get(), i);
        if (item == nullptr || plist_get_node_type(item) != PLIST_STRING) {
            continue;
        }
        // Read in place up to its first NUL byte: the library's own copying routine aborts the process on a
        // string holding one (a damaged or hand-made list can), and what it keeps after it is not the file's.
        std::uint64_t length = 0;
        const char* text = plist_get_string_ptr(item, &length);
        if (text != nullptr) {
            words.emplace_back(text, ::strnlen(text, static_cast<std::size_t>(length)));
        }
    }
    return words;
}

std::optional<std::vector<std::string>> readWordsText(std::string_view contents) {
    if (looksLikePlist(contents)) {
        return readWordListPlist(withoutByteOrderMark(contents));
    }
    if (contents.size() > kMaxWordListBytes) {
        return std::nullopt;
    }
    std::vector<std::string> words = readLines(contents);
    if (words.size() > kMaxWords) {
        return std::nullopt;
    }
    return words;
}

std::string whyWordsRefused(std::string_view contents) {
    return wordListPastLimits(contents).value_or("the word list is not a property list whose root is an array");
}

AdultWords makeAdultWords(std::vector<std::string> words) {
    return std::make_shared<const AdultWordList>(std::move(words));
}

AdultWords loadAdultWords() {
    std::vector<std::string> words;
    if (const std::optional<std::string> path = locateResource(kAdultWordFile)) {
        if (const std::optional<std::string> contents = readWholeFile(*path, kMaxWordListBytes)) {
            words = readWordListPlist(*contents).value_or(std::vector<std::string>{});
        }
    }
    return makeAdultWords(std::move(words));
}

} // namespace tidewell
