#include "layout/browser_rows.hpp"
#include "layout/disk_layout.hpp"

namespace tidewell {

namespace {

// The paths below are where each program keeps its traces on a macOS disk. Current Safari keeps part of them in
// its container, beside the old places.

constexpr HistorySchema kSafariHistory{.table = "history_items",
                                       .logFromWindow = "Safari Deleted",
                                       .logFromHourlyPurge = "Safari Deleted",
                                       .sessionFiles = false,
                                       .format = BrowserFamily::Safari};

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
        .profileHistory = {Anchor::Profile, "History.db"},
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
        .profileHistory = {Anchor::Profile, "History"},
        .history = &kChromeFamilyHistory,
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
        .profileCaches = "Library/Caches/Firefox/Profiles",
        .profiles = ProfileRule::FirstFolderNamedDefault,
        .profilesFolder = "Profiles",
        .adultHistoryName = "Firefox Adult History",
        .historyDatabase = {Anchor::Profile, "places.sqlite"},
        .profileHistory = {Anchor::Profile, "places.sqlite"},
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
                  {Anchor::Home, "Library/Cookies/Cookies.binarycookies"},
                  {Anchor::Home, "Library/Containers/com.apple.Safari/Data/Library/Cookies/Cookies.binarycookies"}}},
                {"Browser Caches",
                 {{Anchor::CacheFolder, ""}, {Anchor::Home, "Library/Containers/com.apple.Safari/Data/Library/Caches"}}},
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
                {"Local Storage",
                 {{Anchor::DataFolder, "LocalStorage"},
                  {Anchor::DataFolder, "Databases"},
                  {Anchor::Home, "Library/Containers/com.apple.Safari/Data/Library/WebKit"}}},
                {"Reading List", {{Anchor::DataFolder, "ReadingListArchives"}}},
                {"Form", {{Anchor::DataFolder, "Form Values"}}},
                {"Recent Search", {{Anchor::DataFolder, "SearchDescriptions.plist"}}},
                {"WebFeeds", {{Anchor::DataFolder, "WebFeedSources.plist"}}},
            },
    };

    static const SourceTable kChromeTable{
        .browser = &kChrome,
        .items = chromeProfileRows(),
        .gathered = {chromeCachesRow({Anchor::CacheFolder, ""})},
    };

    // Of the one profile Firefox's section cleans; without one the section has no items at all.
    static const SourceTable kFirefoxTable{
        .browser = &kFirefox,
        .items =
            [] {
                std::vector<ItemRow> rows =
                    firefoxProfileRows({{Anchor::Home, "Library/Caches/Mozilla/updates/Applications/Firefox"},
                                        {Anchor::CacheFolder, ""},
                                        {Anchor::ProfileCache, "cache2"}});
                rows.push_back(firefoxCrashReportsRow());
                return rows;
            }(),
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
                 {{Anchor::Home, "Library/Containers", Expansion::EntriesInEach, "Data/Library/Caches"}}},
                {"System Log Files", {{Anchor::Home, "Library/Logs"}}},
                {"Applications Log Files",
                 {{Anchor::Home, "Library/Containers", Expansion::EntriesInEach, "Data/Library/Logs"}}},
                {"System Downloads Log",
                 {{Anchor::Home, "Library/Preferences", Expansion::EntriesNamedLike,
                   "com.apple.LaunchServices.QuarantineEventsV"}}},
                {"Trash Files", {{Anchor::Home, ".Trash", Expansion::Entries}}},
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
