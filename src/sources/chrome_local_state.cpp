#include "sources/chrome_local_state.hpp"

#include "catalogue/json_reading.hpp"

namespace tidewell {

std::vector<ChromeProfile> chromeProfilesFromLocalState(std::string_view contents) {
    std::vector<ChromeProfile> profiles;
    // A malformed file has no profiles; the ordered form keeps them in the file's own order.
    const std::optional<nlohmann::ordered_json> json = parseJson(contents);
    if (!json || !json->is_object()) {
        return profiles;
    }
    const nlohmann::ordered_json* infoCache = valueAtKeyPath(*json, "profile.info_cache");
    if (infoCache == nullptr || !infoCache->is_object()) {
        return profiles;
    }
    for (const auto& [folder, info] : infoCache->items()) {
        profiles.push_back({folder, textAtKeyPath(info, "name")});
    }
    return profiles;
}

} // namespace tidewell
