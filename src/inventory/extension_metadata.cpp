#include "inventory/extension_metadata.hpp"

#include <algorithm>

#include "base/folders.hpp"
#include "base/json_reading.hpp"

namespace tidewell {

namespace {

constexpr std::string_view kMessagePrefix = "__MSG_";

// Every occurrence of `what`, taken left to right without overlapping and without looking again at what the
// removal joins together ("___" less "__" is "_").
std::string removingOccurrences(std::string_view text, std::string_view what) {
    std::string out;
    out.reserve(text.size());
    while (true) {
        const std::size_t at = text.find(what);
        if (at == std::string_view::npos) {
            out.append(text);
            return out;
        }
        out.append(text.substr(0, at));
        text.remove_prefix(at + what.size());
    }
}

// The message key a "__MSG_" name stands for. Chrome writes message names in ASCII and matches them without
// regard to case; Tidewell looks them up as written, except that a key which still holds "_" is lower-cased
// whole ("__MSG_App_Name__" looks up "app_name", "__MSG_appName__" looks up "appName").
std::string messageKeyFor(std::string_view placeholder) {
    std::string key = removingOccurrences(removingOccurrences(placeholder, "__"), "MSG_");
    if (key.find('_') != std::string::npos) {
        std::ranges::transform(key, key.begin(),
                               [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    }
    return key;
}

// The locale folder whose messages name the extension: "en", else "en_US", else "en_GB", else whatever the
// listing gives first (even a stray file); nothing when the locales folder lists empty.
std::optional<FileUrl> chooseLocaleFolder(const FileUrl& locales) {
    for (const std::string_view preferred : {"en", "en_US", "en_GB"}) {
        const FileUrl candidate = locales.appending(preferred);
        if (fileExistsAt(candidate.path)) {
            return candidate;
        }
    }
    std::vector<FileUrl> listing = listFolderUrls(locales);
    if (listing.empty()) {
        return std::nullopt;
    }
    return std::move(listing.front());
}

// The display name of a version folder whose manifest names a "__MSG_" placeholder. Nothing when the folder has
// no "_locales" at all: such a version gets no record. Every other failure (no locale folder, no readable
// messages, no such message) keeps the placeholder itself as the name.
std::optional<std::string> resolvePlaceholder(const FileUrl& version, const std::string& placeholder) {
    const FileUrl locales = version.appending("_locales");
    if (!fileExistsAt(locales.path)) {
        return std::nullopt;
    }
    const std::optional<FileUrl> locale = chooseLocaleFolder(locales);
    if (!locale) {
        return placeholder;
    }
    const std::optional<nlohmann::json> messages = readJsonObject(locale->appending("messages.json").path);
    if (!messages) {
        return placeholder;
    }
    const nlohmann::json* message = valueAtKeyPath(*messages, messageKeyFor(placeholder) + ".message");
    if (message == nullptr) {
        return placeholder;
    }
    // A message that is there but is not text names the extension with nothing, as any wrongly typed field does.
    return message->is_string() ? message->get<std::string>() : std::string();
}

// "descriptor" wins over "path" when it holds text; a location of another kind does not hide a usable "path".
std::string recordedLocation(const nlohmann::json& addon) {
    for (const std::string_view key : {"descriptor", "path"}) {
        if (const nlohmann::json* value = valueAtKeyPath(addon, key); value != nullptr && value->is_string()) {
            return value->get<std::string>();
        }
    }
    return {};
}

} // namespace

std::optional<ChromeManifest> readChromeVersionFolder(const FileUrl& version) {
    if (listFolderUrls(version).empty()) {
        return std::nullopt;
    }
    const std::optional<nlohmann::json> manifest = readJsonObject(version.appending("manifest.json").path);
    if (!manifest) {
        return std::nullopt;
    }
    std::string name = textAtKeyPath(*manifest, "name");
    if (name.starts_with(kMessagePrefix)) {
        std::optional<std::string> resolved = resolvePlaceholder(version, name);
        if (!resolved) {
            return std::nullopt;
        }
        name = std::move(*resolved);
    }
    return ChromeManifest{std::move(name), textAtKeyPath(*manifest, "version")};
}

std::vector<FirefoxAddOn> firefoxAddOnsFromJson(std::string_view contents) {
    std::vector<FirefoxAddOn> addOns;
    const std::optional<nlohmann::json> database = parseJson(contents);
    if (!database || !database->is_object()) {
        return addOns;
    }
    const nlohmann::json* addons = valueAtKeyPath(*database, "addons");
    if (addons == nullptr || !addons->is_array()) {
        return addOns;
    }
    for (const nlohmann::json& addon : *addons) {
        if (!addon.is_object()) {
            continue;
        }
        std::string name = textAtKeyPath(addon, "defaultLocale.name");
        // Firefox's own built-in entries carry this exact name; an add-on without a name is still listed.
        if (name == "Default") {
            continue;
        }
        std::string location = recordedLocation(addon);
        if (!strictComponents(location)) {
            continue;
        }
        addOns.push_back({std::move(location), textAtKeyPath(addon, "version"), std::move(name)});
    }
    return addOns;
}

} // namespace tidewell
