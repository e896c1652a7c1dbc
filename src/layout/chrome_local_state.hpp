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
/// paired with its own "name" ("" when missing or not text). A member named twice keeps its first place and its
/// last value. A profile whose key is not one plain folder name (see isSingleComponent: "", ".", "..", a "/" or a
/// NUL byte in it) is left out. An empty list when the text is not JSON, its top level is not an object, or
/// "profile.info_cache" is not an object. One pass over the text: a file of a million keys takes a moment.
[[nodiscard]] std::vector<ChromeProfile> chromeProfilesFromLocalState(std::string_view contents);

} // namespace tidewell
