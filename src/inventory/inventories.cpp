#include "inventory/inventories.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <vector>

#include "base/folder_walk.hpp"
#include "base/folders.hpp"
#include "catalogue/items.hpp"
#include "catalogue/record_keys.hpp"
#include "inventory/extension_metadata.hpp"
#include "layout/locations.hpp"

namespace tidewell {

namespace {

bool holdsNul(std::string_view path) {
    return path.find('\0') != std::string_view::npos;
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
    // A folder carries no package flag here. These are the folder kinds a macOS disk shows as single files; an
    // application's bundle is one of them, and so it is never searched inside.
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

UrlList folderEntries(const FileUrl& folder) {
    // The listing itself ends at the first read error and keeps the names read before it.
    return listFolderUrls(folder);
}

std::optional<RecordList> chromeExtensions(const DiskRoot& disk, const Browser& browser, SizeCounter& sizes) {
    const std::optional<std::vector<BrowserProfile>> profiles = profilesOf(disk, browser);
    if (!profiles) {
        return std::nullopt;
    }
    RecordList records;
    AnchorFolders anchors = anchorsOf(disk, browser);
    for (const BrowserProfile& profile : *profiles) {
        anchors.profile = &profile;
        const FileUrl extensions = locationOf(browser.extensions, anchors);
        for (FileUrl identifier : folderEntries(extensions)) {
            identifier.within = extensions.path;
            // Every version of an extension reports the size of the whole identifier folder: measured once.
            std::optional<std::int64_t> identifierBytes;
            for (const FileUrl& version : folderEntries(identifier)) {
                std::optional<ChromeManifest> manifest = readChromeVersionFolder(version);
                if (!manifest) {
                    continue;
                }
                if (!identifierBytes) {
                    identifierBytes = sizes.measureFolder(identifier.path).bytes;
                }
                records.push_back(makeRecord({{keys::kExtensionLocation, identifier},
                                              {keys::kExtensionVersion, std::move(manifest->version)},
                                              {keys::kExtensionName, std::move(manifest->name)},
                                              {keys::kExtensionSize, *identifierBytes},
                                              {keys::kExtensionProfile, profile.name}}));
            }
        }
    }
    return records;
}

std::vector<FirefoxExtension> firefoxExtensions(const DiskRoot& disk, const Browser& browser, SizeCounter& sizes) {
    std::vector<FirefoxExtension> extensions;
    AnchorFolders anchors = anchorsOf(disk, browser);
    // Every profile's add-ons are listed, not only those of the profile the Firefox section cleans.
    for (const FileUrl& folder : folderEntries(anchors.data.appending(browser.profilesFolder))) {
        const std::optional<std::string> database = readWholeFile(folder.appending("extensions.json").path);
        if (!database) {
            continue;
        }
        const BrowserProfile profile{folder, {}};
        anchors.profile = &profile;
        const std::string within = locationOf(browser.extensions, anchors).path;
        for (FirefoxAddOn& addOn : firefoxAddOnsFromJson(*database)) {
            // A location recorded in the home as the running system named it is taken where it lies on this disk,
            // when no link stands on the way to it there; the record keeps the path as Firefox wrote it.
            FileUrl location{addOn.location, within};
            const std::optional<std::string> onDisk = disk.recordedInHome(addOn.location);
            if (onDisk && !behindALink(disk.homePath(), *onDisk)) {
                location.path = *onDisk;
            }
            const std::int64_t bytes = sizes.measureFolder(location.path).bytes;
            extensions.push_back({makeRecord({{keys::kExtensionLocation, std::move(addOn.location)},
                                              {keys::kExtensionVersion, std::move(addOn.version)},
                                              {keys::kExtensionName, std::move(addOn.name)},
                                              {keys::kExtensionSize, bytes},
                                              {keys::kExtensionProfile, std::string("Default")}}),
                                  std::move(location)});
        }
    }
    return extensions;
}

UrlList safariExtensions(const DiskRoot& disk, const Browser& browser) {
    return folderEntries(locationOf(browser.extensions, anchorsOf(disk, browser)));
}

UrlList inventoryListing(const DiskRoot& disk, const InventoryListing& listing) {
    const AnchorFolders anchors{disk, disk.homeUrl(), disk.homeUrl(), disk.homeUrl()};
    UrlList urls;
    for (const Location& folder : listing.folders) {
        UrlList found = listing.applicationSearch ? applicationsBelow(locationOf(folder, anchors))
                                                  : folderEntries(locationOf(folder, anchors));
        if (!listing.nameEndings.empty()) {
            std::erase_if(found, [&](const FileUrl& entry) {
                const std::string name = entry.lastPathComponent();
                return std::ranges::none_of(listing.nameEndings,
                                            [&](std::string_view ending) { return name.ends_with(ending); });
            });
        }
        urls.insert(urls.end(), std::make_move_iterator(found.begin()), std::make_move_iterator(found.end()));
    }
    return urls;
}

UrlList applicationsBelow(const FileUrl& folder) {
    UrlList found;
    if (holdsNul(folder.path)) {
        return found;
    }
    // The folder searched may itself be reached through links (as /Applications may be); nothing below it is.
    UniqueFd top(::open(folder.path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    struct stat st {};
    FolderWalk walk(FolderWalk::Reread::OnFromWhereLeft);
    if (!top.valid() || ::fstat(top.get(), &st) != 0 || !walk.enter(std::move(top), st)) {
        return found;
    }
    std::vector<std::string> paths{folder.path}; // beside the walk's open folders, one for one
    while (walk.depth() > 0) {
        const FolderWalk::Event event = walk.next();
        if (event.step == FolderWalk::Step::Failed) {
            break;
        }
        if (event.step == FolderWalk::Step::Left) {
            paths.pop_back();
            continue;
        }
        const std::string_view name = event.name;
        if (name.starts_with('.') || ::fstatat(event.folderFd, event.name, &st, AT_SYMLINK_NOFOLLOW) != 0 ||
            !S_ISDIR(st.st_mode)) {
            continue;
        }
        std::string path = joinPath(paths.back(), name);
        if (isPackageName(name)) {
            // The comparison is exact: "Tool.APP" is a package, so it is neither taken nor searched.
            if (pathExtension(name) == "app") {
                found.push_back(FileUrl{std::move(path)});
            }
            continue;
        }
        int error = 0;
        UniqueFd child = openFolderLookedAt(event.folderFd, event.name, st, error);
        if (child.valid() && walk.enter(std::move(child), st)) {
            paths.push_back(std::move(path));
        }
    }
    return found;
}

} // namespace tidewell
