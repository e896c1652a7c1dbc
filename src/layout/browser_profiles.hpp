#pragma once

#include <optional>
#include <string>
#include <vector>

#include "layout/disk_root.hpp"
#include "layout/chrome_local_state.hpp"

namespace tidewell {

/// The path of Chrome's "Local State": <root>/Users/<login>/Library/Application Support/Google/Chrome/Local State.
[[nodiscard]] std::string chromeLocalStatePath(const DiskRoot& disk);

/// The profiles of the disk's "Local State", as chromeProfilesFromLocalState reads them; nothing when the file
/// cannot be read.
[[nodiscard]] std::optional<std::vector<ChromeProfile>> readChromeProfiles(const DiskRoot& disk);

/// The Firefox profile Tidewell cleans: the first entry of home + "Library/Application Support/Firefox/Profiles",
/// in listing order, whose name contains "default" (case matters). Nothing when none does or the folder cannot
/// be listed.
[[nodiscard]] std::optional<std::string> chooseFirefoxProfile(const DiskRoot& disk);

} // namespace tidewell
