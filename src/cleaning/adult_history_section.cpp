#include "cleaning/adult_history_section.hpp"

namespace tidewell {

// Not built yet: the section adds nothing and only hands over.
BuilderOutcome addAdultContent(ScanEnv& /*env*/) { return {}; }

} // namespace tidewell
