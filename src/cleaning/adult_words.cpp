#include "cleaning/adult_words.hpp"

#include <plist/plist.h>

#include <cstring>
#include <limits>

#include "catalogue/folders.hpp"
#include "platform/resources.hpp"

namespace tidewell {

namespace {

// libplist hands out nodes that must be freed; this owns one.
struct PlistDeleter {
    void operator()(plist_t node) const { plist_free(node); }
};
using PlistPtr = std::unique_ptr<void, PlistDeleter>;

bool looksLikePlist(std::string_view contents) {
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

std::vector<std::string> readLines(std::string_view contents) {
    std::vector<std::string> words;
    std::size_t start = 0;
    while (start < contents.size()) {
        std::size_t end = contents.find('\n', start);
        if (end == std::string_view::npos) {
            end = contents.size();
        }
        std::string_view line = contents.substr(start, end - start);
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        if (!line.empty()) {
            words.emplace_back(line);
        }
        start = end + 1;
    }
    return words;
}

} // namespace

std::optional<std::vector<std::string>> readWordListPlist(std::string_view contents) {
    if (contents.empty() || contents.size() > std::numeric_limits<std::uint32_t>::max()) {
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
        return readWordListPlist(contents);
    }
    return readLines(contents);
}

std::optional<std::vector<std::string>> readWordsFile(const std::string& path) {
    const std::optional<std::string> contents = readWholeFile(path);
    if (!contents) {
        return std::nullopt;
    }
    return readWordsText(*contents);
}

AdultWords makeAdultWords(std::vector<std::string> words) {
    return std::make_shared<const std::vector<std::string>>(std::move(words));
}

AdultWords loadAdultWords() {
    std::vector<std::string> words;
    if (const std::optional<std::string> path = locateResource(kAdultWordFile)) {
        if (const std::optional<std::string> contents = readWholeFile(*path)) {
            words = readWordListPlist(*contents).value_or(std::vector<std::string>{});
        }
    }
    return makeAdultWords(std::move(words));
}

} // namespace tidewell
