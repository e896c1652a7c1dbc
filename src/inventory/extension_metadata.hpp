#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/file_url.hpp"

namespace tidewell {

// What the browsers' own extension metadata says, read without measuring anything: the parts of the extension
// inventories that take in another program's files. Nothing here changes a file.

/// The name and version a Chrome version folder's "manifest.json" gives.
struct ChromeManifest {
    std::string name;
    std::string version;
};

/// Reads one Chrome version folder (<profile>/Extensions/<id>/<version>). Nothing when the folder lists empty, or
/// its "manifest.json" is missing, unreadable, not JSON or not an object, or its "name" is a "__MSG_" placeholder
/// and it has no "_locales" at all: such a version folder makes no record.
///
/// A placeholder name is resolved from "_locales/<locale>/messages.json", the locale being "en", else "en_US",
/// else "en_GB", else the first entry the locales folder lists. The message key is the name less every "__" and
/// then every "MSG_", lower-cased whole when it still holds "_" ("__MSG_App_Name__" looks up "app_name",
/// "__MSG_appName__" looks up "appName"); its "message" becomes the name ("" when it is not text). When no locale
/// folder, no readable messages or no such message is found, the placeholder itself stays the name. A name or
/// version that is missing or not text is "".
[[nodiscard]] std::optional<ChromeManifest> readChromeVersionFolder(const FileUrl& version);

/// One add-on as a Firefox profile's "extensions.json" records it.
struct FirefoxAddOn {
    std::string location; // "descriptor" when it holds text, else "path", else ""; as written, never resolved
    std::string version;
    std::string name; // "defaultLocale.name"
};

/// The add-ons of an "extensions.json" text, in the order of its "addons" list, without de-duplication. An
/// element that is not an object, and one whose name is exactly "Default" (Firefox's own built-in entries), is
/// passed over; one without a name is kept. One whose location is not an absolute path of plain components (see
/// strictComponents: "", a relative path, "..", "//", a NUL byte) is passed over too: it names no place Tidewell
/// may go. An empty list when the text is not JSON, its top level is not an object or "addons" is not a list.
/// Other fields missing or not text are "".
[[nodiscard]] std::vector<FirefoxAddOn> firefoxAddOnsFromJson(std::string_view contents);

} // namespace tidewell
