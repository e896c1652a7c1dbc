#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "base/file_url.hpp"
#include "cleaning/adult_words.hpp"
#include "cleaning/clean_outcome.hpp"
#include "cleaning/safe_remove.hpp"
#include "layout/browsers.hpp"

namespace tidewell {

/// Who cleans: the window's or the command line's Clean (everything at once, in item order) or the hourly purge
/// ("Remove Start" first, one task per history database). The two differ only in these ways and in one log
/// text of the Firefox purge.
enum class CleanMode { Interactive, RealTime };

/// What a history purge routine is given: the word list of its caller, the folder it may change things in, and
/// which caller it works for.
struct PurgeContext {
    AdultWords words;
    const DeletionBoundary& boundary;
    CleanMode mode = CleanMode::Interactive;
};

// The purge of adult-site visits. It is given the file URL of a browser's history database (an Adult History
// item's "Path") and the browser's history schema, and removes from the schema's table of visited URLs exactly the
// rows whose URL holds a word of the list as literal text, the case of ASCII letters aside:
// - "%", "_", "'", "\" and '"' are ordinary characters, and bytes beyond ASCII compare as they are; the empty word
//   matches nothing; a URL is its text (a number as its text, a BLOB as its bytes where this SQLite's LIKE reads
//   them) up to its first NUL byte, and a NULL URL never matches;
// - a row is named by its 64-bit row id, so it is that row and no other that goes;
// - only that one table changes.
// The deletions of one database are one transaction with secure deletion on; a rollback journal is removed at the
// commit, and a database in WAL mode is checkpointed and its log truncated afterwards, so no removed URL can be
// read back from its files.
//
// The database is reached below the boundary through its held folder (see HeldDatabase): never outside it, never
// through a link, never created, and only while it and every journal beside it is a regular file with one link.
// A database that is missing from an existing folder counts as empty. One that is left as it was (outside the
// boundary, behind a link, not a plain file, locked by its browser for longer than kHistoryBusyTimeout, damaged,
// read-only) is named in the outcome with the reason, and so is a WAL database whose removed visits another
// program's open snapshot keeps readable for now. A purge killed at any moment leaves the database either as
// before or as after it.
//
// A purge logs the schema's text for its caller when it was committed or had nothing to do: on a macOS disk
// "Safari Deleted", "Chrome Deleted", and for Firefox "Chrome Deleted" from the window and "Firefox Deleted" from
// the hourly purge. A purge that left its database as it was logs nothing of the kind: the outcome says why
// instead. With schema.sessionFiles (Chrome), "Current Session" and "Current Tabs" beside the database are removed
// afterwards, whether or not a row matched (also when the database is missing), through the same boundary as every
// removal, as long as the database's folder was reached and the database could be opened or was missing.

/// How long a purge waits for a browser's lock on its history database before it leaves the database alone.
inline constexpr std::chrono::milliseconds kHistoryBusyTimeout{1500};

CleanOutcome purgeHistory(const HistorySchema& schema, const FileUrl& database, const PurgeContext& context);

/// What a purge of the database would remove, found without changing anything: the URL rows of the schema's table
/// that hold a word, matched as the purge matches them, on the database opened read-only through the same held
/// folder. A database that could not be looked at is `left`, with the reason the purge would give; a missing one
/// has no matching rows.
struct PurgePreview {
    std::int64_t matchingRows = 0;
    std::optional<LeftAsItWas> left;
};
[[nodiscard]] PurgePreview previewPurge(const HistorySchema& schema, const FileUrl& database,
                                        const PurgeContext& context);

} // namespace tidewell
