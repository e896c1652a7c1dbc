#pragma once

#include <cstdint>
#include <expected>
#include <span>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3;

namespace tidewell {

/// How a browser keeps its history, and so what refers to a row of its table of visited URLs.
enum class HistoryLayout {
    Chrome,  // "History" with `urls`, and the "Favicons" beside it
    Firefox, // "places.sqlite" with `moz_places`, and the "favicons.sqlite" beside it
    Safari,  // "History.db" with `history_items`
};

/// The rows one table lost.
struct RemovedRows {
    std::string table;
    std::int64_t rows = 0;
};

/// What removing pages did to one database.
struct TraceRemoval {
    /// Rows removed, table by table in the order they went, the table of visited URLs included. A table that lost
    /// nothing is not listed.
    std::vector<RemovedRows> removed;
    /// Firefox: pages that were asked for but kept because a bookmark names them. Their visits, typed input,
    /// metadata and annotations went; the page row, with its address and title, stays for the bookmark.
    std::int64_t keptBookmarked = 0;
    /// The addresses of the page rows removed, for removing their icons from the favicon database.
    std::vector<std::string> removedUrls;

    /// The rows `table` lost (0 when it is not listed).
    [[nodiscard]] std::int64_t rowsOf(std::string_view table) const;
    /// The rows every table lost together.
    [[nodiscard]] std::int64_t total() const;
};

/// Removes the rows of the browser's table of visited URLs with these ids, and every row that refers to them, so
/// that no visit, title, search term, annotation or most-visited entry of those pages is left in the database:
/// - Chrome: `urls`; their `visits`, and for those visits `visit_source`, `content_annotations`,
///   `context_annotations`, `clusters_and_visits`, `cluster_visit_duplicates` (either side), the `clusters` left
///   with no visit and their `cluster_keywords`; `keyword_search_terms`; `segments` with their `segment_usage`;
///   `visited_links` of the pages. A kept visit that came from a removed one is left with no source (from_visit 0).
/// - Firefox: `moz_places`; their `moz_historyvisits` with `moz_historyvisits_extra`, `moz_inputhistory`,
///   `moz_annos`, `moz_places_metadata` (as the page or as the referrer) with the search queries no metadata names
///   any more, `moz_newtab_shortcuts_interaction`, `moz_places_extra`, `moz_keywords`, and the `moz_origins` left
///   with no page. A kept visit that came from a removed one is left with no source (from_visit 0), and one that a
///   removed page triggered with none either (triggeringPlaceId NULL). A bookmarked page is kept (see
///   keptBookmarked) with its visit count, last visit and typed mark cleared, and its frecency marked for the
///   browser to work out again.
/// - Safari: `history_items`; their `history_visits`, which hold the page titles, and `history_items_to_tags`.
///   A kept visit that was a redirect from or to a removed one loses that link.
///
/// It must be called inside the caller's write transaction, which it neither begins nor ends: on an error the
/// caller rolls back, and the database is as it was. A table or column that this browser version lacks is passed
/// over; any other failure (a damaged page, a full disk, a statement refused) is returned as SQLite's message.
/// Ids that name no row are passed over. The ids are held in TEMP tables for the length of the call, and each
/// table is changed by one statement over them, through the table's index wherever the browser has one: set
/// `temp_store` to MEMORY on the connection so that they never touch the disk, and let no statement of the caller
/// still be stepping on it, as they are made and dropped.
[[nodiscard]] std::expected<TraceRemoval, std::string> removeVisitedPages(sqlite3* db, HistoryLayout layout,
                                                                          std::span<const std::int64_t> urlIds);

/// Removes from a favicon database the mapping of each of these page addresses to its icon, and the icons then
/// mapped to no page, as the browser itself lets them go:
/// - Chrome ("Favicons"): `icon_mapping` by `page_url`; `favicons` and their `favicon_bitmaps` left unmapped.
/// - Firefox ("favicons.sqlite"): `moz_pages_w_icons` by `page_url` with their `moz_icons_to_pages`; the
///   `moz_icons` left unmapped, except a site's root icon, which belongs to the site rather than to a page.
/// - Safari: nothing (its icons are not kept in such a database).
/// The addresses are compared exactly, byte for byte. Same transaction, error and TEMP table rules as
/// removeVisitedPages; give it the removedUrls of the history database's removal. `database` is the favicon
/// database's name on the connection: "main" when it was opened itself, or the name it is attached under beside
/// the history database (letters, digits and underscores), so that both change in one transaction.
[[nodiscard]] std::expected<TraceRemoval, std::string> removePageIcons(sqlite3* db, HistoryLayout layout,
                                                                       std::span<const std::string> pageUrls,
                                                                       std::string_view database = "main");

} // namespace tidewell
