#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tidewell {

/// The absolute path of what path names, with ".", ".." and every link resolved (relative paths are taken from
/// the current folder). Nothing when the path, or a folder on the way, does not exist or cannot be looked into.
std::optional<std::string> realPath(std::string_view path);

/// Whether the file system lets this process write to the file or folder at path (its permissions, read-only
/// mounts). False when nothing is there.
bool fileSystemAllowsWriting(const std::string& path);

/// Makes the folder at path and any missing parents (mode 0700 for the new ones). True when a folder is there
/// afterwards, made now or before.
bool makeFolders(const std::string& path);

/// The user's configuration folder: $XDG_CONFIG_HOME, or ~/.config when that variable is unset, empty or not
/// absolute (the home folder from $HOME, else from the user database).
[[nodiscard]] std::string userConfigFolder();

/// Writes text as the file <folder>/<name> (mode 0644), making the folder when missing. The text is written beside
/// the file and renamed over it, so a reader never sees half of it and an earlier file is replaced whole. False
/// when it could not be written (a read-only folder, a folder where the file should be).
bool replaceFileWhole(const std::string& folder, std::string_view name, std::string_view text);

} // namespace tidewell
