#include "sample_disk/sample_disk.hpp"

#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace tidewell::testing {

namespace {

constexpr const char* kSafariSchema =
    "CREATE TABLE history_items (id INTEGER PRIMARY KEY AUTOINCREMENT,url TEXT NOT NULL UNIQUE,"
    "domain_expansion TEXT NULL,visit_count INTEGER NOT NULL,daily_visit_counts BLOB NOT NULL,"
    "weekly_visit_counts BLOB NULL,autocomplete_triggers BLOB NULL,"
    "should_recompute_derived_visit_counts INTEGER NOT NULL,visit_count_score INTEGER NOT NULL);"
    "CREATE TABLE history_visits (id INTEGER PRIMARY KEY AUTOINCREMENT,history_item INTEGER NOT NULL "
    "REFERENCES history_items(id) ON DELETE CASCADE,visit_time REAL NOT NULL,title TEXT NULL,"
    "load_successful BOOLEAN NOT NULL DEFAULT 1,http_non_get BOOLEAN NOT NULL DEFAULT 0,"
    "synthesized BOOLEAN NOT NULL DEFAULT 0,origin INTEGER NOT NULL DEFAULT 0,"
    "generation INTEGER NOT NULL DEFAULT 0,attributes INTEGER NOT NULL DEFAULT 0,score INTEGER NOT NULL DEFAULT 0);";
constexpr const char* kSafariInsert =
    "INSERT INTO history_items (id,url,visit_count,daily_visit_counts,should_recompute_derived_visit_counts,"
    "visit_count_score) VALUES (?1,?2,1,x'01',0,100);"
    "INSERT INTO history_visits (history_item,visit_time,title) VALUES (?1,700000000.0+?1,'Page');";

constexpr const char* kChromeSchema =
    "CREATE TABLE urls(id INTEGER PRIMARY KEY AUTOINCREMENT,url LONGVARCHAR,title LONGVARCHAR,"
    "visit_count INTEGER DEFAULT 0 NOT NULL,typed_count INTEGER DEFAULT 0 NOT NULL,"
    "last_visit_time INTEGER NOT NULL,hidden INTEGER DEFAULT 0 NOT NULL);"
    "CREATE TABLE visits(id INTEGER PRIMARY KEY AUTOINCREMENT,url INTEGER NOT NULL,visit_time INTEGER NOT NULL,"
    "from_visit INTEGER,transition INTEGER DEFAULT 0 NOT NULL,segment_id INTEGER,"
    "visit_duration INTEGER DEFAULT 0 NOT NULL);";
constexpr const char* kChromeInsert =
    "INSERT INTO urls (id,url,title,visit_count,last_visit_time) VALUES (?1,?2,'Page',1,13300000000000000+?1);"
    "INSERT INTO visits (url,visit_time) VALUES (?1,13300000000000000+?1);";

constexpr const char* kFirefoxSchema =
    "PRAGMA journal_mode=WAL;"
    "CREATE TABLE moz_places (id INTEGER PRIMARY KEY, url LONGVARCHAR, title LONGVARCHAR, rev_host LONGVARCHAR,"
    " visit_count INTEGER DEFAULT 0, hidden INTEGER DEFAULT 0 NOT NULL, typed INTEGER DEFAULT 0 NOT NULL,"
    " frecency INTEGER DEFAULT -1 NOT NULL, last_visit_date INTEGER , guid TEXT,"
    " foreign_count INTEGER DEFAULT 0 NOT NULL, url_hash INTEGER DEFAULT 0 NOT NULL, description TEXT,"
    " preview_image_url TEXT, origin_id INTEGER, site_name TEXT);"
    "CREATE TABLE moz_historyvisits (id INTEGER PRIMARY KEY, from_visit INTEGER, place_id INTEGER,"
    " visit_date INTEGER, visit_type INTEGER, session INTEGER, source INTEGER DEFAULT 0 NOT NULL,"
    " triggeringPlaceId INTEGER);";
constexpr const char* kFirefoxInsert =
    "INSERT INTO moz_places (id,url,title,visit_count,last_visit_date,guid) VALUES (?1,?2,'Page',1,"
    "1700000000000000+?1,'guid'||?1);"
    "INSERT INTO moz_historyvisits (place_id,visit_date,visit_type) VALUES (?1,1700000000000000+?1,1);";

// The favicon database of a Chrome-family profile, as the browser keeps it beside its history.
constexpr const char* kChromeFaviconsSchema =
    "PRAGMA page_size=1024;"
    "CREATE TABLE meta(key LONGVARCHAR NOT NULL UNIQUE PRIMARY KEY, value LONGVARCHAR);"
    "CREATE TABLE icon_mapping(id INTEGER PRIMARY KEY, page_url LONGVARCHAR NOT NULL, icon_id INTEGER,"
    " page_url_type INTEGER DEFAULT 0);"
    "CREATE INDEX icon_mapping_page_url_idx ON icon_mapping(page_url);"
    "CREATE INDEX icon_mapping_icon_id_idx ON icon_mapping(icon_id);"
    "CREATE TABLE favicons(id INTEGER PRIMARY KEY, url LONGVARCHAR NOT NULL, icon_type INTEGER DEFAULT 1);"
    "CREATE TABLE favicon_bitmaps(id INTEGER PRIMARY KEY, icon_id INTEGER NOT NULL, last_updated INTEGER DEFAULT 0,"
    " image_data BLOB, width INTEGER DEFAULT 0, height INTEGER DEFAULT 0, last_requested INTEGER DEFAULT 0);"
    "CREATE INDEX favicon_bitmaps_icon_id ON favicon_bitmaps(icon_id);";
constexpr const char* kChromeFaviconsInsert =
    "INSERT INTO favicons (id,url) VALUES (?1,?2||'/favicon.ico');"
    "INSERT INTO favicon_bitmaps (icon_id,image_data,width,height) VALUES (?1,x'89504e47',16,16);"
    "INSERT INTO icon_mapping (page_url,icon_id) VALUES (?2,?1);";

void check(int rc, sqlite3* db, const std::string& what) {
    if (rc != SQLITE_OK && rc != SQLITE_DONE && rc != SQLITE_ROW) {
        throw std::runtime_error(what + ": " + (db != nullptr ? sqlite3_errmsg(db) : "sqlite error"));
    }
}

// Runs every statement of `sql` with ?1 bound to id and ?2 to url.
void runInserts(sqlite3* db, const char* sql, std::int64_t id, const std::string& url) {
    const char* rest = sql;
    while (rest != nullptr && *rest != '\0') {
        sqlite3_stmt* statement = nullptr;
        check(sqlite3_prepare_v2(db, rest, -1, &statement, &rest), db, "prepare");
        if (statement == nullptr) {
            break;
        }
        sqlite3_bind_int64(statement, 1, id);
        if (sqlite3_bind_parameter_count(statement) >= 2) {
            sqlite3_bind_text(statement, 2, url.c_str(), static_cast<int>(url.size()), SQLITE_TRANSIENT);
        }
        const int rc = sqlite3_step(statement);
        sqlite3_finalize(statement);
        check(rc, db, "insert");
    }
}

// A manifest, and the files an extension's version folder holds.
void writeChromeExtension(DiskBuilder& d, const std::string& folder, const nlohmann::ordered_json& manifest,
                          std::size_t scriptBytes) {
    d.text(folder + "/manifest.json", manifest.dump(2)).file(folder + "/background.js", scriptBytes);
}

// Three extensions in "Default" (one named through its messages, one with two installed versions, one with a
// plain name) and the first of them again in "Profile 1".
void writeSampleChromeExtensions(DiskBuilder& d, const std::string& chrome) {
    for (const std::string profile : {"Default", "Profile 1"}) {
        const std::string notes = chrome + profile + "/Extensions/aaaabbbbccccddddeeeeffffgggghhhh/2.1.0_0";
        writeChromeExtension(
            d, notes,
            {{"manifest_version", 3}, {"name", "__MSG_appName__"}, {"version", "2.1.0"}, {"default_locale", "en"}},
            24000);
        d.text(notes + "/_locales/en/messages.json", R"({"appName":{"message":"Page Notes"}})")
            .text(notes + "/_locales/fr/messages.json", R"({"appName":{"message":"Notes de page"}})");
    }
    const std::string extensions = chrome + "Default/Extensions/";
    for (const std::string version : {"1.0.0_0", "1.1.0_0"}) {
        writeChromeExtension(d, extensions + "hhhhggggffffeeeeddddccccbbbbaaaa/" + version,
                             {{"manifest_version", 3}, {"name", "Tab Tidy"}, {"version", version.substr(0, 5)}}, 15000);
    }
    writeChromeExtension(d, extensions + "mmmmnnnnooooppppaaaabbbbccccdddd/4.0_0",
                         {{"manifest_version", 2}, {"name", "Reader Mode Plus"}, {"version", "4.0"}}, 61000);
}

} // namespace

namespace {

// A Chrome-family "Favicons" mapping each URL to an icon of its own, its file then padded with zeros to `bytes`
// (SQLite reads only the pages its header counts).
void writeChromeFavicons(const std::string& path, const std::vector<std::string>& urls, std::uintmax_t bytes) {
    makeParents(path);
    sqlite3* db = nullptr;
    check(sqlite3_open(path.c_str(), &db), db, "open " + path);
    check(sqlite3_exec(db, kChromeFaviconsSchema, nullptr, nullptr, nullptr), db, "schema");
    std::int64_t id = 0;
    for (const std::string& url : urls) {
        runInserts(db, kChromeFaviconsInsert, ++id, url);
    }
    sqlite3_close(db);
    const std::uintmax_t size = std::filesystem::file_size(path);
    if (size < bytes) {
        std::ofstream(path, std::ios::binary | std::ios::app) << std::string(bytes - size, '\0');
    }
}

} // namespace

void writeHistoryDatabase(const std::string& path, Browser browser, const std::vector<std::string>& urls) {
    makeParents(path);
    sqlite3* db = nullptr;
    check(sqlite3_open(path.c_str(), &db), db, "open " + path);
    const char* schema = browser == Browser::Safari   ? kSafariSchema
                         : browser == Browser::Chrome ? kChromeSchema
                                                      : kFirefoxSchema;
    const char* insert = browser == Browser::Safari   ? kSafariInsert
                         : browser == Browser::Chrome ? kChromeInsert
                                                      : kFirefoxInsert;
    check(sqlite3_exec(db, schema, nullptr, nullptr, nullptr), db, "schema");
    check(sqlite3_exec(db, "BEGIN", nullptr, nullptr, nullptr), db, "begin");
    std::int64_t id = 0;
    for (const std::string& url : urls) {
        runInserts(db, insert, ++id, url);
    }
    check(sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr), db, "commit");
    sqlite3_close(db);
}

std::vector<std::string> sampleHistoryUrls() {
    return {
        "https://news.example.org/today",
        "https://www.example.com/search?q=weather",
        "https://www.freeporn-tube.example/watch/123",
        "https://mail.example.net/inbox",
        "https://XXX-Videos.example/best",
        "https://shop.example.com/cart",
        "https://www.hot-sexcam.example/live",
        "https://docs.example.org/manual/intro.html",
    };
}

namespace {

// The files of a Chrome-family profile, today's names among them, and its history.
void writeChromeProfile(DiskBuilder& d, const std::string& p, const std::vector<std::string>& urls) {
    d.file(p + "Cookies", 28000)
        .file(p + "Network/Cookies", 36000)
        .file(p + "Visited Links", 130000)
        .file(p + "Login Data", 40000)
        .file(p + "Login Data For Account", 40000)
        .file(p + "Preferences", 9000);
    writeChromeFavicons(d.at(p + "Favicons"), urls, 20000);
    d.file(p + "Top Sites", 20000)
        .file(p + "Shortcuts", 20000)
        .file(p + "Network Action Predictor", 12000)
        .file(p + "Sessions/Session_13300000000000001", 6000)
        .file(p + "Sessions_Encrypted/Tabs_13300000000000001", 3000)
        .file(p + "Local Storage/leveldb/000003.log", 12000)
        .file(p + "Web Data", 60000)
        .file(p + "GPUCache/data_0", 8000)
        .file(p + "Code Cache/js/index", 24000)
        .file(p + "Service Worker/CacheStorage/index.txt", 5000)
        .file(p + "Service Worker/ScriptCache/index", 7000);
    writeHistoryDatabase(d.at(p + "History"), Browser::Chrome, urls);
}

// A profiles.ini of Firefox's kind naming these (folder, name) profiles, in order.
std::string profilesIni(const std::vector<std::pair<std::string, std::string>>& profiles) {
    std::string ini = "[General]\nStartWithLastProfile=1\nVersion=2\n";
    for (std::size_t i = 0; i < profiles.size(); ++i) {
        ini += "\n[Profile" + std::to_string(i) + "]\nName=" + profiles[i].second +
               "\nIsRelative=1\nPath=" + profiles[i].first + (i == 0 ? "\nDefault=1\n" : "\n");
    }
    return ini;
}

void writeLinuxSampleDisk(const std::string& root, const std::string& login) {
    DiskBuilder d(root, login, linuxLayout());
    const std::vector<std::string> urls = sampleHistoryUrls();

    // Chrome, two profiles, and the snap Chromium
    const std::string chrome = ".config/google-chrome/";
    d.chromeLocalState({{"Default", "Person 1"}, {"Profile 1", "Work"}}, ".config/google-chrome");
    writeChromeProfile(d, chrome + "Default/", urls);
    writeChromeProfile(d, chrome + "Profile 1/", urls);
    d.file(chrome + "segmentation_platform/ukm_db", 16000);
    writeSampleChromeExtensions(d, chrome);
    d.file(".cache/google-chrome/Default/Cache/Cache_Data/data_1", 300000)
        .file(".cache/google-chrome/Profile 1/Cache/Cache_Data/data_1", 80000);
    d.chromeLocalState({{"Default", "Person 1"}}, "snap/chromium/common/chromium");
    writeChromeProfile(d, "snap/chromium/common/chromium/Default/", urls);
    writeChromeExtension(d, "snap/chromium/common/chromium/Default/Extensions/qqqqrrrrssssttttuuuuvvvvwwwwxxxx/1.0_0",
                         {{"manifest_version", 3}, {"name", "Dark Pages"}, {"version", "1.0"}}, 9000);

    // Firefox: the current profile and an old, nearly empty one
    d.text(".mozilla/firefox/profiles.ini",
           profilesIni({{"k2x9w0aq.default-release", "default-release"}, {"m4p7q1zz.default", "default"}}));
    const std::string ff = ".mozilla/firefox/k2x9w0aq.default-release/";
    d.file(ff + "cookies.sqlite", 50000)
        .file(ff + "logins.db", 4000)
        .file(ff + "key4.db", 16000)
        .file(ff + "sessionstore.jsonlz4", 15000)
        .file(ff + "prefs.js", 12000)
        .file(ff + "formhistory.sqlite", 30000)
        .file(ff + "storage/default/https+++www.example.com/ls/data.sqlite", 8000)
        .file(ff + "extensions/notes@example.org/notes.js", 26000)
        .file(".mozilla/firefox/m4p7q1zz.default/times.json", 50)
        .file(".mozilla/firefox/Crash Reports/InstallTime20260101", 20)
        .file(".cache/mozilla/firefox/k2x9w0aq.default-release/cache2/entries/1F2E", 180000);
    const std::string profile =
        std::filesystem::absolute(d.at(ff.substr(0, ff.size() - 1))).lexically_normal().string() + "/";
    const nlohmann::ordered_json addons = {{"schemaVersion", 35},
                                           {"addons",
                                            {{{"id", "notes@example.org"},
                                              {"version", "3.2.1"},
                                              {"defaultLocale", {{"name", "Quick Notes"}}},
                                              {"descriptor", profile + "extensions/notes@example.org"}}}}};
    d.text(ff + "extensions.json", addons.dump());
    writeHistoryDatabase(d.at(ff + "places.sqlite"), Browser::Firefox, urls);

    // Thunderbird and Evolution
    d.text(".thunderbird/profiles.ini", profilesIni({{"t8c3v5bn.default-release", "default-release"}}))
        .file(".thunderbird/t8c3v5bn.default-release/startupCache/startupCache.8.little", 40000)
        .file(".thunderbird/t8c3v5bn.default-release/Attachments/Invoice.pdf", 75000)
        .file(".thunderbird/t8c3v5bn.default-release/Mail/Local Folders/Inbox", 90000)
        .file(".cache/thunderbird/t8c3v5bn.default-release/cache2/entries/77AA", 60000)
        .file(".cache/evolution/mail/1/cur/message", 20000);

    // System: thumbnails, recent files, application caches, the trash, session logs; and Flash
    d.file(".cache/thumbnails/normal/0123456789abcdef.png", 14000)
        .file(".cache/thumbnails/large/fedcba9876543210.png", 52000)
        .file(".cache/fontconfig/cache-8", 30000)
        .file(".cache/pip/http/0/1/wheel", 120000)
        .file(".local/share/recently-used.xbel", 6000)
        .file(".local/share/Trash/files/old-report.odt", 48000)
        .file(".local/share/Trash/files/holiday.jpg", 350000)
        .text(".local/share/Trash/info/old-report.odt.trashinfo", "[Trash Info]\nPath=/home/ann/old-report.odt\n")
        .text(".local/share/Trash/info/holiday.jpg.trashinfo", "[Trash Info]\nPath=/home/ann/holiday.jpg\n")
        .file(".xsession-errors", 9000)
        .file(".xsession-errors.old", 4000)
        .file(".local/share/xorg/Xorg.0.log", 30000)
        .file(".local/share/xorg/Xorg.0.log.old", 28000)
        .file(".macromedia/Flash_Player/#SharedObjects/ABCD/site.example/settings.sol", 700);

    // Start-up entries, services, support folders and applications for the inventories
    d.text("/etc/xdg/autostart/print-applet.desktop", "[Desktop Entry]\nName=Print Applet\n")
        .text(".config/autostart/sync-client.desktop", "[Desktop Entry]\nName=Sync Client\n")
        .text("/etc/systemd/system/backup.service", "[Service]\nExecStart=/usr/bin/true\n")
        .folder("/etc/systemd/system/multi-user.target.wants")
        .text(".config/systemd/user/notes-sync.timer", "[Timer]\nOnCalendar=hourly\n")
        .text("/usr/share/applications/text-editor.desktop", "[Desktop Entry]\nName=Text Editor\n")
        .text("/usr/share/applications/mimeinfo.cache", "[MIME Cache]\n")
        .text(".local/share/applications/sketch-pad.desktop", "[Desktop Entry]\nName=Sketch Pad\n")
        .text("/var/lib/flatpak/exports/share/applications/org.example.Paint.desktop", "[Desktop Entry]\n")
        .text("/var/lib/snapd/desktop/applications/chromium_chromium.desktop", "[Desktop Entry]\n")
        .folder(".config/sketch-pad")
        .folder(".local/share/sketch-pad");
}

} // namespace

void writeSampleDisk(const std::string& root, const std::string& login, const DiskLayout& layout) {
    if (&layout == &linuxLayout()) {
        writeLinuxSampleDisk(root, login);
        return;
    }
    DiskBuilder d(root, login);
    d.allApps();
    const std::vector<std::string> urls = sampleHistoryUrls();

    // Safari
    d.file("Library/Cookies/Cookies.binarycookies", 20000)
        .file("Library/Cookies/com.apple.Safari.SafeBrowsing.binarycookies", 3000)
        .file("Library/Caches/com.apple.Safari/Cache.db", 250000)
        .file("Library/Caches/com.apple.Safari/fsCachedData/0A1B", 40000)
        .file("Library/Caches/com.apple.Safari/fsCachedData/0A1C", 90000)
        .file("Library/Safari/HistoryIndex.sk", 12000)
        .file("Library/Safari/Bookmarks.plist", 6000)
        .file("Library/Safari/Downloads.plist", 900)
        .file("Library/Safari/LastSession.plist", 4000)
        .file("Library/Safari/Configurations.plist.signed", 700)
        .file("Library/Safari/Touch Icons/1.png", 5000)
        .file("Library/Safari/WebpageIcons/icons.db", 30000)
        .file("Library/Safari/TopSites.plist", 2000)
        .file("Library/Safari/LocalStorage/https_news.example.org_0.localstorage", 8000)
        .file("Library/Safari/Databases/Databases.db", 8000)
        .file("Library/Safari/ReadingListArchives/1/page.webarchive", 60000)
        .file("Library/Safari/Form Values", 1000)
        .file("Library/Safari/SearchDescriptions.plist", 500)
        .file("Library/Safari/WebFeedSources.plist", 300)
        .file("Library/Safari/Extensions/Extensions.plist", 1200)
        .file("Library/Safari/Extensions/.DS_Store", 6148)
        .file("Library/Safari/Extensions/Clip Saver.safariextz", 180000);
    writeHistoryDatabase(d.at("Library/Safari/History.db"), Browser::Safari, urls);

    // Chrome, two profiles
    d.chromeLocalState({{"Default", "Person 1"}, {"Profile 1", "Work"}});
    for (const std::string profile : {"Default", "Profile 1"}) {
        const std::string p = "Library/Application Support/Google/Chrome/" + profile + "/";
        d.file(p + "Cookies", 28000)
            .file(p + "Visited Links", 130000)
            .file(p + "Login Data", 40000)
            .file(p + "Preferences", 9000);
        writeChromeFavicons(d.at(p + "Favicons"), urls, 20000);
        d.file(p + "Top Sites", 20000)
            .file(p + "Current Session", 3000)
            .file(p + "Current Tabs", 3000)
            .file(p + "Local Storage/leveldb/000003.log", 12000)
            .file(p + "IndexedDB/https_www.example.com_0.indexeddb.leveldb/LOG", 400)
            .file(p + "Pepper Data/Shockwave Flash/WritableRoot/settings.sol", 600)
            .file(p + "Web Data", 60000)
            .file(p + "GPUCache/data_0", 8000)
            .file(p + "Application Cache/Index", 4000);
        writeHistoryDatabase(d.at(p + "History"), Browser::Chrome, urls);
    }
    writeSampleChromeExtensions(d, "Library/Application Support/Google/Chrome/");
    d.file("Library/Caches/Google/Chrome/Default/Cache/data_1", 300000)
        .file("Library/Caches/Google/Chrome/Default/Cache/data_2", 120000);

    // Firefox
    const std::string ff = "Library/Application Support/Firefox/Profiles/k2x9w0aq.default-release/";
    d.file(ff + "cookies.sqlite", 50000)
        .file(ff + "webappsstore.sqlite", 20000)
        .file(ff + "logins.json", 2000)
        .file(ff + "key3.db", 16000)
        .file(ff + "sessionstore-backups/recovery.jsonlz4", 15000)
        .file(ff + "prefs.js", 12000)
        .file(ff + "xulstore.json", 500)
        .file(ff + "formhistory.sqlite", 30000)
        .file(ff + "permissions.sqlite", 8000)
        .file(ff + "content-prefs.sqlite", 8000)
        .file(ff + "extensions/notes@example.org/manifest.json", 400)
        .file(ff + "extensions/notes@example.org/notes.js", 26000)
        .file(ff + "features/default-theme@example.org.xpi", 9000);
    // Firefox records absolute locations; the sample disk may be written under a relative root.
    const std::string profile =
        std::filesystem::absolute(d.at(ff.substr(0, ff.size() - 1))).lexically_normal().string() + "/";
    const nlohmann::ordered_json addons = {{"schemaVersion", 35},
                                           {"addons",
                                            {{{"id", "notes@example.org"},
                                              {"version", "3.2.1"},
                                              {"defaultLocale", {{"name", "Quick Notes"}, {"creator", "Example Labs"}}},
                                              {"descriptor", profile + "extensions/notes@example.org"},
                                              {"path", profile + "extensions/notes@example.org.xpi"}},
                                             {{"id", "default-theme@example.org"},
                                              {"version", "1.3"},
                                              {"defaultLocale", {{"name", "Default"}}},
                                              {"path", profile + "features/default-theme@example.org.xpi"}}}}};
    d.text(ff + "extensions.json", addons.dump());
    writeHistoryDatabase(d.at(ff + "places.sqlite"), Browser::Firefox, urls);
    d.file("Library/Caches/Firefox/Profiles/k2x9w0aq.default-release/cache2/entries/1F2E", 180000)
        .file("Library/Application Support/Firefox/Crash Reports/InstallTime20240101", 20);

    // Mail, Flash, containers, logs, quarantine, trash
    const std::string mail = "Library/Containers/com.apple.mail/Data/Library/";
    d.file(mail + "Mail Downloads/Invoice.pdf", 75000)
        .file(mail + "Caches/com.apple.mail/Cache.db", 90000)
        .file(mail + "Logs/Mail/activity.log", 3000)
        .file(mail + "Saved Application State/com.apple.mail.savedState/windows.plist", 1500);
    d.file("Library/Preferences/Macromedia/Flash Player/#SharedObjects/ABCD/site.example/settings.sol", 700)
        .file("Library/Caches/Adobe/Flash Player/AssetCache/ABCD/cache.swz", 40000);
    d.file("Library/Containers/com.example.notes/Data/Library/Caches/index.db", 16000)
        .file("Library/Containers/com.example.notes/Data/Library/Logs/notes.log", 2000)
        .file("Library/Containers/.DS_Store", 6148);
    d.file("Library/Logs/DiagnosticReports/Safari_2026-11-01.crash", 24000)
        .file("Library/Logs/install.log", 5000)
        .file("Library/Caches/com.example.editor/Cache.db", 64000);
    d.file("Library/Preferences/com.apple.LaunchServices.QuarantineEventsV2", 36000)
        .file("Library/Preferences/com.apple.LaunchServices.QuarantineEventsV2-journal", 500)
        .file("Library/Preferences/com.apple.finder.plist", 4000);
    d.file(".Trash/old-report.docx", 48000).file(".Trash/holiday.jpg", 350000);

    // Start-up items, support folders and applications for the inventories
    d.file("/Library/LaunchAgents/com.example.updater.agent.plist", 600)
        .file("/Library/LaunchDaemons/com.example.printhelper.plist", 700)
        .file("/Library/Application Support/Example Audio/Presets/warm.preset", 2000)
        .file("Library/LaunchAgents/com.example.sync.plist", 500)
        .app("/Users/" + login + "/Applications/Sketch Pad.app");
}

} // namespace tidewell::testing
