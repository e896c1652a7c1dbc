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

} // namespace tidewell
