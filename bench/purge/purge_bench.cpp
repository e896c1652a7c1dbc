// Times the adult-history purge on a Chrome-shaped history on disk against two baselines measured in the same run:
//
// - the floor: one scan of the table of visited addresses, then one transaction that deletes the same ids with the
//   same related rows (their visits), in the same journal mode, with secure deletion and the same page cache and
//   memory map; it knows the ids beforehand and matches nothing;
// - the word-by-word purge: one LIKE query per word, then one DELETE per row found, each its own transaction.
//
//   tidewell-bench-purge [--rows N] [--words N] [--runs N] [--dir DIR] [--no-literal]
//   tidewell-bench-purge [--rows N] [--words N] --write HISTORY WORDS   (only writes the database and the words, one
//                                                                       per line, for a run of tidewell-cli purge)
//
// Defaults: 1,000,000 addresses with titles and the address index, one or two visits each, 5% of them holding an
// adult word; 300 words; 3 alternating runs of the floor and the purge, of which the medians count; one run of the
// word-by-word purge; and a folder under build/ (on disk). Every run starts from a fresh copy of the same database,
// already in the page cache. The purge runs in a child process of its own, which reports its time and its peak
// memory outside SQLite's page cache.
#include <fmt/format.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "base/log.hpp"
#include "cleaning/adult_words.hpp"
#include "cleaning/history_purge.hpp"
#include "layout/disk_layout.hpp"
#include "support/disk_builder.hpp"
#include "support/literal_purge.hpp"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

struct Options {
    std::size_t rows = 1000000;
    std::size_t words = 300;
    std::size_t runs = 3;
    std::string dir = "build/bench-purge";
    bool literal = true;
    std::string writeHistory;
    std::string writeWords;
};

const std::vector<std::string> kSyllables{"qa", "qe", "qi", "qo", "qu", "xa", "xe", "xi", "xo", "xu",
                                          "za", "ze", "zi", "zo", "zu", "ka", "ve", "ri", "lo", "nu"};

// The shipped list first, then made-up fragments up to the count. Every made-up one holds a q, x or z, letters
// the ordinary addresses below never use, so exactly the adult rows match.
std::vector<std::string> makeWords(std::size_t count, std::mt19937& random) {
    std::vector<std::string> words = tidewell::loadAdultWords()->words();
    if (words.size() > count) {
        words.resize(count);
    }
    while (words.size() < count) {
        std::string word = kSyllables[random() % 15];
        for (std::size_t i = 0, n = 2 + random() % 3; i < n; ++i) {
            word += kSyllables[random() % kSyllables.size()];
        }
        words.push_back(std::move(word));
    }
    return words;
}

void check(int rc, sqlite3* db, const char* what) {
    if (rc != SQLITE_OK && rc != SQLITE_DONE && rc != SQLITE_ROW) {
        throw std::runtime_error(fmt::format("{}: {}", what, sqlite3_errmsg(db)));
    }
}

// Chrome's own tables and indexes for addresses and visits, as its History keeps them.
constexpr const char* kChromeSchema =
    "PRAGMA journal_mode=DELETE;"
    "CREATE TABLE meta(key LONGVARCHAR NOT NULL UNIQUE PRIMARY KEY, value LONGVARCHAR);"
    "CREATE TABLE urls(id INTEGER PRIMARY KEY AUTOINCREMENT,url LONGVARCHAR,title LONGVARCHAR,"
    "visit_count INTEGER DEFAULT 0 NOT NULL,typed_count INTEGER DEFAULT 0 NOT NULL,"
    "last_visit_time INTEGER NOT NULL,hidden INTEGER DEFAULT 0 NOT NULL);"
    "CREATE INDEX urls_url_index ON urls (url);"
    "CREATE TABLE visits(id INTEGER PRIMARY KEY AUTOINCREMENT,url INTEGER NOT NULL,visit_time INTEGER NOT NULL,"
    "from_visit INTEGER,transition INTEGER DEFAULT 0 NOT NULL,segment_id INTEGER,"
    "visit_duration INTEGER DEFAULT 0 NOT NULL,incremented_omnibox_typed_score BOOLEAN DEFAULT FALSE NOT NULL,"
    "opener_visit INTEGER,originator_cache_guid TEXT,originator_visit_id INTEGER,originator_from_visit INTEGER,"
    "originator_opener_visit INTEGER,is_known_to_sync BOOLEAN DEFAULT FALSE NOT NULL,"
    "consider_for_ntp_most_visited BOOLEAN DEFAULT FALSE NOT NULL,external_referrer_url TEXT,"
    "visited_link_id INTEGER DEFAULT 0 NOT NULL,app_id TEXT);"
    "CREATE INDEX visits_url_index ON visits (url);"
    "CREATE INDEX visits_from_index ON visits (from_visit);"
    "CREATE INDEX visits_time_index ON visits (visit_time);";

// The history: ordinary addresses with their titles, and one in twenty with an adult word in its host.
void writeHistory(const std::string& path, std::size_t rows, const std::vector<std::string>& words,
                  std::mt19937& random) {
    const std::vector<std::string> hosts{"news.example.org",  "www.example.com",    "mail.example.net",
                                         "docs.example.org",  "shop.example.com",   "travel.example.net",
                                         "music.example.org", "recipes.example.com"};
    const std::vector<std::string> paths{
        "today",          "search?b=weather", "inbox",           "manual/intro.html", "cart",
        "flights/berlin", "albums/2026",      "bread/sourdough", "account/settings"};
    const std::vector<std::string> titles{"Today's headlines and weather",
                                          "Search results for the weekend",
                                          "Inbox (3) - mail",
                                          "Introduction - the manual",
                                          "Your shopping cart",
                                          "Cheap flights to Berlin",
                                          "Albums of the year",
                                          "Sourdough bread, step by step",
                                          "Account settings"};
    sqlite3* db = nullptr;
    check(sqlite3_open(path.c_str(), &db), db, "open");
    check(sqlite3_exec(db, kChromeSchema, nullptr, nullptr, nullptr), db, "schema");
    check(sqlite3_exec(db, "BEGIN", nullptr, nullptr, nullptr), db, "begin");
    sqlite3_stmt* url = nullptr;
    sqlite3_stmt* visit = nullptr;
    check(sqlite3_prepare_v2(db, "INSERT INTO urls (id,url,title,visit_count,last_visit_time) VALUES (?1,?2,?3,?4,?5)",
                             -1, &url, nullptr),
          db, "prepare");
    check(sqlite3_prepare_v2(db,
                             "INSERT INTO visits (url,visit_time,from_visit,transition,visit_duration) "
                             "VALUES (?1,?2,0,805306368,?3)",
                             -1, &visit, nullptr),
          db, "prepare");
    for (std::size_t row = 1; row <= rows; ++row) {
        const std::size_t page = random() % paths.size();
        std::string address =
            "https://" + hosts[random() % hosts.size()] + "/" + paths[page] + fmt::format("/{}", random() % 100000);
        if (random() % 20 == 0) {
            std::string word = words[random() % words.size()];
            if (random() % 4 == 0) {
                std::ranges::transform(word, word.begin(), [](char c) {
                    return static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
                });
            }
            address.insert(8, "www." + word + "-");
        }
        const auto time = static_cast<std::int64_t>(13300000000000000 + row * 1000);
        const int visits = 1 + static_cast<int>(random() % 2);
        sqlite3_bind_int64(url, 1, static_cast<std::int64_t>(row));
        sqlite3_bind_text(url, 2, address.c_str(), -1, SQLITE_TRANSIENT);
        sqlite3_bind_text(url, 3, titles[page].c_str(), -1, SQLITE_STATIC);
        sqlite3_bind_int(url, 4, visits);
        sqlite3_bind_int64(url, 5, time);
        check(sqlite3_step(url), db, "url");
        sqlite3_reset(url);
        for (int v = 0; v < visits; ++v) {
            sqlite3_bind_int64(visit, 1, static_cast<std::int64_t>(row));
            sqlite3_bind_int64(visit, 2, time + v);
            sqlite3_bind_int64(visit, 3, static_cast<std::int64_t>(random() % 60000000));
            check(sqlite3_step(visit), db, "visit");
            sqlite3_reset(visit);
        }
    }
    sqlite3_finalize(url);
    sqlite3_finalize(visit);
    check(sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr), db, "commit");
    sqlite3_close(db);
}

std::vector<std::int64_t> column(sqlite3* db, const char* sql) {
    std::vector<std::int64_t> values;
    sqlite3_stmt* statement = nullptr;
    check(sqlite3_prepare_v2(db, sql, -1, &statement, nullptr), db, sql);
    while (sqlite3_step(statement) == SQLITE_ROW) {
        values.push_back(sqlite3_column_int64(statement, 0));
    }
    sqlite3_finalize(statement);
    return values;
}

// What a purged copy holds: the ids of its addresses and of its visits.
struct Left {
    std::vector<std::int64_t> urls;
    std::vector<std::int64_t> visits;
    friend bool operator==(const Left&, const Left&) = default;
};

Left leftIn(const std::string& path) {
    sqlite3* db = nullptr;
    sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
    Left left{column(db, "SELECT id FROM urls ORDER BY id"), column(db, "SELECT id FROM visits ORDER BY id")};
    sqlite3_close(db);
    return left;
}

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// The floor: the scan and the one transaction the purge cannot do without, given the ids to delete.
double floorRun(const std::string& path, const std::vector<std::int64_t>& ids) {
    const Clock::time_point start = Clock::now();
    sqlite3* db = nullptr;
    check(sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr), db, "open");
    const tidewell::PurgeMemory memory = tidewell::purgeMemoryFor(fs::file_size(path));
    const std::string settings =
        fmt::format("PRAGMA secure_delete=ON; PRAGMA temp_store=MEMORY; PRAGMA journal_mode=DELETE; "
                    "PRAGMA cache_size=-{}; PRAGMA mmap_size={}",
                    memory.pageCacheBytes / 1024, memory.mmapBytes);
    check(sqlite3_exec(db, settings.c_str(), nullptr, nullptr, nullptr), db, "settings");
    check(sqlite3_exec(db, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), db, "begin");
    sqlite3_stmt* scan = nullptr;
    check(sqlite3_prepare_v2(db, "SELECT rowid, url FROM urls", -1, &scan, nullptr), db, "scan");
    std::size_t bytes = 0;
    std::vector<std::int64_t> found;
    while (sqlite3_step(scan) == SQLITE_ROW) {
        const auto* text = sqlite3_column_text(scan, 1);
        bytes += text != nullptr ? std::strlen(reinterpret_cast<const char*>(text)) : 0;
        const std::int64_t id = sqlite3_column_int64(scan, 0);
        if (std::ranges::binary_search(ids, id)) {
            found.push_back(id);
        }
    }
    sqlite3_finalize(scan);
    check(sqlite3_exec(db, "CREATE TEMP TABLE gone(id INTEGER PRIMARY KEY)", nullptr, nullptr, nullptr), db, "temp");
    sqlite3_stmt* insert = nullptr;
    check(sqlite3_prepare_v2(db, "INSERT INTO temp.gone VALUES (?1)", -1, &insert, nullptr), db, "insert");
    for (const std::int64_t id : found) {
        sqlite3_bind_int64(insert, 1, id);
        check(sqlite3_step(insert), db, "insert");
        sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    check(sqlite3_exec(db,
                       "DELETE FROM visits WHERE url IN (SELECT id FROM temp.gone);"
                       "DELETE FROM urls WHERE id IN (SELECT id FROM temp.gone);"
                       "COMMIT",
                       nullptr, nullptr, nullptr),
          db, "delete");
    sqlite3_close(db);
    const double seconds = secondsSince(start);
    return bytes > 0 ? seconds : -1;
}

// The bytes of the process's own memory (RssAnon) now, from /proc.
sqlite3_int64 anonymousBytes() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("RssAnon:")) {
            return std::stoll(line.substr(8)) * 1024;
        }
    }
    return 0;
}

struct PurgeRun {
    double seconds = 0;
    sqlite3_int64 outsidePageCache = 0; // peak of the process's own memory less the most SQLite's page cache held
    sqlite3_int64 pageCache = 0;        // peak of SQLite's page cache
    bool purged = false;
};

// The purge, in a child process so that its memory is its own: it reports its time and the peak of its own memory
// (RssAnon: the memory map's pages are the system's file cache) less the most SQLite's page cache had held by then,
// sampled every millisecond. A page the cache lets go stays in the process's memory for reuse, so the most it held,
// not what it holds, is what to take away.
PurgeRun purgeRun(const std::string& folder, const std::string& path, const std::vector<std::string>& words) {
    int pipeEnds[2];
    if (::pipe(pipeEnds) != 0) {
        throw std::runtime_error("pipe");
    }
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(pipeEnds[0]);
        PurgeRun run;
        std::atomic<bool> done{false};
        std::thread sampler([&] {
            while (!done) {
                sqlite3_int64 cache = 0;
                sqlite3_int64 peak = 0;
                sqlite3_status64(SQLITE_STATUS_PAGECACHE_OVERFLOW, &cache, &peak, 0);
                run.outsidePageCache = std::max(run.outsidePageCache, anonymousBytes() - peak);
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        });
        const tidewell::DeletionBoundary boundary(folder);
        const tidewell::AdultWords adult = tidewell::makeAdultWords(words);
        const Clock::time_point start = Clock::now();
        const tidewell::CleanOutcome outcome = tidewell::purgeHistory(
            *tidewell::findBrowser(tidewell::linuxLayout(), "chromium")->history, tidewell::FileUrl{path},
            tidewell::PurgeContext{adult, boundary, tidewell::CleanMode::RealTime});
        run.seconds = secondsSince(start);
        done = true;
        sampler.join();
        sqlite3_int64 cache = 0;
        sqlite3_status64(SQLITE_STATUS_PAGECACHE_OVERFLOW, &cache, &run.pageCache, 0);
        run.purged = outcome.purged.size() == 1 && outcome.left.empty();
        const bool written = ::write(pipeEnds[1], &run, sizeof run) == static_cast<ssize_t>(sizeof run);
        ::_exit(written ? 0 : 1);
    }
    ::close(pipeEnds[1]);
    PurgeRun run;
    const bool read = ::read(pipeEnds[0], &run, sizeof run) == static_cast<ssize_t>(sizeof run);
    ::close(pipeEnds[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (!read || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        throw std::runtime_error("the purge's process failed");
    }
    return run;
}

double median(std::vector<double> values) {
    std::ranges::sort(values);
    return values[values.size() / 2];
}

std::string mib(sqlite3_int64 bytes) {
    return fmt::format("{:.1f} MiB", static_cast<double>(bytes) / (1024.0 * 1024.0));
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string flag = argv[i];
        const bool hasValue = i + 1 < argc;
        if (flag == "--rows" && hasValue) {
            options.rows = std::stoul(argv[++i]);
        } else if (flag == "--words" && hasValue) {
            options.words = std::stoul(argv[++i]);
        } else if (flag == "--runs" && hasValue) {
            options.runs = std::max<std::size_t>(1, std::stoul(argv[++i]));
        } else if (flag == "--dir" && hasValue) {
            options.dir = argv[++i];
        } else if (flag == "--no-literal") {
            options.literal = false;
        } else if (flag == "--write" && i + 2 < argc) {
            options.writeHistory = argv[++i];
            options.writeWords = argv[++i];
        } else {
            std::fprintf(stderr,
                         "usage: tidewell-bench-purge [--rows N] [--words N] [--runs N] [--dir DIR] [--no-literal]\n"
                         "       tidewell-bench-purge [--rows N] [--words N] --write HISTORY WORDS\n");
            return 2;
        }
    }
    tidewell::setLogSink([](std::string_view) {});
    if (!options.writeHistory.empty()) {
        std::mt19937 random(20261121);
        const std::vector<std::string> words = makeWords(options.words, random);
        writeHistory(options.writeHistory, options.rows, words, random);
        std::ofstream list(options.writeWords);
        for (const std::string& word : words) {
            list << word << "\n";
        }
        return list ? 0 : 1;
    }
    fs::create_directories(options.dir);
    const tidewell::testing::TempFolder folder(fs::absolute(options.dir).string());
    const std::string original = folder.path() + "/History";
    const std::string work = folder.path() + "/profile/History";
    fs::create_directories(folder.path() + "/profile");

    std::mt19937 random(20261121);
    const std::vector<std::string> words = makeWords(options.words, random);
    writeHistory(original, options.rows, words, random);
    const std::uintmax_t size = fs::file_size(original);
    const tidewell::PurgeMemory memory = tidewell::purgeMemoryFor(size);
    fmt::print("purge bench: {} addresses (5% adult) with titles, the address index and their visits, {} words; "
               "{} on disk in {}; {} core(s)\n",
               options.rows, words.size(), mib(static_cast<std::int64_t>(size)), folder.path(),
               std::thread::hardware_concurrency());
    fmt::print("  purge connection: page cache {}, memory map {}\n", mib(memory.pageCacheBytes), mib(memory.mmapBytes));
    std::fflush(stdout);

    const auto freshCopy = [&] {
        fs::remove(work);
        fs::copy_file(original, work);
    };
    // The ids the purge removes, for the floor to delete without looking for them.
    freshCopy();
    PurgeRun first = purgeRun(folder.path(), work, words);
    const Left purged = leftIn(work);
    std::vector<std::int64_t> ids;
    {
        const Left all = leftIn(original);
        std::ranges::set_difference(all.urls, purged.urls, std::back_inserter(ids));
    }

    std::vector<double> floorSeconds;
    std::vector<double> purgeSeconds;
    sqlite3_int64 outside = first.outsidePageCache;
    sqlite3_int64 pageCache = first.pageCache;
    bool same = first.purged;
    for (std::size_t run = 0; run < options.runs; ++run) {
        freshCopy();
        floorSeconds.push_back(floorRun(work, ids));
        same = same && leftIn(work) == purged;
        freshCopy();
        const PurgeRun timed = purgeRun(folder.path(), work, words);
        purgeSeconds.push_back(timed.seconds);
        outside = std::max(outside, timed.outsidePageCache);
        pageCache = std::max(pageCache, timed.pageCache);
        same = same && timed.purged && leftIn(work) == purged;
    }
    const double floor = median(floorSeconds);
    const double purge = median(purgeSeconds);
    fmt::print("  rows deleted                  {:10} addresses\n", ids.size());
    fmt::print("  floor (scan + one delete)     {:10.3f} s   median of {}\n", floor, options.runs);
    fmt::print("  tidewell purge                {:10.3f} s   median of {}\n", purge, options.runs);
    fmt::print("  ratio (tidewell / floor)      {:10.2f}x  target <= 1.3x: {}\n", purge / floor,
               purge / floor <= 1.3 ? "met" : "NOT met");
    fmt::print("  memory outside page cache     {:>10}   peak; page cache peak {}; target < 64 MiB: {}\n", mib(outside),
               mib(pageCache), outside < (sqlite3_int64{64} << 20) ? "met" : "NOT met");
    if (options.literal) {
        freshCopy();
        const Clock::time_point start = Clock::now();
        tidewell::testing::literalPurge(work, "urls", words);
        const double literal = secondsSince(start);
        same = same && leftIn(work).urls == purged.urls;
        fmt::print("  word-by-word purge            {:10.3f} s   one run\n", literal);
        fmt::print("  ratio (word-by-word / tidewell) {:8.1f}x  target >= 150x: {}\n", literal / purge,
                   literal / purge >= 150.0 ? "met" : "NOT met");
    }
    fmt::print("  every run left the same rows  {:>10}\n", same ? "yes" : "NO");
    return same ? 0 : 1;
}
