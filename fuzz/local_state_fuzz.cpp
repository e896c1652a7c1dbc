// Chrome's "Local State" as any program could have left it: the profile registry read from it.
#include <set>

#include "base/file_url.hpp"
#include "fuzz/fuzz_support.hpp"
#include "layout/chrome_local_state.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tidewell;
    const std::vector<ChromeProfile> profiles = chromeProfilesFromLocalState(fuzz::asText(data, size));
    // Each profile folder is named once (a folder named twice would have its extensions listed twice), and each is
    // one plain folder name that a path can be built from: no "", ".", "..", "/" or NUL byte reaches a path.
    std::set<std::string> folders;
    for (const ChromeProfile& profile : profiles) {
        fuzz::require(folders.insert(profile.folder).second, "no profile folder is listed twice");
        fuzz::require(isSingleComponent(profile.folder), "every profile folder is one plain folder name");
    }
    return 0;
}
