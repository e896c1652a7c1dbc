// Firefox's "extensions.json" as any program could have left it: the add-on list read from it.
#include "fuzz/fuzz_support.hpp"
#include "inventory/extension_metadata.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tidewell;
    for (const FirefoxAddOn& addOn : firefoxAddOnsFromJson(fuzz::asText(data, size))) {
        fuzz::require(addOn.name != "Default", "Firefox's own built-in entries are never listed");
    }
    return 0;
}
