#include "cleaning/history_traces.hpp"

#include <fmt/format.h>
#include <sqlite3.h>

#include <algorithm>
#include <map>
#include <memory>
#include <numeric>
#include <set>
#include <sstream>

namespace tidewell {

namespace {

// What a step's changes mean for the report.
enum class Tally {
    None,           // it fills a scratch table, or patches a row that stays
    RemovedRows,    // it deletes rows of `table`
    KeptBookmarked, // it sets aside bookmarked pages
};

// One statement of a removal. It runs only when every "table.column" of `needs` exists in the database, so a
// browser version without the table or the column passes over it. The scratch tables are TEMP tables of ids:
// tidewell_matched holds the ids asked for, the others what the steps gather from them. The rows a statement
// returns are the addresses of the pages it removed.
struct Step {
    const char* sql;
    const char* needs;
    Tally tally = Tally::None;
    const char* table = nullptr; // the table a RemovedRows step deletes from
};

struct Layout {
    std::vector<const char*> scratch; // CREATE TEMP TABLE bodies, "name(columns)"
    std::vector<Step> steps;
};

// Every statement drives from a scratch table into the browser's table through the browser's index on the column
// that refers (see the test that reads each statement's query plan); the few columns the browsers keep no index on
// are named where they are used.
const Layout kChromeHistory{
    {"tidewell_matched(id INTEGER PRIMARY KEY)", "tidewell_visits(id INTEGER PRIMARY KEY)",
     "tidewell_clusters(id INTEGER PRIMARY KEY)"},
    {
        {"INSERT INTO temp.tidewell_visits SELECT id FROM visits WHERE url IN (SELECT id FROM temp.tidewell_matched)",
         "visits.id visits.url"},
        {"DELETE FROM visit_source WHERE id IN (SELECT id FROM temp.tidewell_visits)", "visit_source.id",
         Tally::RemovedRows, "visit_source"},
        // The page's annotations: its search terms, its language, another title, the time spent on it.
        {"DELETE FROM content_annotations WHERE visit_id IN (SELECT id FROM temp.tidewell_visits)",
         "content_annotations.visit_id", Tally::RemovedRows, "content_annotations"},
        {"DELETE FROM context_annotations WHERE visit_id IN (SELECT id FROM temp.tidewell_visits)",
         "context_annotations.visit_id", Tally::RemovedRows, "context_annotations"},
        // The History page's groups of visits, which repeat the visited address in three forms.
        {"INSERT OR IGNORE INTO temp.tidewell_clusters SELECT cluster_id FROM clusters_and_visits "
         "WHERE visit_id IN (SELECT id FROM temp.tidewell_visits)",
         "clusters_and_visits.cluster_id clusters_and_visits.visit_id"},
        {"DELETE FROM clusters_and_visits WHERE visit_id IN (SELECT id FROM temp.tidewell_visits)",
         "clusters_and_visits.visit_id", Tally::RemovedRows, "clusters_and_visits"},
        {"DELETE FROM cluster_visit_duplicates WHERE visit_id IN (SELECT id FROM temp.tidewell_visits)",
         "cluster_visit_duplicates.visit_id", Tally::RemovedRows, "cluster_visit_duplicates"},
        // No index on the duplicate's side: the table is read whole, and it holds only the History page's duplicates.
        {"DELETE FROM cluster_visit_duplicates WHERE duplicate_visit_id IN (SELECT id FROM temp.tidewell_visits)",
         "cluster_visit_duplicates.duplicate_visit_id", Tally::RemovedRows, "cluster_visit_duplicates"},
        {"DELETE FROM cluster_keywords WHERE cluster_id IN (SELECT id FROM temp.tidewell_clusters) AND NOT EXISTS "
         "(SELECT 1 FROM clusters_and_visits WHERE clusters_and_visits.cluster_id = cluster_keywords.cluster_id)",
         "cluster_keywords.cluster_id clusters_and_visits.cluster_id", Tally::RemovedRows, "cluster_keywords"},
        {"DELETE FROM clusters WHERE cluster_id IN (SELECT id FROM temp.tidewell_clusters) AND NOT EXISTS "
         "(SELECT 1 FROM clusters_and_visits WHERE clusters_and_visits.cluster_id = clusters.cluster_id)",
         "clusters.cluster_id clusters_and_visits.cluster_id", Tally::RemovedRows, "clusters"},
        {"DELETE FROM visits WHERE id IN (SELECT id FROM temp.tidewell_visits)", "visits.id", Tally::RemovedRows,
         "visits"},
        // A kept visit that came from a removed one now comes from nowhere (0), rather than from the removed visit's
        // own source as the browser would link it: nothing kept leads back towards the removed page. The opener and
        // the synced originator columns may keep a removed visit's number, which the browser never gives out again.
        {"UPDATE visits SET from_visit = 0 WHERE from_visit IN (SELECT id FROM temp.tidewell_visits)",
         "visits.from_visit"},
        {"DELETE FROM keyword_search_terms WHERE url_id IN (SELECT id FROM temp.tidewell_matched)",
         "keyword_search_terms.url_id", Tally::RemovedRows, "keyword_search_terms"},
        // A segment's name is the page's address, and it feeds the most-visited tiles.
        {"DELETE FROM segment_usage WHERE segment_id IN "
         "(SELECT id FROM segments WHERE url_id IN (SELECT id FROM temp.tidewell_matched))",
         "segment_usage.segment_id segments.id segments.url_id", Tally::RemovedRows, "segment_usage"},
        {"DELETE FROM segments WHERE url_id IN (SELECT id FROM temp.tidewell_matched)", "segments.url_id",
         Tally::RemovedRows, "segments"},
        {"DELETE FROM visited_links WHERE link_url_id IN (SELECT id FROM temp.tidewell_matched)",
         "visited_links.link_url_id", Tally::RemovedRows, "visited_links"},
        {"DELETE FROM urls WHERE id IN (SELECT id FROM temp.tidewell_matched) RETURNING url", "urls.id urls.url",
         Tally::RemovedRows, "urls"},
    }};

// A bookmark is something the person kept on purpose, so its page stays, as the browser itself keeps it when it
// removes history: all that recorded the visits goes, the row that the bookmark names does not. The browser keeps
// its counters (a page's bookmark count, an origin's frecency) with TEMP triggers of its own connection, which call
// functions only it has: none of them is in the file, so none fires here, and what they would have worked out is
// marked for the browser to work out again.
const Layout kFirefoxHistory{
    {"tidewell_matched(id INTEGER PRIMARY KEY)", "tidewell_kept(id INTEGER PRIMARY KEY)",
     "tidewell_pages(id INTEGER PRIMARY KEY)", "tidewell_visits(id INTEGER PRIMARY KEY)",
     "tidewell_queries(id INTEGER PRIMARY KEY)", "tidewell_origins(id INTEGER PRIMARY KEY)"},
    {
        {"INSERT INTO temp.tidewell_kept SELECT id FROM temp.tidewell_matched "
         "WHERE EXISTS (SELECT 1 FROM moz_bookmarks WHERE moz_bookmarks.fk = tidewell_matched.id)",
         "moz_bookmarks.fk", Tally::KeptBookmarked},
        {"INSERT INTO temp.tidewell_pages SELECT id FROM temp.tidewell_matched "
         "WHERE id NOT IN (SELECT id FROM temp.tidewell_kept)",
         ""},
        {"INSERT INTO temp.tidewell_visits SELECT id FROM moz_historyvisits "
         "WHERE place_id IN (SELECT id FROM temp.tidewell_matched)",
         "moz_historyvisits.id moz_historyvisits.place_id"},
        {"DELETE FROM moz_historyvisits_extra WHERE visit_id IN (SELECT id FROM temp.tidewell_visits)",
         "moz_historyvisits_extra.visit_id", Tally::RemovedRows, "moz_historyvisits_extra"},
        {"DELETE FROM moz_historyvisits WHERE id IN (SELECT id FROM temp.tidewell_visits)", "moz_historyvisits.id",
         Tally::RemovedRows, "moz_historyvisits"},
        // Visit and page numbers are given out again, so a kept visit must not go on naming a removed one.
        {"UPDATE moz_historyvisits SET from_visit = 0 WHERE from_visit IN (SELECT id FROM temp.tidewell_visits)",
         "moz_historyvisits.from_visit"},
        // No index on the triggering page: the visits are read once, and only the few that name one change.
        {"UPDATE moz_historyvisits SET triggeringPlaceId = NULL "
         "WHERE triggeringPlaceId IN (SELECT id FROM temp.tidewell_pages)",
         "moz_historyvisits.triggeringPlaceId"},
        // What was typed in the address bar to reach the page.
        {"DELETE FROM moz_inputhistory WHERE place_id IN (SELECT id FROM temp.tidewell_matched)",
         "moz_inputhistory.place_id", Tally::RemovedRows, "moz_inputhistory"},
        {"DELETE FROM moz_annos WHERE place_id IN (SELECT id FROM temp.tidewell_matched)", "moz_annos.place_id",
         Tally::RemovedRows, "moz_annos"},
        {"INSERT OR IGNORE INTO temp.tidewell_queries SELECT search_query_id FROM moz_places_metadata "
         "WHERE place_id IN (SELECT id FROM temp.tidewell_matched) AND search_query_id IS NOT NULL",
         "moz_places_metadata.place_id moz_places_metadata.search_query_id"},
        {"INSERT OR IGNORE INTO temp.tidewell_queries SELECT search_query_id FROM moz_places_metadata "
         "WHERE referrer_place_id IN (SELECT id FROM temp.tidewell_matched) AND search_query_id IS NOT NULL",
         "moz_places_metadata.referrer_place_id moz_places_metadata.search_query_id"},
        {"DELETE FROM moz_places_metadata WHERE place_id IN (SELECT id FROM temp.tidewell_matched)",
         "moz_places_metadata.place_id", Tally::RemovedRows, "moz_places_metadata"},
        {"DELETE FROM moz_places_metadata WHERE referrer_place_id IN (SELECT id FROM temp.tidewell_matched)",
         "moz_places_metadata.referrer_place_id", Tally::RemovedRows, "moz_places_metadata"},
        // No index on the metadata's query: it is read once, and only when a removed visit came from a search.
        {"DELETE FROM moz_places_metadata_search_queries WHERE id IN (SELECT id FROM temp.tidewell_queries) "
         "AND id NOT IN (SELECT search_query_id FROM moz_places_metadata WHERE search_query_id IS NOT NULL)",
         "moz_places_metadata_search_queries.id moz_places_metadata.search_query_id", Tally::RemovedRows,
         "moz_places_metadata_search_queries"},
        {"DELETE FROM moz_newtab_shortcuts_interaction WHERE place_id IN (SELECT id FROM temp.tidewell_matched)",
         "moz_newtab_shortcuts_interaction.place_id", Tally::RemovedRows, "moz_newtab_shortcuts_interaction"},
        {"DELETE FROM moz_places_extra WHERE place_id IN (SELECT id FROM temp.tidewell_pages)",
         "moz_places_extra.place_id", Tally::RemovedRows, "moz_places_extra"},
        {"DELETE FROM moz_keywords WHERE place_id IN (SELECT id FROM temp.tidewell_pages)", "moz_keywords.place_id",
         Tally::RemovedRows, "moz_keywords"},
        {"INSERT OR IGNORE INTO temp.tidewell_origins SELECT origin_id FROM moz_places "
         "WHERE id IN (SELECT id FROM temp.tidewell_pages) AND origin_id IS NOT NULL",
         "moz_places.origin_id"},
        {"DELETE FROM moz_places WHERE id IN (SELECT id FROM temp.tidewell_pages) RETURNING url",
         "moz_places.id moz_places.url", Tally::RemovedRows, "moz_places"},
        {"UPDATE moz_places SET visit_count = 0, last_visit_date = NULL, typed = 0 "
         "WHERE id IN (SELECT id FROM temp.tidewell_kept)",
         "moz_places.visit_count moz_places.last_visit_date moz_places.typed"},
        {"UPDATE moz_places SET recalc_frecency = 1 WHERE id IN (SELECT id FROM temp.tidewell_kept)",
         "moz_places.recalc_frecency"},
        {"UPDATE moz_places SET recalc_alt_frecency = 1 WHERE id IN (SELECT id FROM temp.tidewell_kept)",
         "moz_places.recalc_alt_frecency"},
        // An origin ("http://", "host:port") goes with its last page; one that keeps pages is worked out again.
        {"DELETE FROM moz_origins WHERE id IN (SELECT id FROM temp.tidewell_origins) "
         "AND NOT EXISTS (SELECT 1 FROM moz_places WHERE moz_places.origin_id = moz_origins.id)",
         "moz_origins.id moz_places.origin_id", Tally::RemovedRows, "moz_origins"},
        {"UPDATE moz_origins SET recalc_frecency = 1 WHERE id IN (SELECT id FROM temp.tidewell_origins)",
         "moz_origins.recalc_frecency"},
        {"UPDATE moz_origins SET recalc_alt_frecency = 1 WHERE id IN (SELECT id FROM temp.tidewell_origins)",
         "moz_origins.recalc_alt_frecency"},
    }};

const Layout kSafariHistory{
    {"tidewell_matched(id INTEGER PRIMARY KEY)", "tidewell_visits(id INTEGER PRIMARY KEY)"},
    {
        {"INSERT INTO temp.tidewell_visits SELECT id FROM history_visits "
         "WHERE history_item IN (SELECT id FROM temp.tidewell_matched)",
         "history_visits.id history_visits.history_item"},
        {"DELETE FROM history_visits WHERE id IN (SELECT id FROM temp.tidewell_visits)", "history_visits.id",
         Tally::RemovedRows, "history_visits"},
        {"UPDATE history_visits SET redirect_source = NULL WHERE redirect_source IN "
         "(SELECT id FROM temp.tidewell_visits)",
         "history_visits.redirect_source"},
        {"UPDATE history_visits SET redirect_destination = NULL WHERE redirect_destination IN "
         "(SELECT id FROM temp.tidewell_visits)",
         "history_visits.redirect_destination"},
        {"DELETE FROM history_items_to_tags WHERE history_item IN (SELECT id FROM temp.tidewell_matched)",
         "history_items_to_tags.history_item", Tally::RemovedRows, "history_items_to_tags"},
        {"DELETE FROM history_items WHERE id IN (SELECT id FROM temp.tidewell_matched) RETURNING url",
         "history_items.id history_items.url", Tally::RemovedRows, "history_items"},
    }};

// The favicon databases may be attached to the history database's connection: "{db}" is replaced by the name the
// favicon database has there, so that a table of the same name elsewhere is never touched.

// An icon goes once no page is mapped to it, as the browser lets it go.
const Layout kChromeIcons{
    {"tidewell_urls(url TEXT PRIMARY KEY)", "tidewell_icons(id INTEGER PRIMARY KEY)"},
    {
        {"INSERT OR IGNORE INTO temp.tidewell_icons SELECT icon_id FROM {db}.icon_mapping "
         "WHERE page_url IN (SELECT url FROM temp.tidewell_urls) AND icon_id IS NOT NULL",
         "icon_mapping.page_url icon_mapping.icon_id"},
        {"DELETE FROM {db}.icon_mapping WHERE page_url IN (SELECT url FROM temp.tidewell_urls)",
         "icon_mapping.page_url", Tally::RemovedRows, "icon_mapping"},
        {"DELETE FROM {db}.favicon_bitmaps WHERE icon_id IN (SELECT id FROM temp.tidewell_icons "
         "WHERE NOT EXISTS (SELECT 1 FROM {db}.icon_mapping WHERE icon_mapping.icon_id = tidewell_icons.id))",
         "favicon_bitmaps.icon_id icon_mapping.icon_id", Tally::RemovedRows, "favicon_bitmaps"},
        {"DELETE FROM {db}.favicons WHERE id IN (SELECT id FROM temp.tidewell_icons) "
         "AND NOT EXISTS (SELECT 1 FROM {db}.icon_mapping WHERE icon_mapping.icon_id = favicons.id)",
         "favicons.id icon_mapping.icon_id", Tally::RemovedRows, "favicons"},
    }};

const Layout kFirefoxIcons{
    {"tidewell_urls(url TEXT PRIMARY KEY)", "tidewell_pages(id INTEGER PRIMARY KEY)",
     "tidewell_icons(id INTEGER PRIMARY KEY)"},
    {
        // The browser indexes pages by a hash of the address only: the pages are read once, each address looked up
        // among the removed ones.
        {"INSERT INTO temp.tidewell_pages SELECT id FROM {db}.moz_pages_w_icons "
         "WHERE page_url IN (SELECT url FROM temp.tidewell_urls)",
         "moz_pages_w_icons.id moz_pages_w_icons.page_url"},
        {"INSERT OR IGNORE INTO temp.tidewell_icons SELECT icon_id FROM {db}.moz_icons_to_pages "
         "WHERE page_id IN (SELECT id FROM temp.tidewell_pages)",
         "moz_icons_to_pages.page_id moz_icons_to_pages.icon_id"},
        {"DELETE FROM {db}.moz_icons_to_pages WHERE page_id IN (SELECT id FROM temp.tidewell_pages)",
         "moz_icons_to_pages.page_id", Tally::RemovedRows, "moz_icons_to_pages"},
        {"DELETE FROM {db}.moz_pages_w_icons WHERE id IN (SELECT id FROM temp.tidewell_pages)", "moz_pages_w_icons.id",
         Tally::RemovedRows, "moz_pages_w_icons"},
        // No index on the icon's side of the mapping: it is read once, and only when an icon may have lost its
        // last page. A root icon (the site's /favicon.ico) belongs to the site and stays.
        {"DELETE FROM {db}.moz_icons WHERE id IN (SELECT id FROM temp.tidewell_icons) AND root = 0 "
         "AND id NOT IN (SELECT icon_id FROM {db}.moz_icons_to_pages)",
         "moz_icons.id moz_icons.root moz_icons_to_pages.icon_id", Tally::RemovedRows, "moz_icons"},
    }};

const Layout kNoIcons{{}, {}};

struct StatementFinalizer {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, StatementFinalizer>;

std::unexpected<std::string> failure(sqlite3* db, std::string_view what) {
    return std::unexpected(fmt::format("{}: {}", what, sqlite3_errmsg(db)));
}

std::expected<Statement, std::string> prepare(sqlite3* db, const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
        sqlite3_finalize(statement);
        return failure(db, sql);
    }
    return Statement(statement);
}

std::expected<void, std::string> run(sqlite3* db, const std::string& sql) {
    if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        return failure(db, sql);
    }
    return {};
}

// The columns of one database's own tables ("main", or the name it is attached under), read once per table.
class SchemaColumns {
public:
    SchemaColumns(sqlite3* db, std::string_view database) : m_db(db), m_database(database) {}

    bool has(const std::string& table, const std::string& column) {
        auto found = m_columns.find(table);
        if (found == m_columns.end()) {
            found = m_columns.emplace(table, read(table)).first;
        }
        return found->second.contains(column);
    }

    // Whether every "table.column" of a step's needs exists.
    bool hasAll(std::string_view needs) {
        std::istringstream words{std::string(needs)};
        std::string need;
        while (words >> need) {
            const std::size_t dot = need.find('.');
            if (!has(need.substr(0, dot), need.substr(dot + 1))) {
                return false;
            }
        }
        return true;
    }

private:
    std::set<std::string> read(const std::string& table) {
        std::set<std::string> columns;
        // Only the database's own schema: a TEMP table of the same name must not stand in for the browser's.
        sqlite3_stmt* raw = nullptr;
        if (sqlite3_prepare_v2(m_db, "SELECT name FROM pragma_table_info(?1, ?2)", -1, &raw, nullptr) != SQLITE_OK) {
            sqlite3_finalize(raw);
            return columns;
        }
        const Statement info(raw);
        sqlite3_bind_text(raw, 1, table.c_str(), -1, SQLITE_TRANSIENT);
        sqlite3_bind_text(raw, 2, m_database.c_str(), -1, SQLITE_TRANSIENT);
        while (sqlite3_step(raw) == SQLITE_ROW) {
            columns.emplace(reinterpret_cast<const char*>(sqlite3_column_text(raw, 0)));
        }
        return columns;
    }

    sqlite3* m_db;
    std::string m_database;
    std::map<std::string, std::set<std::string>, std::less<>> m_columns;
};

std::string scratchName(const char* body) {
    const std::string text(body);
    return text.substr(0, text.find('('));
}

// The TEMP tables of one call: made empty at its start, dropped at its end, whatever happened between. A
// rollback of the caller's transaction takes them away as well.
class Scratch {
public:
    Scratch(sqlite3* db, const Layout& layout) : m_db(db), m_layout(layout) {}
    ~Scratch() {
        for (const char* body : m_layout.scratch) {
            static_cast<void>(run(m_db, "DROP TABLE IF EXISTS temp." + scratchName(body)));
        }
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    std::expected<void, std::string> create() {
        for (const char* body : m_layout.scratch) {
            auto dropped = run(m_db, "DROP TABLE IF EXISTS temp." + scratchName(body));
            if (!dropped) {
                return dropped;
            }
            if (auto made = run(m_db, std::string("CREATE TEMP TABLE ") + body); !made) {
                return made;
            }
        }
        return {};
    }

private:
    sqlite3* m_db;
    const Layout& m_layout;
};

void addRemoved(TraceRemoval& removal, const char* table, std::int64_t rows) {
    if (rows == 0) {
        return;
    }
    const auto listed = std::ranges::find(removal.removed, std::string_view(table), &RemovedRows::table);
    if (listed != removal.removed.end()) {
        listed->rows += rows;
    } else {
        removal.removed.push_back({table, rows});
    }
}

// A step's statement for the database it works on: "{db}" is that database's name.
std::string statementFor(const Step& step, std::string_view database) {
    std::string sql = step.sql;
    for (std::size_t at = 0; (at = sql.find("{db}", at)) != std::string::npos; at += database.size()) {
        sql.replace(at, 4, database);
    }
    return sql;
}

// A name a database may be attached under: plain letters, digits and underscores, so it is one SQL word.
bool isPlainDatabaseName(std::string_view name) {
    return !name.empty() && std::ranges::all_of(name, [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
    });
}

std::expected<void, std::string> runStep(sqlite3* db, const Step& step, std::string_view database,
                                         TraceRemoval& removal) {
    const std::string sql = statementFor(step, database);
    auto statement = prepare(db, sql);
    if (!statement) {
        return std::unexpected(statement.error());
    }
    sqlite3_stmt* s = statement->get();
    int rc = SQLITE_ROW;
    while ((rc = sqlite3_step(s)) == SQLITE_ROW) {
        if (sqlite3_column_type(s, 0) != SQLITE_NULL) {
            const auto* text = static_cast<const char*>(sqlite3_column_blob(s, 0));
            removal.removedUrls.emplace_back(text, static_cast<std::size_t>(sqlite3_column_bytes(s, 0)));
        }
    }
    if (rc != SQLITE_DONE) {
        return failure(db, sql);
    }
    const std::int64_t changed = sqlite3_changes64(db);
    if (step.tally == Tally::RemovedRows) {
        addRemoved(removal, step.table, changed);
    } else if (step.tally == Tally::KeptBookmarked) {
        removal.keptBookmarked += changed;
    }
    return {};
}

// Fills the scratch table `into` with the values given, one bound insert each, then runs the layout's steps.
template <typename Value, typename Bind>
std::expected<TraceRemoval, std::string> removeWith(sqlite3* db, std::string_view database, const Layout& layout,
                                                    const char* into, std::span<const Value> values, Bind bind) {
    if (sqlite3_get_autocommit(db) != 0) {
        return std::unexpected(std::string("not inside a transaction: the removal must be one with the purge's"));
    }
    if (!isPlainDatabaseName(database)) {
        return std::unexpected(fmt::format("'{}' is not a name a database is attached under", database));
    }
    TraceRemoval removal;
    if (layout.steps.empty()) {
        return removal;
    }
    Scratch scratch(db, layout);
    if (auto made = scratch.create(); !made) {
        return std::unexpected(made.error());
    }
    auto insert = prepare(db, fmt::format("INSERT OR IGNORE INTO temp.{} VALUES (?1)", into));
    if (!insert) {
        return std::unexpected(insert.error());
    }
    for (const Value& value : values) {
        bind(insert->get(), value);
        if (sqlite3_step(insert->get()) != SQLITE_DONE) {
            return failure(db, "gathering what to remove");
        }
        sqlite3_reset(insert->get());
    }
    SchemaColumns schema(db, database);
    for (const Step& step : layout.steps) {
        if (!schema.hasAll(step.needs)) {
            continue; // this version of the browser keeps no such table or column
        }
        if (auto ran = runStep(db, step, database, removal); !ran) {
            return std::unexpected(ran.error());
        }
    }
    return removal;
}

const Layout& historyLayout(HistoryLayout layout) {
    switch (layout) {
    case HistoryLayout::Chrome:
        return kChromeHistory;
    case HistoryLayout::Firefox:
        return kFirefoxHistory;
    case HistoryLayout::Safari:
        break;
    }
    return kSafariHistory;
}

const Layout& iconLayout(HistoryLayout layout) {
    switch (layout) {
    case HistoryLayout::Chrome:
        return kChromeIcons;
    case HistoryLayout::Firefox:
        return kFirefoxIcons;
    case HistoryLayout::Safari:
        break;
    }
    return kNoIcons;
}

} // namespace

std::int64_t TraceRemoval::rowsOf(std::string_view table) const {
    const auto listed = std::ranges::find(removed, table, &RemovedRows::table);
    return listed == removed.end() ? 0 : listed->rows;
}

std::int64_t TraceRemoval::total() const {
    return std::accumulate(removed.begin(), removed.end(), std::int64_t{0},
                           [](std::int64_t sum, const RemovedRows& r) { return sum + r.rows; });
}

std::expected<TraceRemoval, std::string> removeVisitedPages(sqlite3* db, HistoryLayout layout,
                                                            std::span<const std::int64_t> urlIds) {
    return removeWith(db, "main", historyLayout(layout), "tidewell_matched", urlIds,
                      [](sqlite3_stmt* insert, std::int64_t id) { sqlite3_bind_int64(insert, 1, id); });
}

std::expected<TraceRemoval, std::string>
removePageIcons(sqlite3* db, HistoryLayout layout, std::span<const std::string> pageUrls, std::string_view database) {
    return removeWith(db, database, iconLayout(layout), "tidewell_urls", pageUrls,
                      [](sqlite3_stmt* insert, const std::string& url) {
                          sqlite3_bind_text(insert, 1, url.data(), static_cast<int>(url.size()), SQLITE_STATIC);
                      });
}

} // namespace tidewell
