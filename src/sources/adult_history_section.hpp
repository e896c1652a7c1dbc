#pragma once

#include "catalogue/scan_driver.hpp"

namespace tidewell {

/// The "Adult History" section: exactly "Name" "Adult History", "Img" "adult", "List", "isChecked" true and
/// "isEnabled" true (no "Size": nothing is measured). Its items, in the order Chrome, Safari, Firefox and each
/// only when the browser's application exists, are exactly "NameText" ("Google Chrome Adult History", "Safari
/// Adult History", "Firefox Adult History"), "isChecked" true, "isEnabled" true and "Path", the file URL of the
/// browser's history database: Chrome's "Default/History", Safari's "History.db", and "places.sqlite" of the
/// chosen Firefox profile. Whether a database exists is not looked at. Firefox without a profile whose name
/// contains "default" has no database, and then no item at all (an item without a "Path" would clean nothing).
/// With no browser installed the section is still there, with an empty list.
[[nodiscard]] RecordPtr makeAdultHistorySection(const DiskRoot& disk);

/// `addAdultContent`: the "Adult History" section at the fourth position of the scan.
BuilderOutcome addAdultContent(ScanEnv& env);

} // namespace tidewell
