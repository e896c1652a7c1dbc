#pragma once

#include <optional>
#include <string>
#include <vector>

#include "catalogue/disk_root.hpp"

namespace tidewell {

/// One entry of Chrome's profile registry: the profile's folder name and its display name.
struct ChromeProfile {
    std::string folder;
    std::string name;
};

/// The path of Chrome's "Local State": <root>/Users/<login>/Library/Application Support/Google/Chrome/Local State.
[[nodiscard]] std::string chromeLocalStatePath(const DiskRoot& disk);

/// The profiles of "Local State", in the order its "profile.info_cache" object lists them, each paired with its
/// own "name" ("" when missing or not text). Nothing when the file cannot be read; an empty list when it is not
/// JSON, its top level is not an object, or "profile.info_cache" is not an object.
[[nodiscard]] std::optional<std::vector<ChromeProfile>> readChromeProfiles(const DiskRoot& disk);

/// The Firefox profile Tidewell cleans: the first entry of home + "Library/Application Support/Firefox/Profiles",
/// in listing order, whose name contains "default" (case matters). Nothing when none does or the folder cannot
/// be listed.
[[nodiscard]] std::optional<std::string> chooseFirefoxProfile(const DiskRoot& disk);

} // namespace tidewell
