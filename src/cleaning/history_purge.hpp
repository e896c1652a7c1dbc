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
// - with each page goes every row that refers to it (its visits, search terms, annotations, most-visited entries;
//   see removeVisitedPages), and in the favicon database beside (schema.iconDatabase) the page's icon mapping (see
//   removePageIcons); nothing else changes.
// The deletions of one database, and of its favicon database, are one transaction with secure deletion on; a
// rollback journal is removed at the commit, and a database in WAL mode is checkpointed and its log truncated
// afterwards, so no removed URL or title can be read back from their files. A favicon database that cannot be used
// (see below) is left as it was and named in the outcome, and the history is purged all the same.
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
// afterwards, whether or not a row matched, through the same boundary as every removal, when the purge was
// committed or the database is missing from its folder; a database left as it was keeps them.

/// How long a purge waits for a browser's lock on its history database before it leaves the database alone.
inline constexpr std::chrono::milliseconds kHistoryBusyTimeout{1500};

/// The memory a purge's connection is given, from the size of the history database. Reads go through a memory map
/// of the file, so each page is read from it once and none is copied for reading; the page cache holds the pages
/// the purge changes (with secure deletion, most pages of a large history), so each is written once, at the commit,
/// rather than spilled to the file halfway and written again. Each is as large as the database, within its bound.
struct PurgeMemory {
    std::int64_t pageCacheBytes = 0;
    std::int64_t mmapBytes = 0;
};
/// The page cache is never smaller than SQLite's own default, nor larger than this.
inline constexpr std::int64_t kPurgePageCacheLeast = std::int64_t{2} << 20;
inline constexpr std::int64_t kPurgePageCacheBound = std::int64_t{512} << 20;
/// The memory map covers no more of the database than this (it takes address space, not memory: the pages are the
/// system's file cache).
inline constexpr std::int64_t kPurgeMmapBound = std::int64_t{2} << 30;

[[nodiscard]] PurgeMemory purgeMemoryFor(std::uint64_t databaseBytes);

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
