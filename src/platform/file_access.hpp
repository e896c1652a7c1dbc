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

} // namespace tidewell
