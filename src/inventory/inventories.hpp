#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "catalogue/records.hpp"
#include "catalogue/size_walker.hpp"
#include "layout/disk_layout.hpp"
#include "layout/disk_root.hpp"

namespace tidewell {

// Read-only inventories of a disk. Nothing here changes a file; nothing is logged.
//
// The extension inventories make extension records: records with exactly the keys "urlExt", "verExt", "nameExt",
// "sizeExt" (a 64-bit allocated byte count) and "PersonExt", in that order. A field that the browser's files lack,
// or hold as something other than text, is the empty text.

/// The direct entries of a folder as locations (the folder joined with each name), hidden ones included, packages
/// as plain entries, in the file system's order. The first listing error ends the list, keeping what came before
/// it. A file or a missing path gives an empty list.
[[nodiscard]] UrlList folderEntries(const FileUrl& folder);

/// A Chrome-family browser's extensions: one record per installed version folder of every profile its "Local
/// State" names, in profile order, then listing order of identifier and version folders. "urlExt" is the
/// identifier folder (a FileUrl, `within` its profile's extensions folder, which alone its removal may touch),
/// "sizeExt" the allocated size of everything below it (so all versions of one extension report the same total),
/// "PersonExt" the profile's display name. A version folder is passed over when it is empty or its
/// "manifest.json" is missing, unreadable, not JSON or not an object; also when its name is a "__MSG_" placeholder
/// and it has no "_locales" at all (see readChromeVersionFolder). Nothing (not an empty list) when "Local State"
/// cannot be read; an empty list when it is malformed.
[[nodiscard]] std::optional<RecordList> chromeExtensions(const DiskRoot& disk, const Browser& browser,
                                                         SizeCounter& sizes);

/// One Firefox add-on: its extension record, and the location its row removes: the location Firefox recorded,
/// `within` its profile's extensions folder, which alone its removal may touch.
struct FirefoxExtension {
    RecordPtr record;
    FileUrl location;
};

/// A Firefox-family browser's add-ons: one per element of the "addons" list of the "extensions.json" of every
/// folder of its profiles folder, in listing order then list order, without de-duplication. "urlExt" is the
/// location as Firefox recorded it (text, not a FileUrl): "descriptor" when it holds text, else "path"; an add-on
/// whose location is not an absolute path of plain components is left out. "sizeExt" is the allocated size below
/// that location: 0 for a single file (a packed add-on), a link, a missing location or one that the counter does
/// not reach. "PersonExt" is always "Default". An add-on whose "defaultLocale.name" is exactly "Default" is
/// skipped; one without a name is kept. A profile whose "extensions.json" is missing or malformed, and an "addons"
/// element that is not an object, add nothing.
[[nodiscard]] std::vector<FirefoxExtension> firefoxExtensions(const DiskRoot& disk, const Browser& browser,
                                                              SizeCounter& sizes);

/// A Safari-family browser's extensions folder, listed unfiltered (its "Extensions.plist" and ".DS_Store" entries
/// included); empty when the folder is missing.
[[nodiscard]] UrlList safariExtensions(const DiskRoot& disk, const Browser& browser);

/// What `inventory KIND` lists for one of the layout's listings: the entries of each of its folders in turn (on a
/// macOS disk the disk's, then the home's), or every application bundle below each; with name endings, only the
/// entries whose name ends with one of them (a Linux disk's desktop entries and unit files).
[[nodiscard]] UrlList inventoryListing(const DiskRoot& disk, const InventoryListing& listing);

/// Every application bundle below a folder, depth first in listing order. Hidden entries (names starting with
/// ".") are left out and never searched; entries that are not folders (links to folders included) are ignored. A
/// package folder (see `isPackageName`) is taken when its extension is exactly "app" and is never entered; any
/// other folder is searched. Deep trees cost heap, not stack.
[[nodiscard]] UrlList applicationsBelow(const FileUrl& folder);

/// Whether a folder of this name is a package, that is a bundle the user sees as one file: its extension (the
/// text after the last dot, the name not starting with that dot) is one of the bundle extensions of a macOS disk,
/// compared without regard to case. "Foo.APP" is a package; "Foo.app.d" is not.
[[nodiscard]] bool isPackageName(std::string_view name);

/// The extension of a file name: the text after its last dot, when that dot is not the name's first character
/// ("a.b.app" gives "app", ".hidden" and "plain" give "", "Foo." gives "").
[[nodiscard]] std::string_view pathExtension(std::string_view name);

/// A file name without its extension and the dot before it ("AdBlock.safariextz" gives "AdBlock", "a.b.c" gives
/// "a.b"; ".hidden" and "plain" stay as they are).
[[nodiscard]] std::string_view nameWithoutExtension(std::string_view name);

} // namespace tidewell
