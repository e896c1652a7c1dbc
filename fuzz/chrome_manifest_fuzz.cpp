// A Chrome version folder as any extension could ship it: its manifest, its locale folders and their messages,
// from which the extension's name and version are read.
//
// The input's parts, cut at NUL bytes: the manifest (no "manifest.json" when empty); then, when there is a second
// part, the "_locales" folder with the locale folders that part names, separated by "/"; then each locale's
// "messages.json" in turn.
#include <sys/stat.h>

#include "base/json_reading.hpp"
#include "fuzz/fuzz_support.hpp"
#include "inventory/extension_metadata.hpp"

namespace {

// A single folder name made of what the input gives, or nothing when it cannot be one.
std::optional<std::string> folderName(std::string_view text) {
    std::string name(text.substr(0, 255));
    if (name.empty() || name == "." || name == ".." || name.find('/') != std::string::npos) {
        return std::nullopt;
    }
    return name;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tidewell;
    static const fuzz::ScratchFolder scratch;
    const std::string version = scratch.path() + "/1.0_0";
    ::mkdir(version.c_str(), 0755);

    const std::vector<std::string_view> parts = fuzz::partsOf(fuzz::asText(data, size));
    if (!parts[0].empty()) {
        fuzz::writeFile(version + "/manifest.json", parts[0]);
    }
    if (parts.size() > 1) {
        const std::string locales = version + "/_locales";
        ::mkdir(locales.c_str(), 0755);
        std::string_view names = parts[1];
        for (std::size_t part = 2; !names.empty(); ++part) {
            const std::size_t slash = names.find('/');
            if (const std::optional<std::string> name = folderName(names.substr(0, slash))) {
                const std::string folder = locales + "/" + *name;
                if (::mkdir(folder.c_str(), 0755) == 0 && part < parts.size()) {
                    fuzz::writeFile(folder + "/messages.json", parts[part]);
                }
            }
            names.remove_prefix(slash == std::string_view::npos ? names.size() : slash + 1);
        }
    }

    if (const std::optional<ChromeManifest> manifest = readChromeVersionFolder(FileUrl{version})) {
        const std::optional<nlohmann::ordered_json> written = readJsonObject(version + "/manifest.json");
        fuzz::require(written.has_value(), "a record comes only from a manifest that is a JSON object");
        const std::string writtenName = textAtKeyPath(*written, "name");
        fuzz::require(manifest->name == writtenName || writtenName.starts_with("__MSG_"),
                      "only a placeholder name is replaced");
    }
    scratch.clear("1.0_0");
    return 0;
}
