#include "base/file_url.hpp"

namespace tidewell {

namespace {

// Unreserved characters, sub-delimiters, ':', '@' and '/' stand for themselves in a URL path.
bool isPathCharacter(unsigned char c) {
    constexpr std::string_view kPunctuation = "-._~!$&'()*+,;=:@/";
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           kPunctuation.find(static_cast<char>(c)) != std::string_view::npos;
}

} // namespace

std::string percentEncodePath(std::string_view path) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(path.size());
    for (const char ch : path) {
        const auto c = static_cast<unsigned char>(ch);
        if (isPathCharacter(c)) {
            out.push_back(ch);
        } else {
            out.push_back('%');
            out.push_back(kHex[c >> 4U]);
            out.push_back(kHex[c & 0xFU]);
        }
    }
    return out;
}

std::string joinPath(std::string_view base, std::string_view component) {
    std::string out(base);
    while (!out.empty() && out.back() == '/') {
        out.pop_back();
    }
    while (!component.empty() && component.front() == '/') {
        component.remove_prefix(1);
    }
    out.push_back('/');
    out.append(component);
    return out;
}

std::string FileUrl::text() const {
    return "file://" + percentEncodePath(path);
}

std::string FileUrl::lastPathComponent() const {
    std::string_view p = path;
    while (p.size() > 1 && p.back() == '/') {
        p.remove_suffix(1);
    }
    if (p == "/") {
        return {};
    }
    const auto slash = p.rfind('/');
    return std::string(slash == std::string_view::npos ? p : p.substr(slash + 1));
}

bool isSingleComponent(std::string_view name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string_view::npos &&
           name.find('\0') == std::string_view::npos;
}

std::optional<std::vector<std::string>> strictComponents(std::string_view path) {
    if (path.size() < 2 || path.front() != '/') {
        return std::nullopt;
    }
    std::vector<std::string> components;
    path.remove_prefix(1);
    while (true) {
        const std::size_t slash = path.find('/');
        const std::string_view component = path.substr(0, slash);
        if (!isSingleComponent(component)) {
            return std::nullopt;
        }
        components.emplace_back(component);
        if (slash == std::string_view::npos) {
            return components;
        }
        path.remove_prefix(slash + 1);
    }
}

FileUrl FileUrl::appending(std::string_view component) const {
    return FileUrl{joinPath(path, component)};
}

} // namespace tidewell
