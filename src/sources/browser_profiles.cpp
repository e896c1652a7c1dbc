#include "sources/browser_profiles.hpp"

#include <nlohmann/json.hpp>

#include "catalogue/folders.hpp"
#include "sources/tables.hpp"

namespace tidewell {

std::string chromeLocalStatePath(const DiskRoot& disk) {
    return disk.resolve("/Users/" + disk.loginName() + "/Library/Application Support/Google/Chrome/Local State");
}

std::optional<std::vector<ChromeProfile>> readChromeProfiles(const DiskRoot& disk) {
    const std::optional<std::string> contents = readWholeFile(chromeLocalStatePath(disk));
    if (!contents) {
        return std::nullopt;
    }
    std::vector<ChromeProfile> profiles;
    // Parsed without exceptions: a malformed file is a discarded value. The ordered form keeps the profiles in
    // the file's own order.
    const auto json = nlohmann::ordered_json::parse(*contents, nullptr, false);
    if (json.is_discarded() || !json.is_object()) {
        return profiles;
    }
    const auto profile = json.find("profile");
    if (profile == json.end() || !profile->is_object()) {
        return profiles;
    }
    const auto infoCache = profile->find("info_cache");
    if (infoCache == profile->end() || !infoCache->is_object()) {
        return profiles;
    }
    for (const auto& [folder, info] : infoCache->items()) {
        std::string name;
        if (info.is_object()) {
            if (const auto found = info.find("name"); found != info.end() && found->is_string()) {
                name = found->get<std::string>();
            }
        }
        profiles.push_back({folder, std::move(name)});
    }
    return profiles;
}

std::optional<std::string> chooseFirefoxProfile(const DiskRoot& disk) {
    for (std::string& name : listFolderNames(disk.inHome(tables::kFirefoxProfiles).path)) {
        if (name.find("default") != std::string::npos) {
            return std::move(name);
        }
    }
    return std::nullopt;
}

} // namespace tidewell
