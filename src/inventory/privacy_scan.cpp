#include "inventory/privacy_scan.hpp"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <vector>

#include "catalogue/folders.hpp"
#include "catalogue/json_reading.hpp"
#include "sources/browser_profiles.hpp"
#include "sources/tables.hpp"

namespace tidewell {

namespace {

constexpr std::string_view kMessagePrefix = "__MSG_";

bool holdsNul(std::string_view path) {
    return path.find('\0') != std::string_view::npos;
}

// Every occurrence of `what`, taken left to right without overlapping and without looking again at what the
// removal joins together ("___" less "__" is "_").
std::string removingOccurrences(std::string_view text, std::string_view what) {
    std::string out;
    out.reserve(text.size());
    while (true) {
        const std::size_t at = text.find(what);
        if (at == std::string_view::npos) {
            out.append(text);
            return out;
        }
        out.append(text.substr(0, at));
        text.remove_prefix(at + what.size());
    }
}

// The message key a "__MSG_" name stands for. Chrome writes message names in ASCII and matches them without
// regard to case; Tidewell looks them up as written, except that a key which still holds "_" is lower-cased
// whole ("__MSG_App_Name__" looks up "app_name", "__MSG_appName__" looks up "appName").
std::string messageKeyFor(std::string_view placeholder) {
    std::string key = removingOccurrences(removingOccurrences(placeholder, "__"), "MSG_");
    if (key.find('_') != std::string::npos) {
        std::ranges::transform(key, key.begin(),
                               [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    }
    return key;
}

// The locale folder whose messages name the extension: "en", else "en_US", else "en_GB", else whatever the
// listing gives first (even a stray file); nothing when the locales folder lists empty.
std::optional<FileUrl> chooseLocaleFolder(const FileUrl& locales) {
    for (const std::string_view preferred : {"en", "en_US", "en_GB"}) {
        const FileUrl candidate = locales.appending(preferred);
        if (fileExistsAt(candidate.path)) {
            return candidate;
        }
    }
    UrlList listing = PrivacyScan::getUrlListAt(locales);
    if (listing.empty()) {
        return std::nullopt;
    }
    return std::move(listing.front());
}

// The display name of a version folder whose manifest names a "__MSG_" placeholder. Nothing when the folder has
// no "_locales" at all: such a version gets no record. Every other failure (no locale folder, no readable
// messages, no such message) keeps the placeholder itself as the name.
std::optional<std::string> resolvePlaceholder(const FileUrl& version, const std::string& placeholder) {
    const FileUrl locales = version.appending("_locales");
    if (!fileExistsAt(locales.path)) {
        return std::nullopt;
    }
    const std::optional<FileUrl> locale = chooseLocaleFolder(locales);
    if (!locale) {
        return placeholder;
    }
    const std::optional<nlohmann::ordered_json> messages = readJsonObject(locale->appending("messages.json").path);
    if (!messages) {
        return placeholder;
    }
    const nlohmann::ordered_json* message = valueAtKeyPath(*messages, messageKeyFor(placeholder) + ".message");
    if (message == nullptr) {
        return placeholder;
    }
    // A message that is there but is not text names the extension with nothing, as any wrongly typed field does.
    return message->is_string() ? message->get<std::string>() : std::string();
}

// The allocated size below an add-on's recorded location. Only an absolute path names a place on this disk; a
// relative one would depend on the folder Tidewell happens to run in, so it measures nothing.
std::int64_t measureRecordedLocation(const std::string& location, SizeCounter& sizes) {
    if (location.empty() || location.front() != '/' || holdsNul(location)) {
        return 0;
    }
    return sizes.measureFolder(location).bytes;
}

// "descriptor" wins over "path" when it holds text; a location of another kind does not hide a usable "path".
std::string recordedLocation(const nlohmann::ordered_json& addon) {
    for (const std::string_view key : {"descriptor", "path"}) {
        if (const nlohmann::ordered_json* value = valueAtKeyPath(addon, key); value != nullptr && value->is_string()) {
            return value->get<std::string>();
        }
    }
    return {};
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

bool fileExistsAt(std::string_view path) {
    if (path.empty() || path.front() != '/' || holdsNul(path)) {
        return false;
    }
    struct stat st {};
    return ::stat(std::string(path).c_str(), &st) == 0;
}

UrlList PrivacyScan::getUrlListAt(const FileUrl& folder) {
    UrlList urls;
    // A path cut short at a NUL byte would name another folder.
    if (holdsNul(folder.path)) {
        return urls;
    }
    // The listing itself ends at the first read error and keeps the names read before it.
    for (const std::string& name : listFolderNames(folder.path)) {
        urls.push_back(folder.appending(name));
    }
    return urls;
}

std::optional<RecordList> PrivacyScan::getChromeExtantionList(const DiskRoot& disk, SizeCounter& sizes) {
    const std::optional<std::vector<ChromeProfile>> profiles = readChromeProfiles(disk);
    if (!profiles) {
        return std::nullopt;
    }
    RecordList records;
    const FileUrl chromeFolder = disk.inHome(tables::kChromeFolder);
    for (const ChromeProfile& profile : *profiles) {
        for (const FileUrl& identifier : getUrlListAt(chromeFolder.appending(profile.folder).appending("Extensions"))) {
            // Every version of an extension reports the size of the whole identifier folder: measured once.
            std::optional<std::int64_t> identifierBytes;
            for (const FileUrl& version : getUrlListAt(identifier)) {
                if (getUrlListAt(version).empty()) {
                    continue;
                }
                const std::optional<nlohmann::ordered_json> manifest =
                    readJsonObject(version.appending("manifest.json").path);
                if (!manifest) {
                    continue;
                }
                std::string name = textAtKeyPath(*manifest, "name");
                if (name.starts_with(kMessagePrefix)) {
                    std::optional<std::string> resolved = resolvePlaceholder(version, name);
                    if (!resolved) {
                        continue;
                    }
                    name = std::move(*resolved);
                }
                if (!identifierBytes) {
                    identifierBytes = sizes.measureFolder(identifier.path).bytes;
                }
                records.push_back(makeRecord({{"urlExt", identifier},
                                              {"verExt", textAtKeyPath(*manifest, "version")},
                                              {"nameExt", std::move(name)},
                                              {"sizeExt", *identifierBytes},
                                              {"PersonExt", profile.name}}));
            }
        }
    }
    return records;
}

RecordList PrivacyScan::getFirefoxExtantionList(const DiskRoot& disk, SizeCounter& sizes) {
    RecordList records;
    for (const FileUrl& profile : getUrlListAt(disk.inHome(tables::kFirefoxProfiles))) {
        const std::optional<nlohmann::ordered_json> database =
            readJsonObject(profile.appending("extensions.json").path);
        if (!database) {
            continue;
        }
        const nlohmann::ordered_json* addons = valueAtKeyPath(*database, "addons");
        if (addons == nullptr || !addons->is_array()) {
            continue;
        }
        for (const nlohmann::ordered_json& addon : *addons) {
            if (!addon.is_object()) {
                continue;
            }
            std::string name = textAtKeyPath(addon, "defaultLocale.name");
            // Firefox's own built-in entries carry this exact name; an add-on without a name is still listed.
            if (name == "Default") {
                continue;
            }
            std::string location = recordedLocation(addon);
            const std::int64_t bytes = measureRecordedLocation(location, sizes);
            records.push_back(makeRecord({{"urlExt", std::move(location)},
                                          {"verExt", textAtKeyPath(addon, "version")},
                                          {"nameExt", std::move(name)},
                                          {"sizeExt", bytes},
                                          {"PersonExt", std::string("Default")}}));
        }
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
