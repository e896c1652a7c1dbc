#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace tidewell {

/// The JSON files Tidewell reads belong to other programs ("Local State", extension manifests, message catalogues,
/// "extensions.json") and may be damaged in any way. These readers never throw, never recurse on the input's
/// nesting (100,000 nested arrays parse and go again without harm), and keep members in the file's order.

/// The value of a JSON text, or nothing when the text is not one well-formed JSON value: a syntax error, a
/// truncated text, invalid UTF-8, a NUL byte anywhere, or a number beyond the range of a double (1e400) all give
/// nothing. A UTF-8 byte-order mark before the value is accepted. A member named twice keeps its last value.
[[nodiscard]] std::optional<nlohmann::ordered_json> parseJson(std::string_view text);

/// A whole file parsed as JSON whose top level is an object; nothing when the file cannot be read, does not
/// parse, or holds another kind of value.
[[nodiscard]] std::optional<nlohmann::ordered_json> readJsonObject(const std::string& path);

/// The value at a key path: the members named by the dot-separated components, one level each ("a.b.message" is
/// value["a"]["b"]["message"]). Null when a step is not an object or lacks the member. The empty path names the
/// value itself.
[[nodiscard]] const nlohmann::ordered_json* valueAtKeyPath(const nlohmann::ordered_json& value,
                                                           std::string_view keyPath);

/// The text at a key path, or "" when the path leads nowhere or to a value that is not text. Every field Tidewell
/// reads from another program's JSON reads this way, so a missing and a wrongly typed field look the same.
[[nodiscard]] std::string textAtKeyPath(const nlohmann::ordered_json& value, std::string_view keyPath);

} // namespace tidewell
