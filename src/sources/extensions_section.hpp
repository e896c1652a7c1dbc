#pragma once

#include "catalogue/scan_driver.hpp"

namespace tidewell {

/// `addBrowserExtensionsDetails`: the "Browser Extensions" section at the fifth position of the scan, always
/// added. Rows are grouped by browser (Safari, Chrome, Firefox, each only when its application is present), each
/// group under a caption row ("isHeader" false, no locations) that appears only when the group has rows; an
/// extension's row removes its location and is kept only while that location exists. The last row resets the
/// preference files of the present browsers. Every row is enabled and shows no size; the section has "Size" "",
/// "Img" "Browser_ext" and "isFromThornsweep" true, which makes the details panel treat it as grouped.
BuilderOutcome addBrowserExtensionsDetails(ScanEnv& env);

} // namespace tidewell
