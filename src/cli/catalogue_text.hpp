#pragma once

#include <cstdint>
#include <iosfwd>

#include "catalogue/records.hpp"

namespace tidewell::cli {

/// A section as the text mode shows it: its tick ("[x]" on, "[ ]" off, "[-]" mixed), name and size on one line,
/// then one line per item with its tick and size; in a grouped section (Browser Extensions) the rows under a
/// caption are indented a little more. The promotion row is one line of its own.
void printSection(std::ostream& out, const RecordPtr& section);

/// The closing line of a scan: the measured total, written as the sections write their sizes ("0 byte" for
/// nothing), and the number of sections (the promotion row is not one).
void printTotal(std::ostream& out, std::int64_t bytes, const RecordList& sections);

} // namespace tidewell::cli
