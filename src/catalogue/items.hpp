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

/// One measured location and its size; behindLink when a link stands on the way to it below the home.
struct MeasuredLocation {
    std::string path;
    std::int64_t bytes = 0;
    bool behindLink = false;
};

/// The text an item's name ends with when one of its locations is reached through a link on the way.
inline constexpr std::string_view kBehindALink = " (behind a link)";

/// What measureItems found: the total of all items, and every location with its size, in order.
struct MeasuredItems {
    std::int64_t bytes = 0;
    std::vector<MeasuredLocation> locations;
};

/// Measures items in order: each one's locations are summed (overlapping or repeated locations count each time)
/// and its "sizeText" and "isEnabled" written by the "Zero KB" -> "0 byte" rule. Items without locations measure 0.
///
/// A location below `home` with a link on the way to it (a folder of its path below the home that is a link) is
/// a place the clean will not reach: it is measured where the link leads, so the item shows what lies there, its
/// name gets kBehindALink, and its bytes stay out of the returned total (and out of bytesCountedOnce).
MeasuredItems measureItems(const RecordList& items, SizeCounter& counter, std::string_view home = {});

/// Whether a link stands on the way to path below home: one of the folders between them is a link (path itself
/// may be one). False for a path not below home.
[[nodiscard]] bool behindALink(std::string_view home, std::string_view path);

/// The bytes of measured locations with each place counted once: a location that repeats another, or lies inside
/// another (its path below the other's), adds nothing of its own. Locations behind a link add nothing.
[[nodiscard]] std::int64_t bytesCountedOnce(std::vector<MeasuredLocation> locations);

} // namespace tidewell
