#pragma once

#include <cstdint>
#include <string>

namespace tidewell {

/// The text the catalogue shows for a byte count, in the decimal style of the platform's byte-count formatter
/// (1 KB = 1000 bytes): "Zero KB" for 0, "1 byte", "N bytes" below 1000, then KB with no decimals, MB with one,
/// GB and above with two, trailing zeros dropped ("4 KB", "12.3 MB", "1.23 GB", "2 GB"). Rounding is to the
/// nearest, ties to even; a count that rounds up to 1000 of a unit is written in the next unit ("1 MB").
[[nodiscard]] std::string formatByteCount(std::int64_t bytes);

/// The size text and enabled flag of an item or section. The zero test is made on the formatted text on purpose:
/// "Zero KB" becomes "0 byte" and disabled; any other text stays as it is and enabled.
struct SizeText {
    std::string text;
    bool enabled;
};
[[nodiscard]] SizeText sizeTextFor(const std::string& formatted);
[[nodiscard]] inline SizeText sizeTextFor(std::int64_t bytes) {
    return sizeTextFor(formatByteCount(bytes));
}

} // namespace tidewell
