#include "layout/browser_rows.hpp"

namespace tidewell {

// Saved passwords ("Login Data") start unticked: a clean with the defaults never removes them.
//
// Old and current names sit side by side: a profile written by an older browser keeps the old files, and a name
// that is not there measures 0 and removes nothing.

namespace {
constexpr std::string_view kSavedPasswords = "saved passwords";
} // namespace

std::vector<ItemRow> chromeProfileRows() {
    // "Pepper Data" is listed twice in "Local Storage (%@)" and so is measured twice. The address database of
    // the segmentation platform lies in the data folder, beside the profiles, and records every visited address.
    return {
        {"Cookies (%@)",
         {{Anchor::Profile, "Cookies"},
          {Anchor::Profile, "Cookies-journal"},
          {Anchor::Profile, "Network/Cookies"},
          {Anchor::Profile, "Network/Cookies-journal"}}},
        {"Visited Links (%@)", {{Anchor::Profile, "Visited Links"}}},
        {"History (%@)",
         {{Anchor::Profile, "History-journal"},
          {Anchor::Profile, "History"},
          {Anchor::Profile, "History Provider Cache"},
          {Anchor::Profile, "Shortcuts"},
          {Anchor::Profile, "Network Action Predictor"},
          {Anchor::DataFolder, "segmentation_platform/ukm_db"}}},
        {"Login Data (%@)",
         {{Anchor::Profile, "Login Data"},
          {Anchor::Profile, "Login Data-journal"},
          {Anchor::Profile, "Login Data For Account"}},
         false,
         false,
         kSavedPasswords},
        {"LastSession (%@)",
         {{Anchor::Profile, "Session Storage"},
          {Anchor::Profile, "Last Session"},
          {Anchor::Profile, "Last Tabs"},
          {Anchor::Profile, "Sessions"},
          {Anchor::Profile, "Sessions_Encrypted"}}},
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
    };
}

ItemRow chromeCachesRow(Location caches) {
    return {"Browser Caches",
            {{Anchor::Profile, "Application Cache"},
             {Anchor::Profile, "GPUCache"},
             {Anchor::Profile, "Code Cache"},
             {Anchor::Profile, "Service Worker/CacheStorage"},
             {Anchor::Profile, "Service Worker/ScriptCache"},
             caches}};
}

std::vector<ItemRow> firefoxProfileRows(std::vector<Location> caches) {
    return {
        {"Cookies",
         {{Anchor::Profile, "cookies.sqlite"},
          {Anchor::Profile, "webappsstore.sqlite"},
          {Anchor::Profile, "chromeappsstore.sqlite"}}},
        {"Browser Caches", std::move(caches)},
        {"Login Data",
         {{Anchor::Profile, "logins.json"},
          {Anchor::Profile, "key3.db"},
          {Anchor::Profile, "logins.db"},
          {Anchor::Profile, "key4.db"}},
         false,
         false,
         kSavedPasswords},
        {"LastSession",
         {{Anchor::Profile, "sessionstore-backups"},
          {Anchor::Profile, "sessionCheckpoints.json"},
          {Anchor::Profile, "sessionstore.bak"},
          {Anchor::Profile, "sessionstore.jsonlz4"}}},
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
          {Anchor::Profile, "mimeTypes.rdf"},
          {Anchor::Profile, "storage"}}},
    };
}

ItemRow firefoxCrashReportsRow() {
    return {"Crash Reports", {{Anchor::DataFolder, "Crash Reports"}}};
}

} // namespace tidewell
