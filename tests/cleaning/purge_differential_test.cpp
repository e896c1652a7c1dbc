#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <random>

#include "cleaning/history_purge.hpp"
#include "support/disk_builder.hpp"
#include "support/history_schemas.hpp"
#include "support/literal_purge.hpp"
#include "support/log_capture.hpp"

namespace tidewell {
namespace {

using testing::TempFolder;

// Pieces that URLs are made of: words of the list and their neighbours, LIKE's wildcards, SQL's quote, accented
// and CJK text, broken UTF-8 and the letters of both cases. Words are made of the plain ones: the word-by-word
// purge pastes its words into SQL, which only plain ASCII words survive unchanged.
const std::vector<std::string> kPieces{
    "porn", "PoRn", "xxx", "XXX", "sex",  "cam",  "tube", "ab",   "abc",          "bc", "news", "a", "B",   "%",
    "_",    "'",    "é",   "É",   "日本", "\xc3", "\xff", "\x80", "\xc3\xa9\x80", "/",  ".",    "-", "?q=", "1"};
const std::vector<std::string> kWordPieces{"porn", "PoRn", "xxx", "XXX", "sex", "cam", "tube", "ab",  "abc",
                                           "bc",   "news", "a",   "B",   "/",   ".",   "-",    "?q=", "1"};

std::string randomText(std::mt19937& random, int maxPieces, const std::vector<std::string>& pieces = kPieces) {
    std::string text;
    const int count = std::uniform_int_distribution<int>(0, maxPieces)(random);
    for (int i = 0; i < count; ++i) {
        text += pieces[std::uniform_int_distribution<std::size_t>(0, pieces.size() - 1)(random)];
    }
    return text;
}

struct Table {
    const char* name;
    const HistorySchema* routine;
};

// A table in the browser's own column types, rows with random ids (some above 2^31, some whose low 32 bits are
// another row's id) and random URLs: text, NULL, BLOB, text holding a NUL, numbers.
void writeRandomDatabase(const std::string& path, const Table& table, std::mt19937& random) {
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK);
    const std::string name = table.name;
    sqlite3_exec(db, (random() % 2 == 0 ? "PRAGMA journal_mode=WAL" : "PRAGMA journal_mode=DELETE"), nullptr, nullptr,
                 nullptr);
    sqlite3_exec(db,
                 ("CREATE TABLE " + name + "(id INTEGER PRIMARY KEY, url LONGVARCHAR, title LONGVARCHAR);" +
                  "CREATE INDEX " + name + "_url ON " + name + "(url);")
                     .c_str(),
                 nullptr, nullptr, nullptr);
    sqlite3_exec(db, "BEGIN", nullptr, nullptr, nullptr);
    sqlite3_stmt* insert = nullptr;
    sqlite3_prepare_v2(db, ("INSERT OR IGNORE INTO " + name + " VALUES (?1, ?2, 'Page')").c_str(), -1, &insert,
                       nullptr);
    const int rows = std::uniform_int_distribution<int>(0, 150)(random);
    for (int row = 1; row <= rows; ++row) {
        std::int64_t id = row;
        switch (random() % 12) {
        case 0:
            id = (std::int64_t{1} << 31) + std::uniform_int_distribution<int>(0, 3)(random);
            break;
        case 1:
            id = (std::int64_t{1} << 32) + std::uniform_int_distribution<int>(1, rows)(random);
            break;
        case 2:
            id = -row;
            break;
        default:
            break;
        }
        sqlite3_bind_int64(insert, 1, id);
        const std::string url = randomText(random, 6);
        switch (random() % 10) {
        case 0:
            sqlite3_bind_null(insert, 2);
            break;
        case 1:
            sqlite3_bind_blob(insert, 2, url.data(), static_cast<int>(url.size()), SQLITE_TRANSIENT);
            break;
        case 2: {
            const std::string withNul = randomText(random, 2) + std::string(1, '\0') + url;
            sqlite3_bind_text(insert, 2, withNul.data(), static_cast<int>(withNul.size()), SQLITE_TRANSIENT);
            break;
        }
        case 3:
            sqlite3_bind_int(insert, 2, static_cast<int>(random() % 1000));
            break;
        default:
            sqlite3_bind_text(insert, 2, url.data(), static_cast<int>(url.size()), SQLITE_TRANSIENT);
        }
        sqlite3_step(insert);
        sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr);
    sqlite3_close(db);
}

std::vector<std::string> randomWords(std::mt19937& random) {
    std::vector<std::string> words;
    const int count = std::uniform_int_distribution<int>(0, 12)(random);
    while (words.size() < static_cast<std::size_t>(count)) {
        if (std::string word = randomText(random, 2, kWordPieces); !word.empty()) {
            words.push_back(std::move(word));
        }
    }
    return words;
}

TEST(PurgeDifferential, DeletesExactlyTheRowsTheWordByWordQueriesDelete) {
    const std::vector<Table> tables{{"urls", testing::chromeHistory()},
                                    {"history_items", testing::safariHistory()},
                                    {"moz_places", testing::firefoxHistory()}};
    // Hundreds of databases, each written with a sync per deleted row by the word-by-word purge: kept in memory.
    const TempFolder temp(std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : "/tmp");
    const DeletionBoundary boundary(temp.path());
    const testing::LogCapture quiet;
    constexpr unsigned kSeeds = 1000;
    std::size_t deletedSomewhere = 0;
    for (unsigned seed = 1; seed <= kSeeds; ++seed) {
        std::mt19937 random(seed);
        const Table& table = tables[seed % tables.size()];
        const std::string original = temp.path() + "/original.db";
        const std::string literal = temp.path() + "/literal.db";
        const std::string fast = temp.path() + "/fast.db";
        for (const std::string& path : {original, literal, fast}) {
            for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
                std::filesystem::remove(path + suffix);
            }
        }
        writeRandomDatabase(original, table, random);
        std::filesystem::copy_file(original, literal);
        std::filesystem::copy_file(original, fast);
        const std::vector<std::string> words = randomWords(random);

        testing::literalPurge(literal, table.name, words);
        static_cast<void>(purgeHistory(*table.routine, FileUrl{fast},
                                       PurgeContext{makeAdultWords(words), boundary, CleanMode::Interactive}));

        const std::vector<std::string> expected = testing::tableDump(literal, table.name);
        ASSERT_EQ(testing::tableDump(fast, table.name), expected) << "seed " << seed;
        if (expected.size() < testing::tableDump(original, table.name).size()) {
            ++deletedSomewhere;
        }
    }
    // The random cases must exercise deletion, not only agree on leaving tables alone.
    EXPECT_GT(deletedSomewhere, kSeeds / 2);
}

} // namespace
} // namespace tidewell
