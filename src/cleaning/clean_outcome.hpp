#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tidewell {

/// Why a ticked location or a history database was left as it was.
enum class LeftReason {
    OutsideBoundary,  // not inside the folder Tidewell may clean (or a name that climbs out of it)
    OutsideOwnFolder, // an extension's recorded location outside its profile's extensions folder
    BehindLink,       // a link, or something that is not a folder, stands on the way to it
    OtherMount,       // it lies on another file system or mount
    NotRemovable,     // it, or some of what it holds, could not be removed
    Locked,           // another program holds the database locked
    Damaged,          // SQLite finds the database damaged
    NotPlainFile,     // the database, its journal, log or shared-memory file has other hard links or is no file
    ReadOnly,         // the database cannot be written
    StillReadable,    // purged, but another program's open snapshot keeps the removed visits in its files
    CannotOpen,       // the database cannot be opened for another reason
    UntickedInside,   // an unticked item names it, or something inside it, so that much of it stays
};

/// One location or database left as it was, and why.
struct LeftAsItWas {
    std::string location; // the path as the catalogue gives it
    LeftReason reason = LeftReason::NotRemovable;
    std::string detail; // what is known beyond the reason ("History-journal has 2 links", SQLite's message)

    friend bool operator==(const LeftAsItWas&, const LeftAsItWas&) = default;
};

/// A location that a clean removed, and the bytes on disk it held: all of it, or (not `whole`) everything in it but
/// what is named among the left, such as a folder emptied around what an unticked item keeps.
struct RemovedLocation {
    std::string location; // the path as the catalogue gives it
    std::uint64_t bytes = 0;
    bool whole = true;

    friend bool operator==(const RemovedLocation&, const RemovedLocation&) = default;
};

/// A history database whose purge was committed, and how many rows it removed.
struct PurgedDatabase {
    std::string database;
    std::int64_t rowsRemoved = 0;

    friend bool operator==(const PurgedDatabase&, const PurgedDatabase&) = default;
};

/// What a clean did: the locations it removed, the databases it purged, and everything ticked that it left as it
/// was, with the reason. Locations that were already gone are in none of the lists.
struct CleanOutcome {
    std::vector<RemovedLocation> removed;
    std::vector<PurgedDatabase> purged;
    std::vector<LeftAsItWas> left;

    /// Appends another outcome's lists to these.
    void add(CleanOutcome other);
    /// The bytes on disk the removed locations held, together.
    [[nodiscard]] std::uint64_t bytesFreed() const;
    /// Whether anything ticked was left as it was.
    [[nodiscard]] bool leftAnything() const { return !left.empty(); }
    /// Whether anything ticked was left as it was for a reason other than an unticked item keeping it: what a
    /// person asked for that could not be done.
    [[nodiscard]] bool leftAgainstTheTicks() const;
};

/// The reason as the report names it: "unticked inside", "behind a link", "not removable", "locked", "damaged",
/// and so on.
[[nodiscard]] std::string_view reasonName(LeftReason reason);

/// One line naming what was left and why: "<location>: left as it was: <reason>[ (<detail>)]".
[[nodiscard]] std::string describe(const LeftAsItWas& left);

/// The report of a clean as lines of text, for every face to show:
/// - "Removed <location> (<size>)" for each location removed, "Emptied <location> (<size>), keeping what is
///   unticked" for one removed but for what stays in it;
/// - "Purged <database>: <n> rows removed" for each history database whose purge was committed;
/// - "Left <location>: <reason name>[ (<detail>)]" for each location or database left as it was;
/// - last, "Freed <size> in <n> locations; <n> rows removed from <n> history databases; <n> left as they were".
/// Sizes are written as the catalogue writes them ("0 byte" for nothing).
[[nodiscard]] std::vector<std::string> reportLines(const CleanOutcome& outcome);

} // namespace tidewell
