#include "inventory/privacy_scan.hpp"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <vector>

#include "base/folders.hpp"
#include "inventory/extension_metadata.hpp"
#include "layout/browser_profiles.hpp"
#include "layout/tables.hpp"

namespace tidewell {

namespace {

bool holdsNul(std::string_view path) {
    return path.find('\0') != std::string_view::npos;
}

UrlList systemThenUser(const DiskRoot& disk, std::string_view systemFolder, std::string_view homeRelative) {
    UrlList urls = PrivacyScan::getUrlListAt(FileUrl{disk.resolve(systemFolder)});
    UrlList user = PrivacyScan::getUrlListAt(disk.inHome(homeRelative));
    urls.insert(urls.end(), std::make_move_iterator(user.begin()), std::make_move_iterator(user.end()));
    return urls;
}

std::vector<std::string> visibleNames(const std::string& path) {
    std::vector<std::string> names = listFolderNames(path);
    std::erase_if(names, [](const std::string& name) { return name.starts_with('.'); });
    return names;
}

bool isFolderItself(const std::string& path) {
    struct stat st {};
    return ::lstat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

} // namespace

std::string_view pathExtension(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0) {
        return {};
    }
    return name.substr(dot + 1);
}

std::string_view nameWithoutExtension(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0) {
        return name;
    }
    return name.substr(0, dot);
}

bool isPackageName(std::string_view name) {
    // This platform has no package flag on folders. These are the folder kinds the reference platform shows as
    // single files; an application's bundle is one of them, and so it is never searched inside.
    static constexpr std::array<std::string_view, 20> kBundleExtensions{
        "app",      "bundle",        "framework", "plugin",     "kext",   "appex",   "xpc",
        "prefpane", "qlgenerator",   "saver",     "mdimporter", "wdgt",   "pkg",     "mpkg",
        "rtfd",     "photoslibrary", "component", "service",    "action", "workflow"};
    const std::string_view extension = pathExtension(name);
    if (extension.empty()) {
        return false;
    }
    std::string lowered(extension);
    std::ranges::transform(lowered, lowered.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return std::ranges::find(kBundleExtensions, lowered) != kBundleExtensions.end();
}

UrlList PrivacyScan::getUrlListAt(const FileUrl& folder) {
    // The listing itself ends at the first read error and keeps the names read before it.
    return listFolderUrls(folder);
}

std::optional<RecordList> PrivacyScan::getChromeExtantionList(const DiskRoot& disk, SizeCounter& sizes) {
    const std::optional<std::vector<ChromeProfile>> profiles = readChromeProfiles(disk);
    if (!profiles) {
        return std::nullopt;
    }
    RecordList records;
    const FileUrl chromeFolder = disk.inHome(tables::kChromeFolder);
    for (const ChromeProfile& profile : *profiles) {
        const FileUrl extensions = chromeFolder.appending(profile.folder).appending("Extensions");
        for (FileUrl identifier : getUrlListAt(extensions)) {
            identifier.within = extensions.path;
            // Every version of an extension reports the size of the whole identifier folder: measured once.
            std::optional<std::int64_t> identifierBytes;
            for (const FileUrl& version : getUrlListAt(identifier)) {
                std::optional<ChromeManifest> manifest = readChromeVersionFolder(version);
                if (!manifest) {
                    continue;
                }
                if (!identifierBytes) {
                    identifierBytes = sizes.measureFolder(identifier.path).bytes;
                }
                records.push_back(makeRecord({{"urlExt", identifier},
                                              {"verExt", std::move(manifest->version)},
                                              {"nameExt", std::move(manifest->name)},
                                              {"sizeExt", *identifierBytes},
                                              {"PersonExt", profile.name}}));
            }
        }
    }
    return records;
}

std::vector<std::pair<RecordPtr, FileUrl>> PrivacyScan::getFirefoxExtensions(const DiskRoot& disk, SizeCounter& sizes) {
    std::vector<std::pair<RecordPtr, FileUrl>> extensions;
    for (const FileUrl& profile : getUrlListAt(disk.inHome(tables::kFirefoxProfiles))) {
        const std::optional<std::string> database = readWholeFile(profile.appending("extensions.json").path);
        if (!database) {
            continue;
        }
        for (FirefoxAddOn& addOn : firefoxAddOnsFromJson(*database)) {
            FileUrl location{addOn.location, profile.appending("extensions").path};
            const std::int64_t bytes = sizes.measureFolder(addOn.location).bytes;
            extensions.emplace_back(makeRecord({{"urlExt", std::move(addOn.location)},
                                                {"verExt", std::move(addOn.version)},
                                                {"nameExt", std::move(addOn.name)},
                                                {"sizeExt", bytes},
                                                {"PersonExt", std::string("Default")}}),
                                    std::move(location));
        }
    }
    return extensions;
}

RecordList PrivacyScan::getFirefoxExtantionList(const DiskRoot& disk, SizeCounter& sizes) {
    RecordList records;
    for (auto& [record, location] : getFirefoxExtensions(disk, sizes)) {
        records.push_back(std::move(record));
    }
    return records;
}

UrlList PrivacyScan::getSafariExtantionList(const DiskRoot& disk) {
    return getUrlListAt(disk.inHome("Library/Safari/Extensions"));
}

UrlList PrivacyScan::getLaunchAgentsList(const DiskRoot& disk) {
    return systemThenUser(disk, "/Library/LaunchAgents", "Library/LaunchAgents");
}

UrlList PrivacyScan::getLaunchDaemonsList(const DiskRoot& disk) {
    return systemThenUser(disk, "/Library/LaunchDaemons", "Library/LaunchDaemons");
}

UrlList PrivacyScan::getApplicationSupportList(const DiskRoot& disk) {
    return systemThenUser(disk, "/Library/Application Support", "Library/Application Support");
}

UrlList PrivacyScan::getAppList(const DiskRoot& disk) {
    UrlList apps = getApplicationList(FileUrl{disk.resolve("/Applications")});
    UrlList home = getApplicationList(disk.homeUrl());
    apps.insert(apps.end(), std::make_move_iterator(home.begin()), std::make_move_iterator(home.end()));
    return apps;
}

UrlList PrivacyScan::getApplicationList(const FileUrl& folder) {
    UrlList found;
    if (holdsNul(folder.path)) {
        return found;
    }
    // Depth first with a stack of open levels instead of recursion: a home folder may nest deeper than the
    // thread's stack would allow.
    struct Level {
        std::string path;
        std::vector<std::string> names;
        std::size_t next = 0;
    };
    std::vector<Level> levels;
    levels.push_back({folder.path, visibleNames(folder.path)});
    while (!levels.empty()) {
        Level& level = levels.back();
        if (level.next == level.names.size()) {
            levels.pop_back();
            continue;
        }
        const std::string& name = level.names[level.next++];
        std::string path = joinPath(level.path, name);
        if (!isFolderItself(path)) {
            continue;
        }
        if (isPackageName(name)) {
            // The comparison is exact: "Tool.APP" is a package, so it is neither taken nor searched.
            if (pathExtension(name) == "app") {
                found.push_back(FileUrl{std::move(path)});
            }
            continue;
        }
        std::vector<std::string> names = visibleNames(path);
        levels.push_back({std::move(path), std::move(names)});
    }
    return found;
}

} // namespace tidewell
