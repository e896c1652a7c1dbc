#include "cli/catalogue_text.hpp"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <ostream>

#include "base/byte_count.hpp"
#include "catalogue/record_views.hpp"

namespace tidewell::cli {

namespace {

constexpr int kNameWidth = 52;

const char* tickMark(Tick tick) {
    switch (tick) {
    case Tick::On:
        return "[x]";
    case Tick::Mixed:
        return "[-]";
    case Tick::Off:
        break;
    }
    return "[ ]";
}

} // namespace

void printSection(std::ostream& out, const RecordPtr& record) {
    const Section section(record);
    if (section.isPromotion()) {
        fmt::print(out, "    Thornsweep: {}\n", section.summary());
        return;
    }
    fmt::print(out, "{} {:<{}} {:>10}\n", tickMark(section.tick()), section.name(), kNameWidth + 4, section.sizeText());
    // In a grouped section the rows with locations belong to the caption above them, and are shown under it.
    for (const Item& item : section.items()) {
        const int indent = section.isGrouped() && !item.isCaption() ? 2 : 0;
        fmt::print(out, "    {:{}}{} {:<{}} {:>10}\n", "", indent, tickMark(item.tick()), item.name(),
                   kNameWidth - indent, item.sizeText());
    }
}

void printTotal(std::ostream& out, std::int64_t bytes, const RecordList& sections) {
    const auto count = std::ranges::count_if(sections, [](const RecordPtr& s) { return !Section(s).isPromotion(); });
    fmt::print(out, "Total: {} in {} section{}\n", sizeTextFor(bytes).text, count, count == 1 ? "" : "s");
}

} // namespace tidewell::cli
