#pragma once

#include <string_view>
#include <vector>

namespace tidewell::tables {

/// Where a location of a path table is rooted.
enum class Base {
    Home,           // the home folder
    SafariFolder,   // home + "Library/Safari"
    ChromeProfile,  // home + "Library/Application Support/Google/Chrome" + profile folder
    FirefoxProfile, // the chosen Firefox profile folder
    MailLibrary,    // home + "Library/Containers/com.apple.mail/Data/Library"
};

struct Location {
    Base base;
    std::string_view path;
};

struct ItemSpec {
    std::string_view name; // Chrome's names hold "%@" for the profile's display name
    std::vector<Location> locations;
    bool handMade = false; // built without the item factory (Safari's "Bookmarks")
};

struct SourceSpec {
    std::string_view title; // the section's "Name"
    std::string_view app;   // the application whose presence is tested and whose icon is shown
    std::vector<ItemSpec> items;
};

// ---------------------------------------------------------------------------------------------------------------
// The paths below mirror where each program keeps its traces on a macOS disk.

inline const SourceSpec kSafari{
    "Safari",
    "/Applications/Safari.app",
    {
        {"Cookies",
         {{Base::Home, "Library/Cookies/com.apple.Safari.SafeBrowsing.binarycookies"},
          {Base::Home, "Library/Cookies/Cookies.binarycookies"}}},
        {"Browser Caches", {{Base::Home, "Library/Caches/com.apple.Safari"}}},
        {"History",
         {{Base::SafariFolder, "History.db"},
          {Base::SafariFolder, "HistoryIndex.sk"},
          {Base::SafariFolder, "History.db-wal"}}},
        {"Bookmarks", {{Base::SafariFolder, "Bookmarks.plist"}}, true},
        {"Downloads", {{Base::SafariFolder, "Downloads.plist"}}},
        {"LastSession", {{Base::SafariFolder, "LastSession.plist"}}},
        {"User preferences", {{Base::SafariFolder, "Configurations.plist.signed"}}},
        {"Favicons", {{Base::SafariFolder, "Touch Icons"}, {Base::SafariFolder, "WebpageIcons"}}},
        {"TopSites", {{Base::SafariFolder, "TopSites.plist"}}},
        {"Local Storage", {{Base::SafariFolder, "LocalStorage"}, {Base::SafariFolder, "Databases"}}},
        {"Reading List", {{Base::SafariFolder, "ReadingListArchives"}}},
        {"Form", {{Base::SafariFolder, "Form Values"}}},
        {"Recent Search", {{Base::SafariFolder, "SearchDescriptions.plist"}}},
        {"WebFeeds", {{Base::SafariFolder, "WebFeedSources.plist"}}},
    }};

inline constexpr std::string_view kChromeApp = "/Applications/Google Chrome.app";
inline constexpr std::string_view kChromeFolder = "Library/Application Support/Google/Chrome";
inline constexpr std::string_view kChromeCaches = "Library/Caches/Google/Chrome";

/// Nine items per Chrome profile. "Pepper Data" is listed twice in "Local Storage (%@)" and so is measured twice.
inline const std::vector<ItemSpec> kChromeProfileItems{
    {"Cookies (%@)", {{Base::ChromeProfile, "Cookies"}, {Base::ChromeProfile, "Cookies-journal"}}},
    {"Visited Links (%@)", {{Base::ChromeProfile, "Visited Links"}}},
    {"History (%@)",
     {{Base::ChromeProfile, "History-journal"},
      {Base::ChromeProfile, "History"},
      {Base::ChromeProfile, "History Provider Cache"}}},
    {"Login Data (%@)", {{Base::ChromeProfile, "Login Data"}, {Base::ChromeProfile, "Login Data-journal"}}},
    {"LastSession (%@)",
     {{Base::ChromeProfile, "Session Storage"},
      {Base::ChromeProfile, "Last Session"},
      {Base::ChromeProfile, "Last Tabs"}}},
    {"User preferences (%@)", {{Base::ChromeProfile, "Preferences"}}},
    {"Favicons (%@)", {{Base::ChromeProfile, "Favicons"}, {Base::ChromeProfile, "Favicons-journal"}}},
    {"Top Sites (%@)", {{Base::ChromeProfile, "Top Sites"}, {Base::ChromeProfile, "Top Sites-journal"}}},
    {"Local Storage (%@)",
     {{Base::ChromeProfile, "databases"},
      {Base::ChromeProfile, "File System"},
      {Base::ChromeProfile, "IndexedDB"},
      {Base::ChromeProfile, "Local Storage"},
      {Base::ChromeProfile, "Pepper Data"},
      {Base::ChromeProfile, "Storage"},
      {Base::ChromeProfile, "Pepper Data"},
      {Base::ChromeProfile, "Web Data"},
      {Base::ChromeProfile, "Web Data-journal"}}},
};

/// The caches item: these two folders of every profile, then the shared cache folder.
inline const std::vector<std::string_view> kChromeProfileCaches{"Application Cache", "GPUCache"};

inline constexpr std::string_view kFirefoxApp = "/Applications/Firefox.app";
inline constexpr std::string_view kFirefoxProfiles = "Library/Application Support/Firefox/Profiles";

inline const std::vector<ItemSpec> kFirefoxItems{
    {"Cookies",
     {{Base::FirefoxProfile, "cookies.sqlite"},
      {Base::FirefoxProfile, "webappsstore.sqlite"},
      {Base::FirefoxProfile, "chromeappsstore.sqlite"}}},
    {"Browser Caches",
     {{Base::Home, "Library/Caches/Mozilla/updates/Applications/Firefox"}, {Base::Home, "Library/Caches/Firefox"}}},
    {"Login Data", {{Base::FirefoxProfile, "logins.json"}, {Base::FirefoxProfile, "key3.db"}}},
    {"LastSession",
     {{Base::FirefoxProfile, "sessionstore-backups"},
      {Base::FirefoxProfile, "sessionCheckpoints.json"},
      {Base::FirefoxProfile, "sessionstore.bak"}}},
    {"User preferences",
     {{Base::FirefoxProfile, "user.js"}, {Base::FirefoxProfile, "xulstore.json"}, {Base::FirefoxProfile, "prefs.js"}}},
    {"Local Storage",
     {{Base::FirefoxProfile, "formhistory.sqlite"},
      {Base::FirefoxProfile, "persdict.dat"},
      {Base::FirefoxProfile, "search.sqlite"},
      {Base::FirefoxProfile, "permissions.sqlite"},
      {Base::FirefoxProfile, "content-prefs.sqlite"},
      {Base::FirefoxProfile, "cert8.db"},
      {Base::FirefoxProfile, "secmod.db"},
      {Base::FirefoxProfile, "searchplugins"},
      {Base::FirefoxProfile, "mimeTypes.rdf"}}},
    {"Crash Reports", {{Base::Home, "Library/Application Support/Firefox/Crash Reports"}}},
};

inline const SourceSpec kMail{"Mail",
                              "/Applications/Mail.app",
                              {
                                  {"Mail Download", {{Base::MailLibrary, "Mail Downloads"}}},
                                  {"Mail Cache Files",
                                   {{Base::MailLibrary, "Caches"},
                                    {Base::MailLibrary, "Logs"},
                                    {Base::MailLibrary, "WebKit"},
                                    {Base::MailLibrary, "Saved Application State"}}},
                              }};

inline const SourceSpec kFlash{"Flash",
                               "/Applications/Utilities/Adobe Flash Player Install Manager.app",
                               {
                                   {"Flash Cookies",
                                    {{Base::Home, "Library/Preferences/Macromedia/Flash Player"},
                                     {Base::Home, "Library/Caches/Adobe/Flash Player"}}},
                               }};

inline constexpr std::string_view kMailLibrary = "Library/Containers/com.apple.mail/Data/Library";
inline constexpr std::string_view kSafariFolder = "Library/Safari";
inline constexpr std::string_view kSafariApp = "/Applications/Safari.app";

inline constexpr std::string_view kFinderApp = "/System/Library/CoreServices/Finder.app";
inline constexpr std::string_view kSystemCaches = "Library/Caches";
inline constexpr std::string_view kSystemLogs = "Library/Logs";
inline constexpr std::string_view kContainers = "Library/Containers";
inline constexpr std::string_view kContainerCaches = "/Data/Library/Caches";
inline constexpr std::string_view kContainerLogs = "/Data/Library/Logs";
inline constexpr std::string_view kPreferences = "Library/Preferences";
inline constexpr std::string_view kQuarantineMarker = "com.apple.LaunchServices.QuarantineEventsV";
inline constexpr std::string_view kTrash = ".Trash";

} // namespace tidewell::tables
