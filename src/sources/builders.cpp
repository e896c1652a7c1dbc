#include "sources/builders.hpp"

#include "sources/adult_history_section.hpp"
#include "sources/extensions_section.hpp"

namespace tidewell {

std::vector<SectionBuilder> standardBuilders() {
    return {addSafariDetails,  addGoogleChromeDetails,      addMozilaFirefoxDetails,
            addAdultContent,   addBrowserExtensionsDetails, addSystemDetails,
            addMailAppDetails, addAdobeFlashDetails,        addThornsweepSection};
}

} // namespace tidewell
