#include "cli/catalogue_text.hpp"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <ostream>

#include "base/byte_count.hpp"

namespace tidewell::cli {

namespace {

constexpr int kNameWidth = 52;

} // namespace

const char* tickMark(const Record& record) {
    const auto tick = record.number("isChecked");
    if (!tick || *tick == 0) {
        return "[ ]";
    }
    return *tick == 1 ? "[x]" : "[-]";
}

void printSection(std::ostream& out, const Record& section) {
    if (section.has("Type")) {
        fmt::print(out, "    Thornsweep: Detects and Removes Adware\n");
        return;
    }
    fmt::print(out, "{} {:<{}} {:>10}\n", tickMark(section), section.text("Name"), kNameWidth + 4,
               section.text("Size"));
    // In a grouped section the rows with locations belong to the caption above them, and are shown under it.
    const bool grouped = section.flag("isFromThornsweep");
    if (const RecordList* items = section.list("List")) {
        for (const RecordPtr& item : *items) {
            const int indent = grouped && item->flag("isHeader") ? 2 : 0;
            fmt::print(out, "    {:{}}{} {:<{}} {:>10}\n", "", indent, tickMark(*item), item->text("NameText"),
                       kNameWidth - indent, item->text("sizeText"));
        }
    }
}

void printTotal(std::ostream& out, std::int64_t bytes, std::size_t sections) {
    fmt::print(out, "Total: {} in {} section{}\n", formatByteCount(bytes), sections, sections == 1 ? "" : "s");
}

} // namespace tidewell::cli
