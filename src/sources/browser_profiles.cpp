#include "sources/browser_profiles.hpp"

#include "catalogue/folders.hpp"
#include "catalogue/json_reading.hpp"
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
    // A malformed file has no profiles; the ordered form keeps them in the file's own order.
    const std::optional<nlohmann::ordered_json> json = parseJson(*contents);
    if (!json || !json->is_object()) {
        return profiles;
    }
    const nlohmann::ordered_json* infoCache = valueAtKeyPath(*json, "profile.info_cache");
    if (infoCache == nullptr || !infoCache->is_object()) {
        return profiles;
    }
    for (const auto& [folder, info] : infoCache->items()) {
        profiles.push_back({folder, textAtKeyPath(info, "name")});
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
