#include "layout/locations.hpp"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>

#include "base/folders.hpp"

namespace tidewell {

namespace {

bool containsIgnoringCase(std::string_view text, std::string_view needle) {
    const auto lower = [](unsigned char c) { return std::tolower(c); };
    return !std::ranges::search(text, needle, {}, lower, lower).empty();
}

std::string currentFolder() {
    std::string buffer(4096, '\0');
    while (::getcwd(buffer.data(), buffer.size()) == nullptr) {
        if (errno != ERANGE) {
            return "/";
        }
        buffer.resize(buffer.size() * 2);
    }
    buffer.resize(std::char_traits<char>::length(buffer.c_str()));
    return buffer;
}

FileUrl anchorFolder(Anchor anchor, const AnchorFolders& anchors) {
    switch (anchor) {
    case Anchor::Root:
        return FileUrl{anchors.disk.resolve("/")};
    case Anchor::Home:
        return anchors.disk.homeUrl();
    case Anchor::DataFolder:
        return anchors.data;
    case Anchor::CacheFolder:
        return anchors.cache;
    case Anchor::Profile:
        return anchors.profile != nullptr ? anchors.profile->folder : anchors.data;
    case Anchor::ProfileCache:
        return anchors.profile != nullptr
                   ? anchors.profileCaches.appending(anchors.profile->folder.lastPathComponent())
                   : anchors.cache;
    }
    return anchors.disk.homeUrl();
}

// The folder a list of entries is read from: the folder, or its URL text taken for a path.
std::string listedFolder(const FileUrl& folder, const Location& location) {
    return location.listedThroughUrlText ? urlTextAsPath(folder) : folder.path;
}

void appendEntries(UrlList& list, const std::string& folder) {
    for (const std::string& name : listFolderNames(folder)) {
        list.push_back(FileUrl{joinPath(folder, name)});
    }
}

} // namespace

AnchorFolders anchorsOf(const DiskRoot& disk, const SourceTable& table) {
    if (table.browser != nullptr) {
        return anchorsOf(disk, *table.browser);
    }
    const FileUrl folder = table.folder.empty() ? disk.homeUrl() : disk.inHome(table.folder);
    return AnchorFolders{disk, folder, folder, folder};
}

AnchorFolders anchorsOf(const DiskRoot& disk, const Browser& browser) {
    const FileUrl cache = disk.inHome(browser.cacheFolder);
    return AnchorFolders{disk, dataFolderOf(disk, browser), cache,
                         browser.profileCaches.empty() ? cache : disk.inHome(browser.profileCaches)};
}

FileUrl locationOf(const Location& location, const AnchorFolders& anchors) {
    if (location.anchor == Anchor::Root) {
        return FileUrl{anchors.disk.resolve(location.path)};
    }
    FileUrl folder = anchorFolder(location.anchor, anchors);
    return location.path.empty() ? folder : folder.appending(location.path);
}

void appendExpanded(UrlList& list, const Location& location, const AnchorFolders& anchors) {
    const FileUrl at = locationOf(location, anchors);
    switch (location.expansion) {
    case Expansion::Itself:
        list.push_back(at);
        return;
    case Expansion::Entries:
        appendEntries(list, listedFolder(at, location));
        return;
    case Expansion::EntriesInEach:
        for (const std::string& entry : listFolderNames(at.path)) {
            if (entry != ".DS_Store") {
                appendEntries(list, joinPath(joinPath(listedFolder(at, location), entry), location.inner));
            }
        }
        return;
    case Expansion::EntriesNamedLike:
        for (const std::string& name : listFolderNames(at.path)) {
            if (containsIgnoringCase(name, location.inner)) {
                list.push_back(at.appending(name));
            }
        }
        return;
    case Expansion::EntriesEndingIn:
        for (const std::string& name : listFolderNames(at.path)) {
            if (name.ends_with(location.inner)) {
                list.push_back(at.appending(name));
            }
        }
        return;
    }
}

std::string urlTextAsPath(const FileUrl& folder) {
    // A folder's URL text ends with a slash; read as a path it is relative, so it is taken from the current
    // folder, and the path form drops repeated and trailing slashes.
    const std::string joined = currentFolder() + "/" + folder.text() + "/";
    std::string path;
    for (const char c : joined) {
        if (c != '/' || path.empty() || path.back() != '/') {
            path.push_back(c);
        }
    }
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    return path;
}

} // namespace tidewell
