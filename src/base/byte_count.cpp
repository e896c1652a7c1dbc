#include "base/byte_count.hpp"

#include <fmt/format.h>

#include <array>
#include <cstdint>

namespace tidewell {

namespace {

struct Unit {
    const char* name;
    int decimals;
};

constexpr std::array<Unit, 8> kUnits{
    {{"KB", 0}, {"MB", 1}, {"GB", 2}, {"TB", 2}, {"PB", 2}, {"EB", 2}, {"ZB", 2}, {"YB", 2}}};

std::uint64_t pow10(int exponent) {
    std::uint64_t value = 1;
    for (int i = 0; i < exponent; ++i) {
        value *= 10;
    }
    return value;
}

// Divides and rounds to the nearest integer, ties to even (the number formatter's default rounding).
std::uint64_t divideRounded(std::uint64_t numerator, std::uint64_t denominator) {
    std::uint64_t quotient = numerator / denominator;
    const std::uint64_t remainder = numerator % denominator;
    if (remainder > denominator - remainder || (remainder == denominator - remainder && quotient % 2 != 0)) {
        ++quotient;
    }
    return quotient;
}

// The count in a unit, in steps of its last decimal: 12,345,678 bytes in MB with one decimal is 123.
std::uint64_t scaledTo(std::uint64_t bytes, std::uint64_t unitSize, int decimals) {
    return divideRounded(bytes, unitSize / pow10(decimals));
}

} // namespace

std::string formatByteCount(std::int64_t bytes) {
    if (bytes == 0) {
        return "Zero KB";
    }
    if (bytes < 0) {
        std::string text = formatByteCount(bytes == INT64_MIN ? INT64_MAX : -bytes);
        text.insert(text.begin(), '-');
        return text;
    }
    if (bytes == 1) {
        return "1 byte";
    }
    if (bytes < 1000) {
        return fmt::format("{} bytes", bytes);
    }
    const auto count = static_cast<std::uint64_t>(bytes);
    std::size_t unit = 0;
    std::uint64_t unitSize = 1000;
    while (unit + 1 < kUnits.size() && count / 1000 >= unitSize) {
        ++unit;
        unitSize *= 1000;
    }
    std::uint64_t scaled = scaledTo(count, unitSize, kUnits[unit].decimals);
    if (unit + 1 < kUnits.size() && scaled >= 1000 * pow10(kUnits[unit].decimals)) {
        // 999,999 bytes rounds to "1000 KB", which the formatter writes as "1 MB".
        ++unit;
        unitSize *= 1000;
        scaled = scaledTo(count, unitSize, kUnits[unit].decimals);
    }
    const std::uint64_t scale = pow10(kUnits[unit].decimals);
    std::string text = fmt::format("{}", scaled / scale);
    if (kUnits[unit].decimals > 0) {
        std::string fraction = fmt::format("{:0{}}", scaled % scale, kUnits[unit].decimals);
        while (!fraction.empty() && fraction.back() == '0') {
            fraction.pop_back();
        }
        if (!fraction.empty()) {
            text += "." + fraction;
        }
    }
    return text + " " + kUnits[unit].name;
}

SizeText sizeTextFor(const std::string& formatted) {
    if (formatted == "Zero KB") {
        return {"0 byte", false};
    }
    return {formatted, true};
}

} // namespace tidewell
