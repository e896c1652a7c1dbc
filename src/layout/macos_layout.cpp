#include "layout/disk_layout.hpp"

namespace tidewell {

namespace {

// The paths below are where each program keeps its traces on a macOS disk.

constexpr HistorySchema kSafariHistory{"history_items", "Safari Deleted", "Safari Deleted", false};
// Chrome keeps its open tabs beside the history database.
constexpr HistorySchema kChromeHistory{"urls", "Chrome Deleted", "Chrome Deleted", true};
// The window's Firefox purge has always logged Chrome's text.
constexpr HistorySchema kFirefoxHistory{"moz_places", "Chrome Deleted", "Firefox Deleted", false};

} // namespace

// Every table is made at its first use, so a layout is complete whenever it is first asked for.
const DiskLayout& macosLayout() {
    static const Browser kSafari{
        .key = "safari",
        .name = "Safari",
        .application = "/Applications/Safari.app",
        .icon = "browser_safari",
        .processNames = {"Safari"},
        .family = BrowserFamily::Safari,
        .dataFolders = {"Library/Safari"},
        .cacheFolder = "Library/Caches/com.apple.Safari",
        .profiles = ProfileRule::None,
        .adultHistoryName = "Safari Adult History",
        .historyDatabase = {Anchor::DataFolder, "History.db"},
        .history = &kSafariHistory,
        .extensions = {Anchor::DataFolder, "Extensions"},
        .extensionsCaption = "Safari Extensions",
        .preferenceFiles = {{Anchor::DataFolder, "Configurations.plist.signed"}},
    };

    static const Browser kChrome{
        .key = "chrome",
        .name = "Chrome",
        .application = "/Applications/Google Chrome.app",
        .icon = "browser_chrome",
        .processNames = {"Google Chrome", "chrome", "google-chrome"},
        .family = BrowserFamily::Chrome,
        .dataFolders = {"Library/Application Support/Google/Chrome"},
        .cacheFolder = "Library/Caches/Google/Chrome",
        .profiles = ProfileRule::LocalState,
        .adultHistoryName = "Google Chrome Adult History",
        // The purge looks at the "Default" profile alone, whatever "Local State" registers.
        .historyDatabase = {Anchor::DataFolder, "Default/History"},
        .history = &kChromeHistory,
        .extensions = {Anchor::Profile, "Extensions"},
        .extensionsCaption = "Google Chrome Extensions",
        .preferenceFiles = {{Anchor::Profile, "Preferences"}},
        .summary = "Cookies, Visited Links, History, Login Data, LastSession, User preferences, Favicons, Top Sites, "
                   "Local Storage",
    };

    static const Browser kFirefox{
        .key = "firefox",
        .name = "Firefox",
        .application = "/Applications/Firefox.app",
        .icon = "browser_firefox",
        .processNames = {"Firefox", "firefox", "firefox-esr", "firefox-bin"},
        .family = BrowserFamily::Firefox,
        .dataFolders = {"Library/Application Support/Firefox"},
        .cacheFolder = "Library/Caches/Firefox",
        .profiles = ProfileRule::FirstFolderNamedDefault,
        .profilesFolder = "Profiles",
        .adultHistoryName = "Firefox Adult History",
        .historyDatabase = {Anchor::Profile, "places.sqlite"},
        .history = &kFirefoxHistory,
        .extensions = {Anchor::Profile, "extensions"},
        .extensionsCaption = "Firefox Extensions",
        .preferenceFiles = {{Anchor::Profile, "user.js"},
                            {Anchor::Profile, "xulstore.json"},
                            {Anchor::Profile, "prefs.js"}},
    };

    static const SourceTable kSafariTable{
        .browser = &kSafari,
        .items =
            {
                {"Cookies",
                 {{Anchor::Home, "Library/Cookies/com.apple.Safari.SafeBrowsing.binarycookies"},
                  {Anchor::Home, "Library/Cookies/Cookies.binarycookies"}}},
                {"Browser Caches", {{Anchor::CacheFolder, ""}}},
                {"History",
                 {{Anchor::DataFolder, "History.db"},
                  {Anchor::DataFolder, "HistoryIndex.sk"},
                  {Anchor::DataFolder, "History.db-wal"}}},
                {"Bookmarks", {{Anchor::DataFolder, "Bookmarks.plist"}}, false, true},
                {"Downloads", {{Anchor::DataFolder, "Downloads.plist"}}, false},
                {"LastSession", {{Anchor::DataFolder, "LastSession.plist"}}},
                {"User preferences", {{Anchor::DataFolder, "Configurations.plist.signed"}}},
                {"Favicons", {{Anchor::DataFolder, "Touch Icons"}, {Anchor::DataFolder, "WebpageIcons"}}},
                {"TopSites", {{Anchor::DataFolder, "TopSites.plist"}}},
                {"Local Storage", {{Anchor::DataFolder, "LocalStorage"}, {Anchor::DataFolder, "Databases"}}},
                {"Reading List", {{Anchor::DataFolder, "ReadingListArchives"}}},
                {"Form", {{Anchor::DataFolder, "Form Values"}}},
                {"Recent Search", {{Anchor::DataFolder, "SearchDescriptions.plist"}}},
                {"WebFeeds", {{Anchor::DataFolder, "WebFeedSources.plist"}}},
            },
    };

    // Nine items per profile. "Pepper Data" is listed twice in "Local Storage (%@)" and so is measured twice.
    static const SourceTable kChromeTable{
        .browser = &kChrome,
        .items =
            {
                {"Cookies (%@)", {{Anchor::Profile, "Cookies"}, {Anchor::Profile, "Cookies-journal"}}},
                {"Visited Links (%@)", {{Anchor::Profile, "Visited Links"}}},
                {"History (%@)",
                 {{Anchor::Profile, "History-journal"},
                  {Anchor::Profile, "History"},
                  {Anchor::Profile, "History Provider Cache"}}},
                {"Login Data (%@)", {{Anchor::Profile, "Login Data"}, {Anchor::Profile, "Login Data-journal"}}},
                {"LastSession (%@)",
                 {{Anchor::Profile, "Session Storage"},
                  {Anchor::Profile, "Last Session"},
                  {Anchor::Profile, "Last Tabs"}}},
                {"User preferences (%@)", {{Anchor::Profile, "Preferences"}}},
                {"Favicons (%@)", {{Anchor::Profile, "Favicons"}, {Anchor::Profile, "Favicons-journal"}}},
                {"Top Sites (%@)", {{Anchor::Profile, "Top Sites"}, {Anchor::Profile, "Top Sites-journal"}}},
                {"Local Storage (%@)",
                 {{Anchor::Profile, "databases"},
                  {Anchor::Profile, "File System"},
                  {Anchor::Profile, "IndexedDB"},
                  {Anchor::Profile, "Local Storage"},
                  {Anchor::Profile, "Pepper Data"},
                  {Anchor::Profile, "Storage"},
                  {Anchor::Profile, "Pepper Data"},
                  {Anchor::Profile, "Web Data"},
                  {Anchor::Profile, "Web Data-journal"}}},
            },
        .gathered =
            {
                {"Browser Caches",
                 {{Anchor::Profile, "Application Cache"}, {Anchor::Profile, "GPUCache"}, {Anchor::CacheFolder, ""}}},
            },
    };

    // Of the one profile Firefox's section cleans.
    static const SourceTable kFirefoxTable{
        .browser = &kFirefox,
        .items =
            {
                {"Cookies",
                 {{Anchor::Profile, "cookies.sqlite"},
                  {Anchor::Profile, "webappsstore.sqlite"},
                  {Anchor::Profile, "chromeappsstore.sqlite"}}},
                {"Browser Caches",
                 {{Anchor::Home, "Library/Caches/Mozilla/updates/Applications/Firefox"}, {Anchor::CacheFolder, ""}}},
                {"Login Data", {{Anchor::Profile, "logins.json"}, {Anchor::Profile, "key3.db"}}},
                {"LastSession",
                 {{Anchor::Profile, "sessionstore-backups"},
                  {Anchor::Profile, "sessionCheckpoints.json"},
                  {Anchor::Profile, "sessionstore.bak"}}},
                {"User preferences",
                 {{Anchor::Profile, "user.js"}, {Anchor::Profile, "xulstore.json"}, {Anchor::Profile, "prefs.js"}}},
                {"Local Storage",
                 {{Anchor::Profile, "formhistory.sqlite"},
                  {Anchor::Profile, "persdict.dat"},
                  {Anchor::Profile, "search.sqlite"},
                  {Anchor::Profile, "permissions.sqlite"},
                  {Anchor::Profile, "content-prefs.sqlite"},
                  {Anchor::Profile, "cert8.db"},
                  {Anchor::Profile, "secmod.db"},
                  {Anchor::Profile, "searchplugins"},
                  {Anchor::Profile, "mimeTypes.rdf"}}},
                {"Crash Reports", {{Anchor::DataFolder, "Crash Reports"}}},
            },
    };

    // The System section is there on every disk; the Finder's application only gives it its image.
    static const SourceTable kSystemTable{
        .name = "System",
        .application = "/System/Library/CoreServices/Finder.app",
        .icon = "system",
        .alwaysShown = true,
        .items =
            {
                {"System Cache Files", {{Anchor::Home, "Library/Caches"}}},
                {"Applications Cache Files",
                 {{Anchor::Home, "Library/Containers", Expansion::EntriesInEach, "Data/Library/Caches", true}}},
                {"System Log Files", {{Anchor::Home, "Library/Logs"}}},
                {"Applications Log Files",
                 {{Anchor::Home, "Library/Containers", Expansion::EntriesInEach, "Data/Library/Logs", true}}},
                {"System Downloads Log",
                 {{Anchor::Home, "Library/Preferences", Expansion::EntriesNamedLike,
                   "com.apple.LaunchServices.QuarantineEventsV"}}},
                {"Trash Files", {{Anchor::Home, ".Trash", Expansion::Entries, {}, true}}},
            },
    };

    static const SourceTable kMailTable{
        .name = "Mail",
        .application = "/Applications/Mail.app",
        .icon = "mail",
        .folder = "Library/Containers/com.apple.mail/Data/Library",
        .items =
            {
                {"Mail Download", {{Anchor::DataFolder, "Mail Downloads"}}},
                {"Mail Cache Files",
                 {{Anchor::DataFolder, "Caches"},
                  {Anchor::DataFolder, "Logs"},
                  {Anchor::DataFolder, "WebKit"},
                  {Anchor::DataFolder, "Saved Application State"}}},
            },
    };

    static const SourceTable kFlashTable{
        .name = "Flash",
        .application = "/Applications/Utilities/Adobe Flash Player Install Manager.app",
        .icon = "flash",
        .items =
            {
                {"Flash Cookies",
                 {{Anchor::Home, "Library/Preferences/Macromedia/Flash Player"},
                  {Anchor::Home, "Library/Caches/Adobe/Flash Player"}}},
            },
    };

    using Slot = SectionSlot::Kind;
    static const DiskLayout kLayout{
        .name = "macos",
        .homes = "/Users",
        .browsers = {&kSafari, &kChrome, &kFirefox},
        .adultHistory = {&kChrome, &kSafari, &kFirefox},
        .sections =
            {
                {Slot::Source, &kSafariTable},
                {Slot::Source, &kChromeTable},
                {Slot::Source, &kFirefoxTable},
                {Slot::AdultHistory},
                {Slot::BrowserExtensions},
                {Slot::Source, &kSystemTable},
                {Slot::Source, &kMailTable},
                {Slot::Source, &kFlashTable},
                {Slot::Promotion},
            },
        .inventories =
            {
                {"launch-agents", {{Anchor::Root, "/Library/LaunchAgents"}, {Anchor::Home, "Library/LaunchAgents"}}},
                {"launch-daemons", {{Anchor::Root, "/Library/LaunchDaemons"}, {Anchor::Home, "Library/LaunchDaemons"}}},
                {"app-support",
                 {{Anchor::Root, "/Library/Application Support"}, {Anchor::Home, "Library/Application Support"}}},
                {"apps", {{Anchor::Root, "/Applications"}, {Anchor::Home, ""}}, true},
            },
    };
    return kLayout;
}

} // namespace tidewell
