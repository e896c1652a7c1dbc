#include "layout/profiles.hpp"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "base/folders.hpp"
#include "layout/chrome_local_state.hpp"
#include "layout/profiles_ini.hpp"

namespace tidewell {

bool isInstalled(const DiskRoot& disk, const Browser& browser) {
    if (browser.application.empty()) {
        return std::ranges::any_of(browser.dataFolders,
                                   [&](std::string_view folder) { return fileExistsAt(disk.inHome(folder).path); });
    }
    return disk.exists(browser.application);
}

std::string applicationImage(const DiskRoot& disk, const Browser& browser) {
    return browser.application.empty() ? dataFolderOf(disk, browser).path : disk.resolve(browser.application);
}

FileUrl dataFolderOf(const DiskRoot& disk, const Browser& browser) {
    for (const std::string_view folder : browser.dataFolders) {
        if (fileExistsAt(disk.inHome(folder).path)) {
            return disk.inHome(folder);
        }
    }
    return disk.inHome(browser.dataFolders.empty() ? std::string_view() : browser.dataFolders.front());
}

std::optional<std::vector<BrowserProfile>> profilesOf(const DiskRoot& disk, const Browser& browser) {
    const FileUrl data = dataFolderOf(disk, browser);
    std::vector<BrowserProfile> profiles;
    switch (browser.profiles) {
    case ProfileRule::None:
        profiles.push_back({data, {}});
        break;
    case ProfileRule::LocalState: {
        const std::optional<std::string> contents = readWholeFile(data.appending("Local State").path);
        if (!contents) {
            return std::nullopt;
        }
        for (ChromeProfile& profile : chromeProfilesFromLocalState(*contents)) {
            profiles.push_back({data.appending(profile.folder), std::move(profile.name)});
        }
        break;
    }
    case ProfileRule::ProfilesIni: {
        const std::optional<std::string> contents = readWholeFile(data.appending("profiles.ini").path);
        if (!contents) {
            return std::nullopt;
        }
        for (IniProfile& profile : profilesFromIni(*contents)) {
            profiles.push_back({profile.relative ? data.appending(profile.path) : FileUrl{disk.resolve(profile.path)},
                                std::move(profile.name)});
        }
        break;
    }
    case ProfileRule::FirstFolderNamedDefault: {
        const FileUrl folder = data.appending(browser.profilesFolder);
        for (const std::string& name : listFolderNames(folder.path)) {
            if (name.find("default") != std::string::npos) {
                profiles.push_back({folder.appending(name), {}});
                break;
            }
        }
        break;
    }
    }
    return profiles;
}

std::optional<std::vector<BrowserProfile>> historyProfilesOf(const DiskRoot& disk, const Browser& browser) {
    std::optional<std::vector<BrowserProfile>> profiles = profilesOf(disk, browser);
    if (browser.profiles != ProfileRule::FirstFolderNamedDefault || !profiles) {
        return profiles;
    }
    const FileUrl folder = dataFolderOf(disk, browser).appending(browser.profilesFolder);
    for (const std::string& name : listFolderNames(folder.path)) {
        FileUrl entry = folder.appending(name);
        std::error_code error;
        const bool isFolder =
            std::filesystem::symlink_status(entry.path, error).type() == std::filesystem::file_type::directory;
        if (isFolder && std::ranges::none_of(*profiles, [&](const BrowserProfile& p) { return p.folder == entry; })) {
            profiles->push_back({std::move(entry), {}});
        }
    }
    return profiles;
}

} // namespace tidewell
