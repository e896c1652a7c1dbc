#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace tidewell {

/// The JSON files Tidewell reads belong to other programs ("Local State", extension manifests, message catalogues,
/// "extensions.json") and may be damaged in any way. These readers never throw, never recurse on the input's
/// nesting (100,000 nested arrays parse and go again without harm), and take time in proportion to the text (an
/// object's members are found by key in a tree, so 100,000 members cost no more than 100,000 lookups). Members are
/// not kept in the file's order; readers that need it ("Local State"'s profiles) read the text in order
/// themselves (see forEachJsonEvent).

/// The value of a JSON text, or nothing when the text is not one well-formed JSON value: a syntax error, a
/// truncated text, invalid UTF-8, a NUL byte anywhere, or a number beyond the range of a double (1e400) all give
/// nothing. A UTF-8 byte-order mark before the value is accepted. A member named twice keeps its last value.
[[nodiscard]] std::optional<nlohmann::json> parseJson(std::string_view text);

/// Runs a SAX handler over a JSON text, in the text's order, on the same terms as parseJson: false (after what
/// the handler was told so far) when the text is not one well-formed JSON value or holds a NUL byte.
template <class Handler> [[nodiscard]] bool forEachJsonEvent(std::string_view text, Handler& handler);

/// A whole file parsed as JSON whose top level is an object; nothing when the file cannot be read, does not
/// parse, or holds another kind of value.
[[nodiscard]] std::optional<nlohmann::json> readJsonObject(const std::string& path);

/// The value at a key path: the members named by the dot-separated components, one level each ("a.b.message" is
/// value["a"]["b"]["message"]). Null when a step is not an object or lacks the member. The empty path names the
/// value itself.
[[nodiscard]] const nlohmann::json* valueAtKeyPath(const nlohmann::json& value, std::string_view keyPath);

/// The text at a key path, or "" when the path leads nowhere or to a value that is not text. Every field Tidewell
/// reads from another program's JSON reads this way, so a missing and a wrongly typed field look the same.
[[nodiscard]] std::string textAtKeyPath(const nlohmann::json& value, std::string_view keyPath);

template <class Handler> bool forEachJsonEvent(std::string_view text, Handler& handler) {
    if (text.find('\0') != std::string_view::npos) {
        return false;
    }
    try {
        return nlohmann::json::sax_parse(text, &handler);
    } catch (const std::exception&) {
        // Allocation failures are the only exceptions left.
        return false;
    }
}

} // namespace tidewell
