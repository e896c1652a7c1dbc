#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <string>

namespace tidewell::testing {

/// The allocated bytes of everything below a path, links not followed, folders adding nothing of their own: an
/// oracle written apart from the scan's own walker.
inline std::int64_t allocatedBelow(const std::filesystem::path& path) {
    struct stat st {};
    if (::lstat(path.c_str(), &st) != 0) {
        return 0;
    }
    if (!S_ISDIR(st.st_mode)) {
        return static_cast<std::int64_t>(st.st_blocks) * 512;
    }
    std::int64_t bytes = 0;
    for (const std::filesystem::directory_entry& entry : std::filesystem::directory_iterator(path)) {
        bytes += allocatedBelow(entry.path());
    }
    return bytes;
}

/// The path a file URL of the catalogue names, decoded here on its own.
inline std::string pathOfUrl(const std::string& url) {
    std::string path;
    for (std::size_t i = std::string("file://").size(); i < url.size(); ++i) {
        if (url[i] == '%' && i + 2 < url.size()) {
            path.push_back(static_cast<char>(std::stoi(url.substr(i + 1, 2), nullptr, 16)));
            i += 2;
        } else {
            path.push_back(url[i]);
        }
    }
    return path;
}

} // namespace tidewell::testing
