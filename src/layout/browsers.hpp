#pragma once

#include <string_view>
#include <vector>

#include "layout/tables.hpp"

namespace tidewell {

/// Whose file formats a browser keeps: the code that reads its history database and its extensions.
/// Mail is a mail program kept as Firefox keeps its profiles, whose section is "Mail": it has no history or
/// extensions that Tidewell reads, and it blocks no purge.
enum class BrowserFamily { Safari, Chrome, Firefox, Mail };

/// How a browser's profiles are found in its data folder.
enum class ProfileRule {
    /// One set of files, in the data folder itself (Safari).
    None,
    /// The profiles that "Local State" in the data folder registers, in its order, with their display names.
    LocalState,
    /// The first folder of the profiles folder, in listing order, whose name holds "default" (the case matters).
    FirstFolderNamedDefault,
    /// Every profile that "profiles.ini" in the data folder names, in the order of its [ProfileN] sections, with
    /// its Name=.
    ProfilesIni,
};

/// How a browser keeps its history, for the purge of adult-site visits.
struct HistorySchema {
    /// The table of visited addresses: its rows have a "url" column and 64-bit row ids.
    std::string_view table;
    /// What a purge logs when it was committed or had nothing to do: from the window's Clean, and from the hourly
    /// purge.
    std::string_view logFromWindow;
    std::string_view logFromHourlyPurge;
    /// "Current Session" and "Current Tabs" beside the database go with each purge.
    bool sessionFiles = false;
    /// Whose format the database has: what refers to a removed page, and goes with it.
    BrowserFamily format = BrowserFamily::Safari;
    /// The favicon database beside the history database, whose mappings of removed pages go with them ("" for
    /// none).
    std::string_view iconDatabase = {};
};

/// One row of a layout's browser table: everything Tidewell knows of a browser, for its section, its Adult History
/// item, its extensions, the running-browser check and the window.
struct Browser {
    /// Its name in `extensions --json` ("chrome").
    std::string_view key;
    /// Its section's "Name" and its name in the running-browser panel ("Chrome").
    std::string_view name;
    /// The application whose presence says the browser is installed; the panel shows its icon. Empty: the browser
    /// is installed when one of its data folders exists, and that folder stands for its image.
    std::string_view application;
    /// The window's image for it.
    std::string_view icon;
    /// The names its processes run under; one of the user's running under any of them is the browser running.
    std::vector<std::string_view> processNames;
    BrowserFamily family;
    /// Where it keeps its data, relative to the home: the first of these that exists, else the first.
    std::vector<std::string_view> dataFolders;
    /// Where it keeps its caches, relative to the home.
    std::string_view cacheFolder;
    /// The folder, relative to the home, that holds one cache folder per profile, named as the profile's folder
    /// (ProfileCache); the cache folder itself when empty.
    std::string_view profileCaches = {};
    ProfileRule profiles;
    /// The folder of its profiles, relative to the data folder, for FirstFolderNamedDefault.
    std::string_view profilesFolder = {};
    /// Its Adult History item's "NameText", the history database of that item's "Path", and the database of each
    /// profile, all of which the item purges ("AllPaths").
    std::string_view adultHistoryName;
    Location historyDatabase;
    Location profileHistory;
    /// Null for a program without a history Tidewell purges (Mail).
    const HistorySchema* history;
    /// Where its extensions are: a folder of the data folder (Safari) or of each profile.
    Location extensions;
    /// Its caption in the Browser Extensions section.
    std::string_view extensionsCaption;
    /// What "Reset Browsers Preferences to Defaults" removes of it, for each of its profiles.
    std::vector<Location> preferenceFiles;
    /// The window's one-line summary of its section; empty to list the section's item names.
    std::string_view summary = {};
};

} // namespace tidewell
