#pragma once

#include "catalogue/scan_driver.hpp"

namespace tidewell {

/// The "Browser Extensions" section, always added. Rows are grouped by browser (in the layout's browser order, each
/// only when installed), each group under its caption row ("isHeader" false, no locations) that appears only when
/// the group has rows; an extension's row removes its location and is kept only while that location exists. The
/// last row, "Reset Browsers Preferences to Defaults", removes the preference files of every profile of the
/// installed browsers. Every row is enabled and shows no size; the section has "Size" "", "Img" "Browser_ext" and
/// "isFromThornsweep" true, which makes the details panel group it. The section and every row start unticked.
BuilderOutcome buildBrowserExtensionsSection(ScanEnv& env);

} // namespace tidewell
