#include "layout/profiles_ini.hpp"

#include <algorithm>
#include <charconv>
#include <map>
#include <optional>

namespace tidewell {

namespace {

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlank = " \t\r";
    const std::size_t first = text.find_first_not_of(kBlank);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

// The N of a "[ProfileN]" header, or nothing for any other section.
std::optional<unsigned> profileNumber(std::string_view header) {
    constexpr std::string_view kPrefix = "Profile";
    if (!header.starts_with(kPrefix) || header.size() == kPrefix.size()) {
        return std::nullopt;
    }
    const std::string_view digits = header.substr(kPrefix.size());
    unsigned number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error != std::errc{} || end != digits.data() + digits.size()) {
        return std::nullopt;
    }
    return number;
}

// A path may not climb out of the folder it is taken in, nor name it: no "." or ".." component.
bool isUsablePath(std::string_view path, bool relative) {
    if (path.empty() || path.find('\0') != std::string_view::npos || relative == path.starts_with('/')) {
        return false;
    }
    std::size_t start = 0;
    while (start <= path.size()) {
        const std::size_t slash = std::min(path.find('/', start), path.size());
        const std::string_view component = path.substr(start, slash - start);
        if (component == "." || component == "..") {
            return false;
        }
        start = slash + 1;
    }
    return true;
}

} // namespace

std::vector<IniProfile> profilesFromIni(std::string_view contents) {
    std::map<unsigned, std::map<std::string, std::string, std::less<>>> sections;
    std::map<std::string, std::string, std::less<>>* current = nullptr;
    while (!contents.empty()) {
        const std::size_t end = std::min(contents.find('\n'), contents.size());
        const std::string_view line = trimmed(contents.substr(0, end));
        contents.remove_prefix(std::min(end + 1, contents.size()));
        if (line.empty() || line.front() == ';' || line.front() == '#') {
            continue;
        }
        if (line.front() == '[' && line.back() == ']') {
            const std::optional<unsigned> number = profileNumber(line.substr(1, line.size() - 2));
            current = number ? &sections[*number] : nullptr;
            continue;
        }
        const std::size_t equals = line.find('=');
        if (current != nullptr && equals != std::string_view::npos) {
            (*current)[std::string(trimmed(line.substr(0, equals)))] = std::string(trimmed(line.substr(equals + 1)));
        }
    }
    std::vector<IniProfile> profiles;
    for (auto& [number, keys] : sections) {
        const auto path = keys.find("Path");
        const auto relative = keys.find("IsRelative");
        const bool isRelative = relative == keys.end() || relative->second != "0";
        if (path == keys.end() || !isUsablePath(path->second, isRelative)) {
            continue;
        }
        const auto name = keys.find("Name");
        profiles.push_back({path->second, name != keys.end() ? name->second : std::string(), isRelative});
    }
    return profiles;
}

} // namespace tidewell
