#include <array>

#include "layout/browser_rows.hpp"
#include "layout/disk_layout.hpp"

namespace tidewell {

namespace {

// The paths below are where each program keeps its traces in a Linux home: the XDG folders (~/.config,
// ~/.cache, ~/.local/share), and the folders of the snap and flatpak installs of the same programs. A browser is
// there when one of its data folders is: a Linux disk has no one place for applications.

// One Chrome-family browser of a Linux home. Its caches mirror its folder below ~/.config under ~/.cache.
struct ChromeFamilyMember {
    std::string_view key;
    std::string_view name;
    std::vector<std::string_view> processNames;
    std::vector<std::string_view> dataFolders;
    std::string_view cacheFolder;
    std::string_view adultHistoryName;
    std::string_view extensionsCaption;
};

Browser chromeFamilyBrowser(const ChromeFamilyMember& member) {
    return Browser{
        .key = member.key,
        .name = member.name,
        .application = {},
        .icon = "browser_chrome",
        .processNames = member.processNames,
        .family = BrowserFamily::Chrome,
        .dataFolders = member.dataFolders,
        .cacheFolder = member.cacheFolder,
        .profiles = ProfileRule::LocalState,
        .adultHistoryName = member.adultHistoryName,
        .historyDatabase = {Anchor::Profile, "History"},
        .profileHistory = {Anchor::Profile, "History"},
        .history = &kChromeFamilyHistory,
        .extensions = {Anchor::Profile, "Extensions"},
        .extensionsCaption = member.extensionsCaption,
        .preferenceFiles = {{Anchor::Profile, "Preferences"}},
        .summary = "Cookies, Visited Links, History, Login Data, LastSession, User preferences, Favicons, Top Sites, "
                   "Local Storage",
    };
}

const std::array<Browser, 6>& chromeFamily() {
    static const std::array<Browser, 6> kBrowsers{
        chromeFamilyBrowser({"chrome", "Chrome", {"chrome", "google-chrome", "google-chrome-stable"},
                             {".config/google-chrome", ".var/app/com.google.Chrome/config/google-chrome"},
                             ".cache/google-chrome", "Google Chrome Adult History", "Chrome Extensions"}),
        chromeFamilyBrowser({"chromium", "Chromium", {"chromium", "chromium-browser"},
                             {".config/chromium", "snap/chromium/common/chromium",
                              ".var/app/org.chromium.Chromium/config/chromium"},
                             ".cache/chromium", "Chromium Adult History", "Chromium Extensions"}),
        chromeFamilyBrowser({"brave", "Brave", {"brave", "brave-browser"},
                             {".config/BraveSoftware/Brave-Browser",
                              ".var/app/com.brave.Browser/config/BraveSoftware/Brave-Browser"},
                             ".cache/BraveSoftware/Brave-Browser", "Brave Adult History", "Brave Extensions"}),
        chromeFamilyBrowser({"edge", "Microsoft Edge", {"msedge", "microsoft-edge"}, {".config/microsoft-edge"},
                             ".cache/microsoft-edge", "Microsoft Edge Adult History", "Microsoft Edge Extensions"}),
        chromeFamilyBrowser({"vivaldi", "Vivaldi", {"vivaldi-bin"}, {".config/vivaldi"}, ".cache/vivaldi",
                             "Vivaldi Adult History", "Vivaldi Extensions"}),
        chromeFamilyBrowser({"opera", "Opera", {"opera"}, {".config/opera"}, ".cache/opera", "Opera Adult History",
                             "Opera Extensions"}),
    };
    return kBrowsers;
}

} // namespace

// Every table is made at its first use, so a layout is complete whenever it is first asked for.
const DiskLayout& linuxLayout() {
    // Firefox follows XDG (~/.config/mozilla) only when ~/.mozilla is absent, so the old folder comes first.
    // Its main process renames itself "GeckoMain".
    static const Browser kFirefox{
        .key = "firefox",
        .name = "Firefox",
        .application = {},
        .icon = "browser_firefox",
        .processNames = {"firefox", "firefox-esr", "firefox-bin", "GeckoMain"},
        .family = BrowserFamily::Firefox,
        .dataFolders = {".mozilla/firefox", ".config/mozilla/firefox", "snap/firefox/common/.mozilla/firefox",
                        ".var/app/org.mozilla.firefox/.mozilla/firefox"},
        .cacheFolder = ".cache/mozilla/firefox",
        .profiles = ProfileRule::ProfilesIni,
        .adultHistoryName = "Firefox Adult History",
        .historyDatabase = {Anchor::Profile, "places.sqlite"},
        .profileHistory = {Anchor::Profile, "places.sqlite"},
        .history = &kFirefoxHistory,
        .extensions = {Anchor::Profile, "extensions"},
        .extensionsCaption = "Firefox Extensions",
        .preferenceFiles = {{Anchor::Profile, "prefs.js"}},
    };

    // Thunderbird keeps its profiles as Firefox does; its section is "Mail", and that is the name the
    // running-browser panel shows for it.
    static const Browser kThunderbird{
        .key = "thunderbird",
        .name = "Mail",
        .application = {},
        .icon = "mail",
        .processNames = {"thunderbird"},
        .family = BrowserFamily::Mail,
        .dataFolders = {".thunderbird", "snap/thunderbird/common/.thunderbird",
                        ".var/app/org.mozilla.Thunderbird/.thunderbird"},
        .cacheFolder = ".cache/thunderbird",
        .profiles = ProfileRule::ProfilesIni,
        .adultHistoryName = {},
        .historyDatabase = {Anchor::Profile, {}},
        .profileHistory = {Anchor::Profile, {}},
        .history = nullptr,
        .extensions = {Anchor::Profile, {}},
        .extensionsCaption = {},
        .preferenceFiles = {},
    };

    const std::array<Browser, 6>& chrome = chromeFamily();
    static const std::vector<SourceTable> kChromeTables = [&chrome] {
        std::vector<SourceTable> tables;
        for (const Browser& browser : chrome) {
            tables.push_back(SourceTable{.browser = &browser,
                                         .items = chromeProfileRows(),
                                         .gathered = {chromeCachesRow({Anchor::ProfileCache, ""})}});
        }
        return tables;
    }();

    static const SourceTable kFirefoxTable{
        .browser = &kFirefox,
        .profileInNames = true,
        .items = firefoxProfileRows({{Anchor::ProfileCache, ""}}),
        .gathered = {firefoxCrashReportsRow()},
    };

    // ~/.cache holds the browsers' caches and the thumbnails too: each counts once in the totals.
    static const SourceTable kSystemTable{
        .name = "System",
        .icon = "system",
        .alwaysShown = true,
        .items =
            {
                {"System Cache Files", {{Anchor::Home, ".cache"}}},
                {"Thumbnails", {{Anchor::Home, ".cache/thumbnails"}}},
                {"Recent Files", {{Anchor::Home, ".local/share/recently-used.xbel"}}},
                {"Trash Files",
                 {{Anchor::Home, ".local/share/Trash/files", Expansion::Entries},
                  {Anchor::Home, ".local/share/Trash/info", Expansion::Entries}}},
                {"Applications Log Files",
                 {{Anchor::Home, ".xsession-errors"},
                  {Anchor::Home, ".xsession-errors.old"},
                  {Anchor::Home, ".local/share/xorg", Expansion::EntriesEndingIn, ".log"}}},
            },
    };

    // Thunderbird's profiles and Evolution's cache. Thunderbird saves the attachments it opens in each profile's
    // "Attachments" folder.
    static const SourceTable kMailTable{
        .browser = &kThunderbird,
        .items = {},
        .gathered =
            {
                {"Mail Cache Files",
                 {{Anchor::CacheFolder, ""},
                  {Anchor::Profile, "cache2"},
                  {Anchor::Profile, "startupCache"},
                  {Anchor::Home, ".cache/evolution"}}},
                {"Mail Download", {{Anchor::Profile, "Attachments"}}},
            },
    };

    static const SourceTable kFlashTable{
        .name = "Flash",
        .icon = "flash",
        .presence = {".macromedia/Flash_Player", ".adobe/Flash_Player"},
        .items = {{"Flash Cookies", {{Anchor::Home, ".macromedia/Flash_Player"}, {Anchor::Home, ".adobe/Flash_Player"}}}},
    };

    using Slot = SectionSlot::Kind;
    static const DiskLayout kLayout = [&chrome] {
        DiskLayout layout{
            .name = "linux",
            .homes = "/home",
            .browsers = {},
            .adultHistory = {},
            .sections = {},
            .inventories =
                {
                    {"launch-agents", {{Anchor::Root, "/etc/xdg/autostart"}, {Anchor::Home, ".config/autostart"}}},
                    {"launch-daemons",
                     {{Anchor::Root, "/etc/systemd/system"}, {Anchor::Home, ".config/systemd/user"}},
                     false,
                     {".service", ".socket", ".timer", ".path", ".target", ".mount", ".automount", ".swap", ".slice"}},
                    {"app-support", {{Anchor::Home, ".config"}, {Anchor::Home, ".local/share"}}},
                    {"apps",
                     {{Anchor::Root, "/usr/share/applications"},
                      {Anchor::Root, "/usr/local/share/applications"},
                      {Anchor::Home, ".local/share/applications"},
                      {Anchor::Root, "/var/lib/flatpak/exports/share/applications"},
                      {Anchor::Home, ".local/share/flatpak/exports/share/applications"},
                      {Anchor::Root, "/var/lib/snapd/desktop/applications"}},
                     false,
                     {".desktop"}},
                },
            .adultHistoryOfExistingDatabases = true,
            .countNestedOnce = true,
        };
        for (const Browser& browser : chrome) {
            layout.browsers.push_back(&browser);
            layout.adultHistory.push_back(&browser);
        }
        layout.browsers.push_back(&kFirefox);
        layout.browsers.push_back(&kThunderbird);
        layout.adultHistory.push_back(&kFirefox);
        for (const SourceTable& table : kChromeTables) {
            layout.sections.push_back({Slot::Source, &table});
        }
        layout.sections.insert(layout.sections.end(), {{Slot::Source, &kFirefoxTable},
                                                       {Slot::AdultHistory},
                                                       {Slot::BrowserExtensions},
                                                       {Slot::Source, &kSystemTable},
                                                       {Slot::Source, &kMailTable},
                                                       {Slot::Source, &kFlashTable},
                                                       {Slot::Promotion}});
        return layout;
    }();
    return kLayout;
}

} // namespace tidewell
