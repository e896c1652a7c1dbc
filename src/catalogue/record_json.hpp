#pragma once

#include <nlohmann/json.hpp>

#include "catalogue/records.hpp"

namespace tidewell {

/// A record as JSON with exactly its keys, in their order: booleans as booleans, whole numbers as numbers, text
/// as text, URLs as their file URL text, and lists as arrays.
[[nodiscard]] nlohmann::ordered_json toJson(const Record& record);
[[nodiscard]] nlohmann::ordered_json toJson(const RecordList& records);
/// A list of locations as an array of their file URL texts.
[[nodiscard]] nlohmann::ordered_json toJson(const UrlList& urls);

/// JSON as the command line prints it, indented by two. Names come from the disk and other programs' files and
/// need not be UTF-8: each byte that is not valid UTF-8 is written as U+FFFD, so the output is always valid JSON.
/// Locations are percent-encoded file URLs, plain ASCII, and stay exact.
[[nodiscard]] std::string jsonText(const nlohmann::ordered_json& json);

} // namespace tidewell
