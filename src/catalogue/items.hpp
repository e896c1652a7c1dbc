#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "catalogue/records.hpp"
#include "catalogue/size_walker.hpp"

namespace tidewell {

/// The one item factory. Pure: it looks at no file. The item has, in order, "AllList" (the locations),
/// "NameText", "isChecked" (`ticked`), "sizeText" "0KB" (replaced when measured), "isExt" (`extensionRow`) and
/// "isHeader" (true when it has locations; a caption has none). It is a LocationsItem.
[[nodiscard]] RecordPtr makeItem(UrlList locations, std::string name, bool extensionRow, bool ticked = true);

/// One measured location and its size.
struct MeasuredLocation {
    std::string path;
    std::int64_t bytes = 0;
};

/// What measureItems found: the total of all items, and every location with its size, in order.
struct MeasuredItems {
    std::int64_t bytes = 0;
    std::vector<MeasuredLocation> locations;
};

/// Measures items in order: each one's locations are summed (overlapping or repeated locations count each time)
/// and its "sizeText" and "isEnabled" written by the "Zero KB" -> "0 byte" rule. Items without locations measure 0.
MeasuredItems measureItems(const RecordList& items, SizeCounter& counter);

/// The bytes of measured locations with each place counted once: a location that repeats another, or lies inside
/// another (its path below the other's), adds nothing of its own.
[[nodiscard]] std::int64_t bytesCountedOnce(std::vector<MeasuredLocation> locations);

} // namespace tidewell
