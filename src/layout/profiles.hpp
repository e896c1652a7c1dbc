#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/file_url.hpp"
#include "layout/browsers.hpp"
#include "layout/disk_root.hpp"

namespace tidewell {

/// One profile of a browser on a disk: its folder, and its display name ("" where the browser gives none).
struct BrowserProfile {
    FileUrl folder;
    std::string name;
};

/// Whether a browser is installed on the disk: something is at its application's path, or, for a browser without
/// one, at one of its data folders.
[[nodiscard]] bool isInstalled(const DiskRoot& disk, const Browser& browser);

/// The path that stands for a browser's image ("Img", the panel's icon): its application, or its data folder.
[[nodiscard]] std::string applicationImage(const DiskRoot& disk, const Browser& browser);

/// The browser's data folder on the disk: the first of its data folders that exists, else the first.
[[nodiscard]] FileUrl dataFolderOf(const DiskRoot& disk, const Browser& browser);

/// The browser's profiles, by its profile rule:
/// - None: the data folder itself, unnamed;
/// - LocalState: the profiles the data folder's "Local State" registers, in its order, with their display names
///   (see chromeProfilesFromLocalState); nothing when the file cannot be read (the browser never ran);
/// - FirstFolderNamedDefault: the first entry of the profiles folder, in listing order, whose name holds "default"
///   (the case matters), unnamed; none when no entry does or the folder cannot be listed;
/// - ProfilesIni: the profiles the data folder's "profiles.ini" names (see profilesFromIni), a relative path taken
///   in the data folder and an absolute one under the disk root, with their Name=; nothing when the file cannot be
///   read.
[[nodiscard]] std::optional<std::vector<BrowserProfile>> profilesOf(const DiskRoot& disk, const Browser& browser);

/// Every profile whose history the adult-history purge covers: profilesOf, except that FirstFolderNamedDefault
/// gives that first folder followed by every other folder of the profiles folder, in listing order (a link or a
/// file there is no profile). A person's second profile keeps its visits no less than the first.
[[nodiscard]] std::optional<std::vector<BrowserProfile>> historyProfilesOf(const DiskRoot& disk,
                                                                           const Browser& browser);

} // namespace tidewell
