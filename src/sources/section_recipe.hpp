#pragma once

#include <functional>
#include <string>

#include "catalogue/scan_driver.hpp"
#include "layout/tables.hpp"

namespace tidewell {

/// The folder each table base stands for, for one builder run.
using BaseResolver = std::function<FileUrl(tables::Base)>;

/// An item's locations: each table entry appended to its base, in table order.
[[nodiscard]] UrlList resolveLocations(const tables::ItemSpec& entry, const BaseResolver& base);

/// An item of a path table: the factory's record (isExt false), or for a hand-made entry exactly "AllList",
/// "NameText", "isChecked" false and "sizeText" "10KB" (a placeholder the measurement replaces).
[[nodiscard]] RecordPtr makeTableItem(const tables::ItemSpec& entry, std::string name, const BaseResolver& base);

/// The common end of a source builder: measures the items (`countSize:`), formats the total with the
/// "Zero KB" -> "0 byte" rule, and builds the section with "Name", "List", "Size", "Img", "isChecked" true,
/// "isEnabled" and "isFromThornsweep" false, in that order.
[[nodiscard]] BuilderOutcome measuredSection(ScanEnv& env, std::string name, RecordList items, std::string image);

/// A section built straight from its path table (Safari, Mail, Flash): nothing when the application is absent;
/// otherwise the table's items, in order, rooted at the home folder, "Library/Safari" or Mail's container, then
/// measured. The section's image is the application's path.
[[nodiscard]] BuilderOutcome tableSection(ScanEnv& env, const tables::SourceSpec& source);

/// "%@" in a name template replaced by a value (the first occurrence, as a format with one argument does).
[[nodiscard]] std::string fillName(std::string_view nameTemplate, std::string_view value);

} // namespace tidewell
