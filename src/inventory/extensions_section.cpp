#include "inventory/extensions_section.hpp"

namespace tidewell {

// Not built yet: the section adds nothing and only hands over.
BuilderOutcome addBrowserExtensionsDetails(ScanEnv& /*env*/) { return {}; }

} // namespace tidewell
