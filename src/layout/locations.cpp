#include "layout/locations.hpp"

#include <algorithm>
#include <cctype>

#include "base/folders.hpp"

namespace tidewell {

namespace {

bool containsIgnoringCase(std::string_view text, std::string_view needle) {
    const auto lower = [](unsigned char c) { return std::tolower(c); };
    return !std::ranges::search(text, needle, {}, lower, lower).empty();
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

// The entries themselves are the locations, never the folder that holds them: a clean empties the folder and
// keeps it (the trash, an application's caches).
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
        appendEntries(list, at.path);
        return;
    case Expansion::EntriesInEach:
        for (const std::string& entry : listFolderNames(at.path)) {
            if (entry != ".DS_Store") {
                appendEntries(list, joinPath(joinPath(at.path, entry), location.inner));
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


} // namespace tidewell
