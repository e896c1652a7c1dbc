#include <unistd.h>

#include <algorithm>
#include <cctype>

#include "base/folders.hpp"
#include "catalogue/items.hpp"
#include "sources/builders.hpp"
#include "sources/section_recipe.hpp"

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

// Every entry inside each application container's folder at `inside` ("/Data/Library/Caches"), as one flat list.
UrlList containerEntries(const DiskRoot& disk, std::string_view inside) {
    const FileUrl containers = disk.inHome(tables::kContainers);
    const std::string base = urlTextAsPath(containers);
    UrlList entries;
    for (const std::string& container : listFolderNames(containers.path)) {
        if (container == ".DS_Store") {
            continue;
        }
        const std::string folder = base + "/" + container + std::string(inside);
        for (const std::string& name : listFolderNames(folder)) {
            entries.push_back(FileUrl{folder + "/" + name});
        }
    }
    return entries;
}

UrlList quarantineRecords(const DiskRoot& disk) {
    const FileUrl preferences = disk.inHome(tables::kPreferences);
    UrlList records;
    for (const std::string& name : listFolderNames(preferences.path)) {
        if (containsIgnoringCase(name, tables::kQuarantineMarker)) {
            records.push_back(preferences.appending(name));
        }
    }
    return records;
}

UrlList trashEntries(const DiskRoot& disk) {
    const std::string trash = urlTextAsPath(disk.inHome(tables::kTrash));
    UrlList entries;
    for (const std::string& name : listFolderNames(trash)) {
        entries.push_back(FileUrl{trash + "/" + name});
    }
    return entries;
}

} // namespace

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

BuilderOutcome addSystemDetails(ScanEnv& env) {
    RecordList items;
    items.push_back(getDicForList({env.disk.inHome(tables::kSystemCaches)}, "System Cache Files", false));
    items.push_back(
        getDicForList(containerEntries(env.disk, tables::kContainerCaches), "Applications Cache Files", false));
    items.push_back(getDicForList({env.disk.inHome(tables::kSystemLogs)}, "System Log Files", false));
    items.push_back(getDicForList(containerEntries(env.disk, tables::kContainerLogs), "Applications Log Files", false));
    items.push_back(getDicForList(quarantineRecords(env.disk), "System Downloads Log", false));
    items.push_back(getDicForList(trashEntries(env.disk), "Trash Files", false));
    return measuredSection(env, "System", std::move(items), env.disk.resolve(tables::kFinderApp));
}

BuilderOutcome addMailAppDetails(ScanEnv& env) {
    return tableSection(env, tables::kMail);
}

BuilderOutcome addAdobeFlashDetails(ScanEnv& env) {
    return tableSection(env, tables::kFlash);
}

BuilderOutcome addThornsweepSection(ScanEnv& /*env*/) {
    return {makeRecord({{"Type", std::string("Scan")}}), 0, true};
}

} // namespace tidewell
