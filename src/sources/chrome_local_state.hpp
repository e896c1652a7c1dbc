#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tidewell {

/// One entry of Chrome's profile registry: the profile's folder name and its display name.
struct ChromeProfile {
    std::string folder;
    std::string name;
};

/// The profiles a "Local State" text registers, in the order its "profile.info_cache" object lists them, each
/// paired with its own "name" ("" when missing or not text). An empty list when the text is not JSON, its top
/// level is not an object, or "profile.info_cache" is not an object. Folder names are given as written: they come
/// from another program's file, and whoever builds a path from one must keep to its own boundary.
[[nodiscard]] std::vector<ChromeProfile> chromeProfilesFromLocalState(std::string_view contents);

} // namespace tidewell
