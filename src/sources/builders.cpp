#include "sources/builders.hpp"

namespace tidewell {

namespace {

// Positions 4 and 5 ("Adult History" and "Browser Extensions") are built by the cleaning and inventory parts of
// the core; until those are in place they add nothing and only hand over.
BuilderOutcome notYetBuilt(ScanEnv& /*env*/) {
    return {};
}

} // namespace

std::vector<SectionBuilder> standardBuilders() {
    return {addSafariDetails, addGoogleChromeDetails, addMozilaFirefoxDetails, notYetBuilt,         notYetBuilt,
            addSystemDetails, addMailAppDetails,      addAdobeFlashDetails,    addThornsweepSection};
}

} // namespace tidewell
