#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <mutex>
#include <random>
#include <thread>

#include "base/log.hpp"
#include "cleaning/history_purge.hpp"
#include "sample_disk/sample_disk.hpp"
#include "support/child_process.hpp"
#include "support/disk_builder.hpp"
#include "support/history_schemas.hpp"
#include "support/literal_purge.hpp"
#include "support/log_capture.hpp"
#include "support/stress.hpp"
#include "support/tree_checksums.hpp"

namespace tidewell {
namespace {

namespace fs = std::filesystem;
using testing::Browser;
using testing::fileBytes;
using Routine = const HistorySchema*;

// A browser's history layout: the routine that purges it and its two tables.
struct Layout {
    const char* name;
    Browser browser;
    Routine routine;
    const char* urls;
    const char* visits;
};
const Layout kChrome{"Chrome (rollback journal)", Browser::Chrome, testing::chromeHistory(), "urls", "visits"};
const Layout kFirefox{"Firefox (WAL)", Browser::Firefox, testing::firefoxHistory(), "moz_places", "moz_historyvisits"};
const Layout kSafari{"Safari (an index on url)", Browser::Safari, testing::safariHistory(), "history_items",
                     "history_visits"};

const std::vector<std::string> kWords{"porn", "xxx", "sexcam", "s_x", "'quote"};

// A sizeable history: every third visit is to an adult site, some in capitals.
std::vector<std::string> manyUrls(std::size_t count) {
    std::vector<std::string> urls;
    for (std::size_t i = 0; i < count; ++i) {
        urls.push_back(i % 3 == 0   ? "https://free-porn.example/watch/" + std::to_string(i)
                       : i % 7 == 0 ? "https://XXX.example/" + std::to_string(i)
                                    : "https://news.example/article/" + std::to_string(i) + "?page=2");
    }
    return urls;
}

void writeBytes(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

// What one statement answers on a connection ("" when it gives no row).
std::string answerOn(sqlite3* db, const char* sql) {
    sqlite3_stmt* statement = nullptr;
    std::string text;
    if (sqlite3_prepare_v2(db, sql, -1, &statement, nullptr) == SQLITE_OK && sqlite3_step(statement) == SQLITE_ROW) {
        text = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
    }
    sqlite3_finalize(statement);
    return text;
}

// What one statement of a fresh read-write connection answers (a read-write open rolls back what a killed writer
// left in a hot journal, as the browser's own next open would).
std::string answer(const std::string& path, const char* sql) {
    sqlite3* db = nullptr;
    const bool opened = sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK;
    std::string text = opened ? answerOn(db, sql) : "cannot open";
    sqlite3_close(db);
    return text;
}

// The leaf pages of the table's indexes, as SQLite's page statistics list them (none where they are not built in).
std::vector<std::size_t> indexLeafPages(const std::string& path, const std::string& table) {
    std::vector<std::size_t> pages;
    sqlite3* db = nullptr;
    sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
    sqlite3_stmt* statement = nullptr;
    const std::string sql = "SELECT pageno FROM dbstat WHERE pagetype = 'leaf' AND name IN "
                            "(SELECT name FROM sqlite_schema WHERE type = 'index' AND tbl_name = '" +
                            table + "') ORDER BY pageno";
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &statement, nullptr) == SQLITE_OK) {
        while (sqlite3_step(statement) == SQLITE_ROW) {
            pages.push_back(static_cast<std::size_t>(sqlite3_column_int64(statement, 0)));
        }
    }
    sqlite3_finalize(statement);
    sqlite3_close(db);
    return pages;
}

// A pipe the parent and a forked child use to say "ready" and "go on" to each other.
class Signal {
public:
    Signal() {
        if (::pipe(m_fds) != 0) {
            m_fds[0] = m_fds[1] = -1;
        }
    }
    ~Signal() {
        for (const int fd : m_fds) {
            if (fd >= 0) {
                ::close(fd);
            }
        }
    }
    Signal(const Signal&) = delete;
    Signal& operator=(const Signal&) = delete;

    void give() { static_cast<void>(::write(m_fds[1], "x", 1)); }
    bool await() {
        char byte = 0;
        return ::read(m_fds[0], &byte, 1) == 1;
    }

private:
    int m_fds[2];
};

class HistoryDatabaseFaults : public ::testing::Test {
protected:
    CleanOutcome purge(const Layout& layout, const std::string& path) const {
        return purgeHistory(*layout.routine, FileUrl{path}, PurgeContext{makeAdultWords(kWords), boundary});
    }
    [[nodiscard]] std::pair<std::vector<std::string>, std::vector<std::string>> dump(const Layout& layout,
                                                                                     const std::string& path) const {
        return {testing::tableDump(path, layout.urls), testing::tableDump(path, layout.visits)};
    }

    // Runs `hold` in a child process that keeps its connection to the database open and waits while the purge
    // runs; returns how long the purge took, whether the child's own checks passed, and what the purge said.
    struct Held {
        std::chrono::milliseconds took;
        bool childPassed;
        CleanOutcome outcome;
    };
    Held purgeWhileAnotherProcessHolds(const Layout& layout, const std::string& path, const char* hold,
                                       const char* sqlAfterwards = nullptr) {
        Signal ready;
        Signal release;
        const pid_t pid = ::fork();
        if (pid == 0) {
            sqlite3* db = nullptr;
            sqlite3_open(path.c_str(), &db);
            const std::string countBefore = sqlAfterwards != nullptr ? answerOn(db, sqlAfterwards) : "";
            const bool held = sqlite3_exec(db, hold, nullptr, nullptr, nullptr) == SQLITE_OK;
            ready.give();
            release.await();
            // A reader in the middle of its transaction keeps seeing the database as it was when it began.
            const bool same = sqlAfterwards == nullptr || answerOn(db, sqlAfterwards) == countBefore;
            sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr);
            sqlite3_close(db);
            ::_exit(held && same ? 0 : 1);
        }
        ready.await();
        const auto start = std::chrono::steady_clock::now();
        CleanOutcome outcome = purge(layout, path);
        const auto took =
            std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
        release.give();
        const testing::ChildEnd end = testing::waitForChild(pid);
        return {took, end.exited && end.status == 0, std::move(outcome)};
    }

    testing::TempFolder temp;
    DeletionBoundary boundary{temp.path()};
    testing::LogCapture logs;
};

// The purge waits no longer than its busy timeout; this bound only tells a wait from a hang.
constexpr auto kHangBound = kHistoryBusyTimeout + std::chrono::seconds(10);

TEST_F(HistoryDatabaseFaults, ADatabaseLockedByAnotherProcessIsLeftAsItWasWithoutHanging) {
    for (const Layout& layout : {kChrome, kFirefox}) {
        SCOPED_TRACE(layout.name);
        const std::string path = temp.path() + "/" + layout.urls + ".db";
        testing::writeHistoryDatabase(path, layout.browser, testing::sampleHistoryUrls());
        const auto before = dump(layout, path);
        const Held held = purgeWhileAnotherProcessHolds(layout, path, "BEGIN EXCLUSIVE");
        EXPECT_TRUE(held.childPassed);
        EXPECT_LT(held.took, kHangBound);
        EXPECT_EQ(dump(layout, path), before);
        EXPECT_EQ(answer(path, "PRAGMA integrity_check"), "ok");
        ASSERT_EQ(held.outcome.left.size(), 1U);
        EXPECT_EQ(held.outcome.left[0].reason, LeftReason::Locked) << held.outcome.left[0].detail;
    }
    // A purge that changed nothing does not claim it did.
    EXPECT_TRUE(logs.lines().empty());
}

TEST_F(HistoryDatabaseFaults, AWalDatabaseWithALiveReaderIsPurgedAndStaysInWalMode) {
    const std::string path = temp.path() + "/places.sqlite";
    testing::writeHistoryDatabase(path, Browser::Firefox, testing::sampleHistoryUrls());
    const Held held = purgeWhileAnotherProcessHolds(kFirefox, path, "BEGIN; SELECT count(*) FROM moz_places;",
                                                    "SELECT count(*) FROM moz_places");
    EXPECT_TRUE(held.childPassed) << "the reader saw its snapshot";
    EXPECT_LT(held.took, kHangBound);
    // Purged, but the reader's snapshot keeps the removed visits in the files for now: that is said.
    EXPECT_EQ(held.outcome.purged, (std::vector<PurgedDatabase>{{path, 3}}));
    EXPECT_EQ(held.outcome.left, (std::vector<LeftAsItWas>{{path, LeftReason::StillReadable, {}}}));
    EXPECT_EQ(answer(path, "PRAGMA journal_mode"), "wal");
    EXPECT_EQ(answer(path, "PRAGMA integrity_check"), "ok");
    EXPECT_EQ(answer(path, "SELECT count(*) FROM moz_places"), "5"); // the three adult visits are gone
}

TEST_F(HistoryDatabaseFaults, ADamagedDatabaseIsLeftByteForByteAsItWas) {
    std::mt19937 random(20261121);
    const auto garbage = [&](std::size_t bytes) {
        std::string text(bytes, '\0');
        for (char& c : text) {
            c = static_cast<char>(random());
        }
        return text;
    };
    for (const Layout& layout : {kChrome, kFirefox, kSafari}) {
        const std::string valid = temp.path() + "/valid.db";
        fs::remove(valid);
        testing::writeHistoryDatabase(valid, layout.browser, manyUrls(3000));
        const std::string bytes = fileBytes(valid);
        ASSERT_GT(bytes.size(), 8192U);
        constexpr std::size_t kPage = 4096;
        std::string damagedPages = bytes;
        for (std::size_t page = kPage; page + kPage <= bytes.size(); page += kPage) {
            damagedPages.replace(page + 200, 300, garbage(300));
        }
        // The later half of an index's leaves: the search reads the table alone and finds every row; deleting
        // a row whose index entry lies on a damaged leaf fails, the others would go through.
        std::string damagedIndex = bytes;
        const std::vector<std::size_t> leaves = indexLeafPages(valid, layout.urls);
        for (std::size_t i = leaves.size() / 2; i < leaves.size(); ++i) {
            damagedIndex.replace((leaves[i] - 1) * kPage + 8, 300, garbage(300));
        }
        std::string badPageSize = bytes;
        badPageSize[16] = 0x03; // 768: not a power of two
        std::vector<std::pair<const char*, std::string>> damaged{
            {"garbage", garbage(65536)},           {"truncated", bytes.substr(0, bytes.size() / 2)},
            {"damaged pages", damagedPages},       {"bad page size", badPageSize},
            {"header only", bytes.substr(0, 100)},
        };
        if (!leaves.empty()) {
            damaged.emplace_back("damaged index leaves", damagedIndex);
        }
        for (const auto& [what, contents] : damaged) {
            SCOPED_TRACE(std::string(layout.name) + ": " + what);
            const std::string path = temp.path() + "/damaged.db";
            writeBytes(path, contents);
            const CleanOutcome outcome = purge(layout, path);
            EXPECT_EQ(fileBytes(path), contents);
            ASSERT_EQ(outcome.left.size(), 1U);
            EXPECT_EQ(outcome.left[0].reason, LeftReason::Damaged) << outcome.left[0].detail;
            EXPECT_FALSE(fs::exists(path + "-journal"));
            for (const char* suffix : {"", "-journal", "-wal", "-shm"}) {
                fs::remove(path + suffix);
            }
        }
    }
}

// A purge killed at a random moment, again and again: SQLite's journal must leave every table either as it was
// before the purge or as an uninterrupted purge leaves it, never in between, and the file sound.
TEST(HistoryPurgeKills, AKilledPurgeLeavesEveryTableAsBeforeOrAsAfter) {
    const std::size_t wanted = testing::stressSetting("TIDEWELL_KILLS", 8);
    testing::TempFolder temp;
    const DeletionBoundary boundary(temp.path());
    const PurgeContext context{makeAdultWords(kWords), boundary};
    using Tables = std::pair<std::vector<std::string>, std::vector<std::string>>;
    struct Prepared {
        Layout layout;
        std::string original;
        Tables before;
        Tables after;
        std::chrono::microseconds takes;
    };
    std::vector<Prepared> prepared;
    for (const Layout& layout : {kChrome, kFirefox}) {
        Prepared p{layout, temp.path() + "/" + layout.urls + ".original", {}, {}, {}};
        testing::writeHistoryDatabase(p.original, layout.browser, manyUrls(30000));
        p.before = {testing::tableDump(p.original, layout.urls), testing::tableDump(p.original, layout.visits)};
        const std::string uninterrupted = temp.path() + "/uninterrupted";
        fs::copy_file(p.original, uninterrupted, fs::copy_options::overwrite_existing);
        // Timed as the killed purges run, in a child process, so the kills can be spread over the whole purge.
        const auto start = std::chrono::steady_clock::now();
        const testing::ChildEnd end = testing::runInChild(
            [&] {
                setLogSink([](std::string_view) {});
                return purgeHistory(*layout.routine, FileUrl{uninterrupted}, context).leftAnything() ? 1 : 0;
            },
            std::chrono::seconds(60));
        p.takes = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start);
        ASSERT_TRUE(end.exited && end.status == 0) << end.text();
        p.after = {testing::tableDump(uninterrupted, layout.urls), testing::tableDump(uninterrupted, layout.visits)};
        ASSERT_LT(p.after.first.size(), p.before.first.size() * 2 / 3) << layout.name;
        prepared.push_back(std::move(p));
    }

    const unsigned seed = std::random_device{}();
    std::mt19937 random(seed);
    std::size_t kills = 0;
    std::size_t finished = 0;
    std::size_t leftAsBefore = 0;
    std::size_t leftAsAfter = 0;
    for (std::size_t attempt = 0; kills < wanted && attempt < wanted * 8; ++attempt) {
        Prepared& p = prepared[attempt % prepared.size()];
        const std::string path = temp.path() + "/History";
        for (const char* suffix : {"", "-journal", "-wal", "-shm"}) {
            fs::remove(path + suffix);
        }
        fs::copy_file(p.original, path);
        Signal started;
        const pid_t pid = ::fork();
        if (pid == 0) {
            setLogSink([](std::string_view) {});
            started.give();
            static_cast<void>(purgeHistory(*p.layout.routine, FileUrl{path}, context));
            ::_exit(0);
        }
        ASSERT_GT(pid, 0);
        started.await();
        const auto began = std::chrono::steady_clock::now();
        // Every other kill falls in the last third, so the commit and the log's checkpoint are hit as well as the
        // search that takes most of the time.
        const std::int64_t earliest = attempt % 4 < 2 ? 0 : p.takes.count() * 7 / 10;
        std::this_thread::sleep_for(std::chrono::microseconds(
            std::uniform_int_distribution<std::int64_t>(earliest, p.takes.count() * 11 / 10)(random)));
        ::kill(pid, SIGKILL);
        const testing::ChildEnd end = testing::waitForChild(pid);
        ASSERT_TRUE(end.exited ? end.status == 0 : end.signal == SIGKILL) << end.text();
        (end.exited ? finished : kills) += 1;
        if (end.exited) {
            // The purge took less than the first, cold run did: later kills are spread over what it takes now.
            p.takes = std::min(p.takes, std::chrono::duration_cast<std::chrono::microseconds>(
                                            std::chrono::steady_clock::now() - began));
        }

        ASSERT_EQ(answer(path, "PRAGMA integrity_check"), "ok")
            << p.layout.name << ", attempt " << attempt << ", seed " << seed;
        const Tables now{testing::tableDump(path, p.layout.urls), testing::tableDump(path, p.layout.visits)};
        ASSERT_TRUE(now == p.before || now == p.after)
            << p.layout.name << ", attempt " << attempt << ", seed " << seed << ": " << now.first.size() << " urls, "
            << now.second.size() << " visits";
        (now == p.before ? leftAsBefore : leftAsAfter) += 1;
    }
    EXPECT_EQ(kills, wanted);
    std::cout << "[ figures  ] purges killed: " << kills << " (" << finished << " more ended before their kill); "
              << leftAsBefore << " left as before, " << leftAsAfter << " as after; an uninterrupted purge takes "
              << prepared[0].takes.count() / 1000 << " ms (Chrome), " << prepared[1].takes.count() / 1000
              << " ms (Firefox)\n";
}

// A profile folder swapped for a link to another profile, and back, as fast as a thread can, while purges run one
// after the other: SQLite makes, writes and removes its journal only in the folder the purge holds, so the other
// profile is never touched, and no journal is left behind to undo a purge that was reported done.
TEST(JournalSwapRace, AProfileFolderSwappedForALinkDuringThePurgeChangesNothingOutsideAndIsNeverUndone) {
    const std::size_t rounds = testing::stressSetting("TIDEWELL_JOURNAL_SWAPS", 30);
    testing::TempFolder temp;
    testing::DiskBuilder d(temp.path() + "/disk");
    const std::string original = temp.path() + "/History.original";
    testing::writeHistoryDatabase(original, Browser::Chrome, manyUrls(3000));
    const std::string profile = d.at("Library/Application Support/Google/Chrome/Default");
    const std::string history = profile + "/History";
    d.folder("Library/Application Support/Google/Chrome/Default").folder("/Decoy/Default");
    fs::copy_file(original, d.at("/Decoy/Default/History"));
    const auto decoy = testing::treeChecksums(d.at("/Decoy"));
    using Tables = std::vector<std::string>;
    const Tables before = testing::tableDump(original, "urls");
    const DeletionBoundary boundary(d.home());
    const PurgeContext context{makeAdultWords(kWords), boundary};
    Tables after;
    {
        const std::string uninterrupted = temp.path() + "/Uninterrupted/History";
        fs::create_directories(temp.path() + "/Uninterrupted");
        fs::copy_file(original, uninterrupted);
        const DeletionBoundary whole(temp.path());
        static_cast<void>(purgeHistory(*testing::chromeHistory(), FileUrl{uninterrupted},
                                       PurgeContext{makeAdultWords(kWords), whole}));
        after = testing::tableDump(uninterrupted, "urls");
        ASSERT_LT(after.size(), before.size());
    }

    std::mutex inPlace; // held by the racer while the link stands, and by the test while it looks at the profile
    std::atomic<std::uint64_t> swaps{0};
    std::jthread racer([&](const std::stop_token& stop) {
        std::mt19937 random(20261123);
        while (!stop.stop_requested()) {
            // The folder stands in its place for a while between swaps, so purges start on it and are raced
            // while they run, rather than finding the link at once.
            for (auto i = random() % 400; i > 0 && !stop.stop_requested(); --i) {
                std::this_thread::yield();
            }
            const std::lock_guard lock(inPlace);
            if (::rename(profile.c_str(), (profile + ".away").c_str()) != 0) {
                continue;
            }
            if (::symlink(d.at("/Decoy/Default").c_str(), profile.c_str()) == 0) {
                swaps.fetch_add(1, std::memory_order_relaxed);
                std::this_thread::yield();
                ::unlink(profile.c_str());
            }
            ::rename((profile + ".away").c_str(), profile.c_str());
        }
    });
    const testing::LogCapture quiet;
    std::size_t done = 0;
    std::size_t left = 0;
    std::size_t racedDone = 0; // done while the folder was swapped away and back under it
    for (std::size_t round = 0; round < rounds; ++round) {
        {
            const std::lock_guard lock(inPlace);
            for (const char* suffix : {"", "-journal", "-wal", "-shm"}) {
                fs::remove(history + suffix);
            }
            fs::copy_file(original, history);
        }
        const std::uint64_t swapsBefore = swaps.load();
        const CleanOutcome outcome = purgeHistory(*testing::chromeHistory(), FileUrl{history}, context);
        const bool raced = swaps.load() > swapsBefore;
        const std::lock_guard lock(inPlace);
        ASSERT_EQ(testing::treeDifferences(decoy, testing::treeChecksums(d.at("/Decoy"))), "") << "round " << round;
        // Opened for writing as the browser would: a journal left behind would roll the purge back here.
        ASSERT_EQ(answer(history, "PRAGMA integrity_check"), "ok");
        const Tables now = testing::tableDump(history, "urls");
        if (outcome.purged.empty()) {
            // The folder was a link, or away, when the purge reached it.
            ASSERT_EQ(now, before) << "round " << round << ": left as it was";
            ++left;
        } else {
            ASSERT_EQ(now, after) << "round " << round << ": reported done";
            ++done;
            racedDone += raced ? 1U : 0U;
        }
    }
    racer.request_stop();
    racer.join();
    EXPECT_GT(racedDone, 0U);
    std::cout << "[ figures  ] journal-swap races: " << rounds << " purges, " << swaps.load() << " swaps: " << done
              << " done (" << racedDone << " of them with the folder swapped for a link during the purge), " << left
              << " left as they were (the folder a link or away when reached); the other profile never changed\n";
}

} // namespace
} // namespace tidewell
