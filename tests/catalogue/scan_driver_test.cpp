#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <future>
#include <latch>

#include "catalogue/scan_driver.hpp"
#include "sources/builders.hpp"
#include "support/catalogue_helpers.hpp"
#include "support/disk_builder.hpp"

namespace tidewell {
namespace {

using testing::TempFolder;

// Records what the main-thread side sees at each hand-over.
struct RecordingObserver : ScanObserver {
    const ScanDriver* driver = nullptr;
    EventQueue* queue = nullptr;
    std::vector<std::size_t> sizesAtHandOver;
    int started = 0;
    int stopped = 0;
    int finished = 0;
    bool flagsAtFinish[2]{};

    void startIndicator() override { ++started; }
    void stopIndicator() override { ++stopped; }
    void sectionsChanged() override { sizesAtHandOver.push_back(driver->catalogue().size()); }
    std::function<void()> onFinish;
    void scanFinished() override {
        ++finished;
        if (onFinish) {
            std::exchange(onFinish, nullptr)();
        }
        flagsAtFinish[0] = driver->scanRunning();
        flagsAtFinish[1] = driver->scanDone();
        queue->quit();
    }
};

SectionBuilder named(std::string name, std::vector<std::thread::id>* threads = nullptr, bool handOver = true) {
    return [name = std::move(name), threads, handOver](ScanEnv&) {
        if (threads != nullptr) {
            threads->push_back(std::this_thread::get_id());
        }
        return BuilderOutcome{makeRecord({{"Name", name}}), 1, handOver};
    };
}

SectionBuilder nothing() {
    return [](ScanEnv&) { return BuilderOutcome{}; };
}

class ScanDriverTest : public ::testing::Test {
protected:
    TempFolder temp;
    testing::DiskBuilder builder{temp.path()};
    EventQueue queue;
    RecordingObserver observer;

    std::unique_ptr<ScanDriver> makeDriver(std::vector<SectionBuilder> builders) {
        auto driver = std::make_unique<ScanDriver>(builder.disk(), queue, observer, std::move(builders));
        observer.driver = driver.get();
        observer.queue = &queue;
        return driver;
    }

    static std::vector<std::string> names(const ScanDriver& driver) {
        std::vector<std::string> out;
        for (const RecordPtr& section : driver.catalogue().snapshot()) {
            out.push_back(section->has("Type") ? "<" + section->text("Type") + ">" : section->text("Name"));
        }
        return out;
    }
};

TEST_F(ScanDriverTest, RunsTheBuildersInOrderOnOneThreadHandingOverAfterEach) {
    std::vector<std::thread::id> threads;
    std::promise<void> started;
    std::shared_future<void> hasStarted = started.get_future().share();
    const SectionBuilder first = named("A", &threads);
    auto driver = makeDriver({[&](ScanEnv& env) {
                                  hasStarted.wait();
                                  return first(env);
                              },
                              nothing(), named("B", &threads, false), named("C", &threads)});
    driver->startScan();
    started.set_value();
    EXPECT_TRUE(driver->scanRunning());
    EXPECT_FALSE(driver->scanDone());
    queue.run();

    EXPECT_EQ(names(*driver), (std::vector<std::string>{"A", "B", "C"}));
    // At once when the scan starts, then after A, after the builder that added nothing, and after C; B asked
    // for no hand-over, so the table caught up at C.
    EXPECT_EQ(observer.sizesAtHandOver, (std::vector<std::size_t>{0, 1, 1, 3}));
    ASSERT_EQ(threads.size(), 3U);
    EXPECT_NE(threads[0], std::this_thread::get_id());
    EXPECT_EQ(threads[0], threads[1]);
    EXPECT_EQ(threads[1], threads[2]);
    EXPECT_EQ(observer.started, 1);
    EXPECT_EQ(observer.stopped, 1);
    EXPECT_FALSE(observer.flagsAtFinish[0]);
    EXPECT_TRUE(observer.flagsAtFinish[1]);
    EXPECT_EQ(driver->measuredBytes(), 3);
}

TEST_F(ScanDriverTest, OneScanAtATimeAndNoRepeatOnceDone) {
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    int runs = 0;
    auto driver = makeDriver({[&](ScanEnv&) {
        ++runs;
        released.wait();
        return BuilderOutcome{makeRecord({{"Name", std::string("A")}}), 0, true};
    }});
    driver->startScan();
    driver->startScan(); // running: ignored
    release.set_value();
    queue.run();
    EXPECT_EQ(runs, 1);

    const RecordPtr first = driver->catalogue().at(0);
    driver->startScan(); // done: ignored
    EXPECT_EQ(driver->catalogue().at(0), first);
    EXPECT_EQ(observer.started, 1);

    driver->refresh(); // the user's rescan builds fresh records
    queue.run();
    EXPECT_EQ(runs, 2);
    EXPECT_EQ(driver->catalogue().size(), 1U);
    EXPECT_NE(driver->catalogue().at(0), first);
}

TEST_F(ScanDriverTest, AReplacedScanNeitherAppendsNorFinishesTheNewOne) {
    std::latch entered(1);
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    std::atomic<int> calls = 0;
    auto driver = makeDriver({[&](ScanEnv&) {
        if (calls++ == 0) {
            entered.count_down();
            released.wait();
            return BuilderOutcome{makeRecord({{"Name", std::string("stale")}}), 0, true};
        }
        return BuilderOutcome{makeRecord({{"Name", std::string("fresh")}}), 0, true};
    }});
    driver->startScan();
    entered.wait();
    // The clean path clears both flags and starts again while the first scan is still inside a builder; the new
    // start waits for that builder (released from elsewhere) to end the replaced thread.
    driver->setScanRunning(false);
    driver->setScanDone(false);
    const std::jthread releaser([&] { release.set_value(); });
    driver->startScan();
    queue.run();
    EXPECT_EQ(names(*driver), (std::vector<std::string>{"fresh"}));
    EXPECT_EQ(observer.finished, 1);
}

std::size_t liveThreads() {
    return static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator("/proc/self/task"), std::filesystem::directory_iterator{}));
}

TEST_F(ScanDriverTest, ReplacedScanThreadsAreJoinedNotLeftBehindAndADriverEndsWhileItsScanWaits) {
    const std::size_t before = liveThreads();
    // The scan started last is held in its first builder, so that it is surely still running when the queue stops.
    std::atomic<bool> holdNextScan = false;
    std::latch heldScanReleased(1);
    const SectionBuilder first = named("A");
    auto driver = makeDriver({[&](ScanEnv& env) {
                                  if (holdNextScan) {
                                      heldScanReleased.wait();
                                  }
                                  return first(env);
                              },
                              named("B")});
    // Each scan waits in its first hand-over (the queue is not run), so each refresh replaces a live thread.
    for (int refresh = 0; refresh < 200; ++refresh) {
        driver->setScanRunning(false); // as the clean path does, so that the refresh replaces the running scan
        driver->refresh();
    }
    // The current scan's thread and its measuring workers, and no replaced one still running.
    EXPECT_LE(liveThreads(), before + 1 + SizeCounter::defaultWorkers());
    // A rescan asked for while a scan finishes (inside its hand-over) does not wait for that very scan.
    observer.onFinish = [&] {
        holdNextScan = true;
        driver->refresh();
    };
    queue.run();
    EXPECT_EQ(observer.finished, 1);
    EXPECT_TRUE(driver->scanRunning());
    // Let go, that scan comes to its first hand-over, which the queue does not run again, as the driver goes.
    heldScanReleased.count_down();
    driver.reset();
}

TEST_F(ScanDriverTest, AnEmptyDiskStillHasTheSystemSectionAndThePromotionRow) {
    auto driver = makeDriver(sectionBuilders(macosLayout()));
    driver->startScan();
    queue.run();
    EXPECT_EQ(names(*driver), (std::vector<std::string>{"Adult History", "Browser Extensions", "System", "<Scan>"}));
    const RecordPtr promotion = driver->catalogue().snapshot().back();
    EXPECT_EQ(testing::keysOf(*promotion), std::vector<std::string>{"Type"});
}

} // namespace
} // namespace tidewell
