#pragma once

#include <string>
#include <vector>

#include "catalogue/scan_driver.hpp"

namespace tidewell {

// The section builders, each run on the scan thread. A builder whose application is absent adds no section.

/// "Safari": fourteen items under the home and "Library/Safari"; present with "/Applications/Safari.app".
BuilderOutcome addSafariDetails(ScanEnv& env);
/// "Chrome": nine items per profile of "Local State", then "Browser Caches". Without a readable "Local State" it
/// adds nothing and, alone of all builders, does not hand over to the main thread.
BuilderOutcome addGoogleChromeDetails(ScanEnv& env);
/// "Firefox": seven items of the first "default" profile, or none; present with "/Applications/Firefox.app".
BuilderOutcome addMozilaFirefoxDetails(ScanEnv& env);
/// "System": caches, container caches, logs, container logs, the downloads quarantine record and the trash.
/// Always present.
BuilderOutcome addSystemDetails(ScanEnv& env);
/// "Mail": saved attachments and Mail's caches; present with "/Applications/Mail.app".
BuilderOutcome addMailAppDetails(ScanEnv& env);
/// "Flash": Flash cookies; present with the Flash player's install manager.
BuilderOutcome addAdobeFlashDetails(ScanEnv& env);
/// The promotion row: the one-key record {"Type": "Scan"}, always last.
BuilderOutcome addThornsweepSection(ScanEnv& env);

/// The nine builders in their fixed order: Safari, Chrome, Firefox, Adult History, Browser Extensions, System,
/// Mail, Flash, promotion row.
[[nodiscard]] std::vector<SectionBuilder> standardBuilders();

/// The path the reference platform reaches when it writes a folder's URL out as text and reads that text back
/// as a file path: the text starts with the URL scheme, not a slash, so it is read relative to the current
/// folder ("<cwd>/file:/Users/ann/Library/Containers"). It names no folder of the disk; the container and trash
/// listings are built on it all the same, and so they list nothing.
[[nodiscard]] std::string urlTextAsPath(const FileUrl& folder);

} // namespace tidewell
