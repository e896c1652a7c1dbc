// Firefox's "extensions.json" as any program could have left it: the add-on list read from it.
#include "base/file_url.hpp"
#include "base/held_folder.hpp"
#include "fuzz/fuzz_support.hpp"
#include "inventory/extension_metadata.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tidewell;
    for (const FirefoxAddOn& addOn : firefoxAddOnsFromJson(fuzz::asText(data, size))) {
        fuzz::require(addOn.name != "Default", "Firefox's own built-in entries are never listed");
        // A recorded location becomes a place only as an absolute path of plain names: the components the
        // boundary compares are then exactly those the kernel opens.
        const std::optional<std::vector<std::string>> strict = strictComponents(addOn.location);
        fuzz::require(strict.has_value(), "every listed location is an absolute path of plain names");
        fuzz::require(normalisedComponents(addOn.location) == strict, "a listed location means what it says");
    }
    return 0;
}
