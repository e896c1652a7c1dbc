#pragma once

#include <string>
#include <string_view>

#include "catalogue/scan_driver.hpp"
#include "layout/tables.hpp"

namespace tidewell {

/// A section built from a source's table:
/// - nothing when its application is absent (unless the table says it is always shown);
/// - for a browser whose profiles cannot be read (Chrome without a readable "Local State": it never ran), nothing,
///   and no hand-over to the main thread either; the table catches up at the next section;
/// - otherwise its items in table order, once for each profile of the browser ("%@" in a name standing for the
///   profile's display name) or once for a source without profiles, then its gathered items; measured.
/// An item's locations are resolved and expanded as the table says (see appendExpanded); a hand-made row gets
/// exactly "AllList", "NameText", "isChecked" and "sizeText" "10KB" (a placeholder the measurement replaces), any
/// other row the item factory's record.
[[nodiscard]] BuilderOutcome sourceSection(ScanEnv& env, const SourceTable& table);

/// The common end of a section builder: measures the items, formats the total with the "Zero KB" -> "0 byte" rule,
/// and builds the section with "Name", "List", "Size", "Img", "isChecked" true, "isEnabled" and "isFromThornsweep"
/// false, in that order.
[[nodiscard]] BuilderOutcome measuredSection(ScanEnv& env, std::string name, RecordList items, std::string image,
                                             RecordRole role);

/// "%@" in a name template replaced by a value (the first occurrence, as a format with one argument does).
[[nodiscard]] std::string fillName(std::string_view nameTemplate, std::string_view value);

} // namespace tidewell
