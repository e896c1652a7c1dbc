#pragma once

#include "base/file_url.hpp"
#include "layout/disk_root.hpp"
#include "layout/profiles.hpp"
#include "layout/tables.hpp"

namespace tidewell {

/// The folders the anchors of a table stand for while one item is made.
struct AnchorFolders {
    DiskRoot disk;
    /// DataFolder: the browser's data folder, or the folder a source's table names.
    FileUrl data;
    /// CacheFolder: the browser's cache folder.
    FileUrl cache;
    /// The folder of the profiles' own cache folders, for ProfileCache.
    FileUrl profileCaches;
    /// Profile and ProfileCache: the profile the item is made for; without one, they stand for the data folder and
    /// the cache folder.
    const BrowserProfile* profile = nullptr;
};

/// The anchors of a source's table: a browser's folders, or the source's own folder (the home when it names none).
[[nodiscard]] AnchorFolders anchorsOf(const DiskRoot& disk, const SourceTable& table);
/// The anchors of a browser's tables and records.
[[nodiscard]] AnchorFolders anchorsOf(const DiskRoot& disk, const Browser& browser);

/// Where a location lies: its anchor's folder with its path appended (the folder itself for an empty path).
[[nodiscard]] FileUrl locationOf(const Location& location, const AnchorFolders& anchors);

/// Appends what a location stands for in an item's list, by its expansion: itself, or the entries the disk holds
/// there now, in the order the file system lists them.
void appendExpanded(UrlList& list, const Location& location, const AnchorFolders& anchors);

} // namespace tidewell
