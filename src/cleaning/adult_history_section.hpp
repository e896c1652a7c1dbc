#pragma once

#include "catalogue/scan_driver.hpp"

namespace tidewell {

/// `addAdultContent`: the "Adult History" section at the fourth position of the scan.
BuilderOutcome addAdultContent(ScanEnv& env);

} // namespace tidewell
