#include "layout/browser_profiles.hpp"

#include "base/folders.hpp"
#include "layout/tables.hpp"

namespace tidewell {

std::string chromeLocalStatePath(const DiskRoot& disk) {
    return disk.resolve("/Users/" + disk.loginName() + "/Library/Application Support/Google/Chrome/Local State");
}

std::optional<std::vector<ChromeProfile>> readChromeProfiles(const DiskRoot& disk) {
    const std::optional<std::string> contents = readWholeFile(chromeLocalStatePath(disk));
    if (!contents) {
        return std::nullopt;
    }
    return chromeProfilesFromLocalState(*contents);
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
