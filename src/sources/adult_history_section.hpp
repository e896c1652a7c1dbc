#pragma once

#include "catalogue/scan_driver.hpp"
#include "layout/disk_root.hpp"

namespace tidewell {

/// The "Adult History" section: exactly "Name" "Adult History", "Img" "adult", "List", "isChecked" true and
/// "isEnabled" true (no "Size": nothing is measured). Its items are those of the layout's Adult History browsers,
/// in its order (on a macOS disk Chrome, Safari, Firefox), each only when the browser is installed: exactly
/// "NameText" (the browser's Adult History name), "isChecked" true, "isEnabled" true, "Path", the file URL of the
/// browser's history database (Chrome's "Default/History", Safari's "History.db", "places.sqlite" of the first
/// profile), and "AllPaths", that database followed by every other profile's, in profile order. Each is a
/// HistoryItem of its browser. On a macOS disk whether a database exists is not looked at; on a layout that offers
/// existing databases only (Linux), "Path" is the first profile's database that exists, "AllPaths" lists only
/// existing ones, and a browser with none has no item. A browser whose database lies in a profile it does not
/// have (Firefox without a profile) has no item: one without a "Path" would clean nothing. With no browser
/// installed the section is still there, with an empty list.
[[nodiscard]] RecordPtr adultHistorySection(const DiskRoot& disk);

/// The "Adult History" section as a builder of the scan.
BuilderOutcome buildAdultHistorySection(ScanEnv& env);

} // namespace tidewell
