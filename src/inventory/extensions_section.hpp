#pragma once

#include "catalogue/scan_driver.hpp"

namespace tidewell {

/// `addBrowserExtensionsDetails`: the "Browser Extensions" section at the fifth position of the scan.
BuilderOutcome addBrowserExtensionsDetails(ScanEnv& env);

} // namespace tidewell
