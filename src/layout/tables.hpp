#pragma once

#include <string_view>
#include <vector>

namespace tidewell {

struct Browser;

/// The folder a location of a table is written relative to.
enum class Anchor {
    Root,         // the disk root: "/Applications"
    Home,         // the home folder
    DataFolder,   // the source's own folder: a browser's data folder, or the folder its table names
    Profile,      // the profile folder the item is made for
    CacheFolder,  // the browser's cache folder
    ProfileCache, // the profile's own folder in the browser's cache folder
};

/// What a location of a table stands for in an item's list.
enum class Expansion {
    Itself,           // the location
    Entries,          // each entry of the folder, in the order the file system lists them
    EntriesInEach,    // each entry of `inner` inside each entry of the folder (".DS_Store" passed over)
    EntriesNamedLike, // each entry of the folder whose name holds `inner`, the case of ASCII letters aside
    EntriesEndingIn,  // each entry of the folder whose name ends with `inner` (the case matters)
};

/// One location of a table. An empty path names the anchor's folder itself.
struct Location {
    Anchor anchor;
    std::string_view path;
    Expansion expansion = Expansion::Itself;
    std::string_view inner = {};
};

/// One item of a source's table: its name and its locations, in order.
struct ItemRow {
    /// The item's "NameText"; in a browser with profiles "%@" stands for the profile's display name.
    std::string_view name;
    std::vector<Location> locations;
    /// Whether the item starts ticked.
    bool ticked = true;
    /// Made without the item factory, with a placeholder size (Safari's "Bookmarks").
    bool handMade = false;
    /// What ticking the item would remove that a person would miss, or empty (see RecordRole::tickWarning).
    std::string_view tickWarning = {};
};

/// The path table of one section of the scan: a browser's (its name, application and folders are the browser's)
/// or another source's.
struct SourceTable {
    /// The browser the section cleans, or null.
    const Browser* browser = nullptr;
    /// For a source that is not a browser: the section's "Name", the application whose presence adds the section
    /// (its path is the section's "Img"), the window's image for it, and the source's own folder (relative to the
    /// home) that DataFolder names.
    std::string_view name = {};
    std::string_view application = {};
    std::string_view icon = {};
    std::string_view folder = {};
    /// The section is there whether or not its application is.
    bool alwaysShown = false;
    /// For a source without an application: folders or files, relative to the home, any of which adds the section.
    std::vector<std::string_view> presence = {};
    /// With more than one profile, each item's name ends with " (<the profile's name>)" (a name without "%@").
    bool profileInNames = false;
    /// The items, once for each profile of the browser (once for a source without profiles).
    std::vector<ItemRow> items;
    /// Items after those, once each: their profile locations are taken for every profile, in profile order, and
    /// then their other locations.
    std::vector<ItemRow> gathered = {};
};

} // namespace tidewell
