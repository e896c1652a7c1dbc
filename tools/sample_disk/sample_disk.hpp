#pragma once

#include <string>
#include <vector>

#include "support/disk_builder.hpp"

namespace tidewell::testing {

enum class Browser { Safari, Chrome, Firefox };

/// Writes a history database in the browser's own table layout (Safari `history_items` with `history_visits`,
/// Chrome `urls` with `visits`, Firefox `moz_places` with `moz_historyvisits`, the last in WAL mode as Firefox
/// keeps it), with one row and one visit per URL, ids from 1 in order.
void writeHistoryDatabase(const std::string& path, Browser browser, const std::vector<std::string>& urls);

/// The history URLs of the sample disk: ordinary sites with a few adult ones among them.
[[nodiscard]] std::vector<std::string> sampleHistoryUrls();

/// Writes the sample disk: the five applications and the Finder, and a home for `login` holding Safari data,
/// Chrome with two profiles ("Default" as "Person 1", "Profile 1" as "Work"), Firefox with a "default-release"
/// profile, Mail, Flash, container, log, quarantine and trash data, and history databases for all three
/// browsers. Extensions: three Chrome extensions in "Default" ("Page Notes" named through its messages, "Tab Tidy"
/// with two versions, "Reader Mode Plus") and "Page Notes" again in "Profile 1"; two Firefox add-ons of which
/// the one named "Default" is not listed; a Safari extension beside "Extensions.plist" and ".DS_Store". Launch
/// agents and daemons, support folders and an application in the home's Applications folder.
///
/// On a Linux layout the home <root>/home/<login> holds instead: Chrome with two profiles and today's files, the
/// snap Chromium, Firefox whose profiles.ini names a "default-release" profile and an old, nearly empty
/// "default", Thunderbird and Evolution's cache, an XDG trash with files and info, thumbnails,
/// recently-used.xbel, application caches and session logs, Flash, extensions of Chrome, Chromium and Firefox,
/// autostart entries, unit files and desktop entries; every history holds adult URLs among ordinary ones.
void writeSampleDisk(const std::string& root, const std::string& login = "ann",
                     const DiskLayout& layout = macosLayout());

} // namespace tidewell::testing
