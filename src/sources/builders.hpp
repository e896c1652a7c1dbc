#pragma once

#include <vector>

#include "catalogue/scan_driver.hpp"
#include "layout/disk_layout.hpp"

namespace tidewell {

/// The promotion row: the one-key record {"Type": "Scan"}, always last.
BuilderOutcome buildPromotionRow(ScanEnv& env);

/// The scan's section builders, in the layout's order: on a macOS disk Safari, Chrome, Firefox, Adult History,
/// Browser Extensions, System, Mail, Flash and the promotion row.
[[nodiscard]] std::vector<SectionBuilder> sectionBuilders(const DiskLayout& layout);

} // namespace tidewell
