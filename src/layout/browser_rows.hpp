#pragma once

#include <vector>

#include "layout/browsers.hpp"
#include "layout/tables.hpp"

namespace tidewell {

/// The history of Chrome's family. It keeps its open tabs beside the history database.
inline constexpr HistorySchema kChromeFamilyHistory{.table = "urls",
                                                    .logFromWindow = "Chrome Deleted",
                                                    .logFromHourlyPurge = "Chrome Deleted",
                                                    .sessionFiles = true,
                                                    .format = BrowserFamily::Chrome,
                                                    .iconDatabase = "Favicons"};
/// Firefox's history. The window's Firefox purge has always logged Chrome's text.
inline constexpr HistorySchema kFirefoxHistory{.table = "moz_places",
                                               .logFromWindow = "Chrome Deleted",
                                               .logFromHourlyPurge = "Firefox Deleted",
                                               .sessionFiles = false,
                                               .format = BrowserFamily::Firefox,
                                               .iconDatabase = "favicons.sqlite"};

// The items of the browsers whose files are the same on every layout: a profile folder of Chrome's family or of
// Firefox holds the same names wherever the profile lies.

/// The items made for each profile of a Chrome-family browser: "Cookies (%@)" to "Local Storage (%@)".
[[nodiscard]] std::vector<ItemRow> chromeProfileRows();

/// A Chrome-family browser's "Browser Caches": the caches inside each profile, then `caches` (the browser's cache
/// folder, or each profile's folder in it).
[[nodiscard]] ItemRow chromeCachesRow(Location caches);

/// The items made for each Firefox profile, "Cookies" to "Local Storage", with `caches` as its "Browser Caches".
[[nodiscard]] std::vector<ItemRow> firefoxProfileRows(std::vector<Location> caches);

/// Firefox's "Crash Reports", once for the whole data folder.
[[nodiscard]] ItemRow firefoxCrashReportsRow();

} // namespace tidewell
