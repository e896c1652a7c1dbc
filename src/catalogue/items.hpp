#pragma once

#include <cstdint>
#include <string>

#include "catalogue/records.hpp"
#include "catalogue/size_walker.hpp"

namespace tidewell {

/// `getDicForList:andType:isExt:`, the one item factory. Pure: it looks at no file. The item has, in order,
/// "AllList" (the list), "NameText" (the type), "isChecked" (false exactly when the type is "Downloads"),
/// "sizeText" "0KB" (replaced when measured), "isExt" and "isHeader" (true when the list is not empty).
[[nodiscard]] RecordPtr getDicForList(UrlList list, std::string type, bool isExt);

/// `countSize:`. For each item in order, sums `fileSizeOf:` over its "AllList" (overlapping or repeated
/// locations count each time), writes "sizeText" and "isEnabled" by the "Zero KB" -> "0 byte" rule, and returns
/// the total of all items. Items without an "AllList" measure 0.
std::int64_t countSize(const RecordList& items, SizeCounter& counter);

} // namespace tidewell
