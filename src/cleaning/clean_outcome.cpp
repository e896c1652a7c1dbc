#include "cleaning/clean_outcome.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "base/byte_count.hpp"

namespace tidewell {

namespace {

const char* reasonText(LeftReason reason) {
    switch (reason) {
    case LeftReason::OutsideBoundary:
        return "it lies outside the folder Tidewell may clean";
    case LeftReason::OutsideOwnFolder:
        return "it lies outside its profile's extensions folder";
    case LeftReason::BehindLink:
        return "a link, or something that is not a folder, stands on the way to it";
    case LeftReason::OtherMount:
        return "it lies on another file system or mount";
    case LeftReason::NotRemovable:
        return "it could not be removed, or not all of it";
    case LeftReason::Locked:
        return "another program holds the database locked";
    case LeftReason::Damaged:
        return "the database is damaged";
    case LeftReason::NotPlainFile:
        return "the database or one of its journal files has other hard links or is not a plain file";
    case LeftReason::ReadOnly:
        return "the database cannot be written";
    case LeftReason::StillReadable:
        return "another program is reading the database, so the removed visits stay in its files until it stops";
    case LeftReason::CannotOpen:
        return "the database cannot be opened";
    case LeftReason::UntickedInside:
        return "an unticked item keeps it or something inside it";
    }
    return "";
}

std::string sizeOf(std::uint64_t bytes) {
    return sizeTextFor(static_cast<std::int64_t>(bytes)).text;
}

} // namespace

std::string_view reasonName(LeftReason reason) {
    switch (reason) {
    case LeftReason::OutsideBoundary:
        return "outside the granted folder";
    case LeftReason::OutsideOwnFolder:
        return "outside its extensions folder";
    case LeftReason::BehindLink:
        return "behind a link";
    case LeftReason::OtherMount:
        return "on another mount";
    case LeftReason::NotRemovable:
        return "not removable";
    case LeftReason::Locked:
        return "locked";
    case LeftReason::Damaged:
        return "damaged";
    case LeftReason::NotPlainFile:
        return "not a plain file";
    case LeftReason::ReadOnly:
        return "read-only";
    case LeftReason::StillReadable:
        return "still readable";
    case LeftReason::CannotOpen:
        return "cannot be opened";
    case LeftReason::UntickedInside:
        return "unticked inside";
    }
    return "";
}

bool CleanOutcome::leftAgainstTheTicks() const {
    return std::ranges::any_of(left,
                               [](const LeftAsItWas& place) { return place.reason != LeftReason::UntickedInside; });
}

std::vector<std::string> reportLines(const CleanOutcome& outcome) {
    std::vector<std::string> lines;
    for (const RemovedLocation& location : outcome.removed) {
        lines.push_back(location.whole ? fmt::format("Removed {} ({})", location.location, sizeOf(location.bytes))
                                       : fmt::format("Emptied {} ({}), keeping what is unticked", location.location,
                                                     sizeOf(location.bytes)));
    }
    std::int64_t rows = 0;
    for (const PurgedDatabase& database : outcome.purged) {
        lines.push_back(fmt::format("Purged {}: {} rows removed", database.database, database.rowsRemoved));
        rows += database.rowsRemoved;
    }
    for (const LeftAsItWas& left : outcome.left) {
        lines.push_back(left.detail.empty()
                            ? fmt::format("Left {}: {}", left.location, reasonName(left.reason))
                            : fmt::format("Left {}: {} ({})", left.location, reasonName(left.reason), left.detail));
    }
    lines.push_back(fmt::format("Freed {} in {} locations; {} rows removed from {} history databases; {} left as "
                                "they were",
                                sizeOf(outcome.bytesFreed()), outcome.removed.size(), rows, outcome.purged.size(),
                                outcome.left.size()));
    return lines;
}

void CleanOutcome::add(CleanOutcome other) {
    removed.insert(removed.end(), std::make_move_iterator(other.removed.begin()),
                   std::make_move_iterator(other.removed.end()));
    purged.insert(purged.end(), std::make_move_iterator(other.purged.begin()),
                  std::make_move_iterator(other.purged.end()));
    left.insert(left.end(), std::make_move_iterator(other.left.begin()), std::make_move_iterator(other.left.end()));
}

std::uint64_t CleanOutcome::bytesFreed() const {
    std::uint64_t bytes = 0;
    for (const RemovedLocation& location : removed) {
        bytes += location.bytes;
    }
    return bytes;
}

std::string describe(const LeftAsItWas& left) {
    if (left.detail.empty()) {
        return fmt::format("{}: left as it was: {}", left.location, reasonText(left.reason));
    }
    return fmt::format("{}: left as it was: {} ({})", left.location, reasonText(left.reason), left.detail);
}

} // namespace tidewell
