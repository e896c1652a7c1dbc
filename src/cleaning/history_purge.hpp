#pragma once

#include <chrono>

#include "catalogue/file_url.hpp"
#include "cleaning/adult_words.hpp"
#include "cleaning/safe_remove.hpp"

namespace tidewell {

/// Who cleans: the window's Clean and Retry (`ToolsViewController`: everything at once, in item order) or the
/// hourly purge (`AppDelegate`: "Remove Start" first, one task per history database). The two differ only in
/// these respects and in one log text of the Firefox routine.
enum class CleanMode { Interactive, RealTime };

/// What a history purge routine is given: the word list of its caller, the folder it may change things in, and
/// which caller it works for.
struct PurgeContext {
    AdultWords words;
    const DeletionBoundary& boundary;
    CleanMode mode = CleanMode::Interactive;
};

// The three routines of the adult-history purge. Each is given the file URL of a browser's history database
// (an item's "Path") and removes from the browser's table of visited URLs every row whose URL contains a word
// of the list, the case of ASCII letters aside, exactly as one query "url LIKE '%word%'" per word followed by
// one "DELETE ... WHERE id = N" per row found would:
// - a word with "%" or "_" acts as a pattern, a word with an apostrophe finds nothing, the empty word finds every
//   row whose URL is text (or a number); NULL and BLOB URLs are never found, and text after a NUL is not looked at;
// - a row is named by its first column read as a 32-bit integer, so an id above 2147483647 does not reach its
//   row, and its low 32 bits may name another row, which goes instead;
// - only that one table changes.
// The deletions of one database are made in one transaction with secure deletion on, and a database in WAL
// mode is checkpointed and its log truncated afterwards, so no removed URL can be read back from either file.
//
// The database is opened in place by its file URL, never created. One outside the boundary, or reached through
// a link below the granted folder, is not opened. A database that cannot be opened is passed over silently; one
// that is missing from an existing folder counts as empty. A database that its browser holds locked is left as
// it was after at most kHistoryBusyTimeout of waiting. The purge's deletions are one transaction: a database
// SQLite finds damaged refuses the commit and is left as it was, and a purge killed at any moment leaves the
// database either as before or as after it. Each routine then logs its text: "Safari Deleted", "Chrome Deleted",
// and for Firefox "Chrome Deleted" from the window and "Firefox Deleted" from the hourly purge.

/// How long a purge waits for a browser's lock on its history database before it leaves the database alone.
inline constexpr std::chrono::milliseconds kHistoryBusyTimeout{1500};

/// Safari: `history_items`.
void deleteSafariAdultHistory(const FileUrl& path, const PurgeContext& context);
/// Chrome: `urls`; afterwards "Current Session" and "Current Tabs" beside the database are removed, whether or
/// not a row matched (also when the database is missing), through the same boundary as every removal.
void deleteChromeAdultHistory(const FileUrl& path, const PurgeContext& context);
/// Firefox: `moz_places`.
void deleteFireFoxAdultHistory(const FileUrl& path, const PurgeContext& context);

} // namespace tidewell
