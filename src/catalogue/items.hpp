#pragma once

#include <cstdint>
#include <string>

#include "catalogue/records.hpp"
#include "catalogue/size_walker.hpp"

namespace tidewell {

/// The one item factory. Pure: it looks at no file. The item has, in order, "AllList" (the locations),
/// "NameText", "isChecked" (`ticked`), "sizeText" "0KB" (replaced when measured), "isExt" (`extensionRow`) and
/// "isHeader" (true when it has locations; a caption has none). It is a LocationsItem.
[[nodiscard]] RecordPtr makeItem(UrlList locations, std::string name, bool extensionRow, bool ticked = true);

/// Measures items in order: each one's locations are summed (overlapping or repeated locations count each time)
/// and its "sizeText" and "isEnabled" written by the "Zero KB" -> "0 byte" rule. Returns the total of all items.
/// Items without locations measure 0.
std::int64_t measureItems(const RecordList& items, SizeCounter& counter);

} // namespace tidewell
