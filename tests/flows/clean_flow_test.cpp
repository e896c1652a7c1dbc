#include <gtest/gtest.h>

#include <filesystem>
#include <mutex>
#include <thread>

#include "catalogue/items.hpp"
#include "catalogue/record_views.hpp"
#include "flows/clean_flow.hpp"
#include "support/disk_builder.hpp"
#include "support/fake_running_apps.hpp"

namespace tidewell {
namespace {

namespace fs = std::filesystem;

// A face that answers as told and notes what the flow asks of it, and on which thread.
class NotingFace final : public CleanFace {
public:
    NotingFace(const std::string& home, bool yes) : m_home(home), m_yes(yes) {}

    bool confirm() override { return note("confirm"), m_yes; }
    void showBrowsersInTheWay(const RecordList& entries) override { note("show " + names(entries)); }
    void updateBrowsersInTheWay(const RecordList& entries) override { note("update " + names(entries)); }
    void browsersGone() override { note("gone"); }
    DeletionBoundary deletionBoundary() override { return note("boundary"), DeletionBoundary(m_home); }
    void removalStarted() override { note("started"); }
    void removalProgress(std::size_t done, std::size_t total) override {
        const std::lock_guard lock(m_mutex);
        m_removalThreads.push_back(std::this_thread::get_id());
        m_progress.emplace_back(done, total);
    }
    void reportLeft(const LeftAsItWas& left) override {
        const std::lock_guard lock(m_mutex);
        m_removalThreads.push_back(std::this_thread::get_id());
        m_left.push_back(left.location);
    }
    void rescan() override { note("rescan"); }
    void reportCleaned(const CleanOutcome& outcome) override {
        note("report " + std::to_string(outcome.removed.size()) + " removed, " + std::to_string(outcome.left.size()) +
             " left");
        if (m_onReport) {
            m_onReport();
        }
    }

    std::vector<std::string> calls;
    std::vector<std::thread::id> callThreads;
    std::function<void()> m_onReport;

    [[nodiscard]] std::vector<std::pair<std::size_t, std::size_t>> progress() const {
        const std::lock_guard lock(m_mutex);
        return m_progress;
    }
    [[nodiscard]] std::vector<std::thread::id> removalThreads() const {
        const std::lock_guard lock(m_mutex);
        return m_removalThreads;
    }
    [[nodiscard]] std::vector<std::string> left() const {
        const std::lock_guard lock(m_mutex);
        return m_left;
    }

private:
    void note(std::string call) {
        calls.push_back(std::move(call));
        callThreads.push_back(std::this_thread::get_id());
    }
    static std::string names(const RecordList& entries) {
        std::string out;
        for (const RecordPtr& entry : entries) {
            out += (out.empty() ? "" : ",") + entry->text("NameBrowser");
        }
        return out;
    }

    std::string m_home;
    bool m_yes;
    mutable std::mutex m_mutex;
    std::vector<std::pair<std::size_t, std::size_t>> m_progress;
    std::vector<std::thread::id> m_removalThreads;
    std::vector<std::string> m_left;
};

class CleanFlowTest : public ::testing::Test {
protected:
    CleanFlowTest() {
        d.file("Library/Caches/a", 10).file("Library/Caches/b", 10).file("Library/Caches/kept", 10).file("/out", 10);
        const Browser* firefox = findBrowser(macosLayout(), "firefox");
        catalogue = {makeRecord(
            {{"Name", std::string("Firefox")},
             {"List", RecordList{makeItem({at("Library/Caches/a"), at("Library/Caches/b"), FileUrl{d.at("/out")}},
                                          "Caches", false),
                                 makeItem({at("Library/Caches/kept")}, "Kept", false, false)}},
             {"isChecked", true}},
            {RecordKind::SourceSection, firefox})};
    }
    [[nodiscard]] FileUrl at(const std::string& path) const { return FileUrl{d.at(path)}; }
    [[nodiscard]] bool exists(const std::string& path) const { return fs::exists(d.at(path)); }

    testing::TempFolder temp;
    testing::DiskBuilder d{temp.path() + "/disk"};
    DiskRoot disk = d.disk();
    RecordList catalogue;
};

TEST_F(CleanFlowTest, NoRemovesNothingAndLooksAtNoBrowser) {
    NotingFace face(d.home(), false);
    const testing::FakeRunningApps running({{}});
    CleanFlow flow(disk, running, face, makeAdultWords({}));
    flow.start(catalogue);
    EXPECT_EQ(flow.state(), CleanFlow::State::Declined);
    EXPECT_EQ(face.calls, std::vector<std::string>{"confirm"});
    EXPECT_EQ(running.looks(), 0U);
    EXPECT_TRUE(exists("Library/Caches/a"));
    flow.retry();
    flow.start(catalogue);
    EXPECT_EQ(face.calls.size(), 1U) << "a declined flow does nothing more";
}

TEST_F(CleanFlowTest, ARunningBrowserHoldsTheRemovalUntilRetryFindsItGone) {
    NotingFace face(d.home(), true);
    const testing::FakeRunningApps running({{"firefox"}, {"firefox"}, {}});
    CleanFlow flow(disk, running, face, makeAdultWords({}));
    flow.start(catalogue);
    EXPECT_EQ(flow.state(), CleanFlow::State::WaitingForBrowsers);
    EXPECT_TRUE(exists("Library/Caches/a"));
    flow.retry();
    EXPECT_EQ(flow.state(), CleanFlow::State::WaitingForBrowsers);
    flow.retry();
    EXPECT_EQ(flow.state(), CleanFlow::State::Done);
    EXPECT_EQ(face.calls, (std::vector<std::string>{"confirm", "show Firefox", "update Firefox", "gone", "boundary",
                                                    "started", "rescan", "report 2 removed, 1 left"}));
    EXPECT_FALSE(exists("Library/Caches/a") || exists("Library/Caches/b"));
    EXPECT_TRUE(exists("Library/Caches/kept") && exists("/out"));
    EXPECT_EQ(face.left(), std::vector<std::string>{d.at("/out")});
    EXPECT_EQ(face.progress(), (std::vector<std::pair<std::size_t, std::size_t>>{{1, 3}, {2, 3}, {3, 3}}));
    EXPECT_EQ(face.removalThreads(), std::vector<std::thread::id>(4, std::this_thread::get_id()))
        << "without an executor the removal runs on the calling thread";
}

// The window's way: the removal runs on a thread of its own while the main thread goes on, what it removes was read
// before it started, and the rescan and the report come back to the main thread.
TEST_F(CleanFlowTest, WithAnExecutorTheRemovalRunsOffTheMainThreadAndTheRestComesBack) {
    NotingFace face(d.home(), true);
    const testing::FakeRunningApps running({{}});
    EventQueue mainThread;
    face.m_onReport = [&] { mainThread.quit(); };
    CleanFlow flow(disk, running, face, makeAdultWords({}), &mainThread);
    flow.start(catalogue);
    // Ticks changed now are not the removal's: it works from what was ticked when it started.
    for (const Item& item : Section(catalogue[0]).items()) {
        item.setTicked(!item.isTicked());
    }
    mainThread.run();
    EXPECT_EQ(flow.state(), CleanFlow::State::Done);
    EXPECT_FALSE(exists("Library/Caches/a"));
    EXPECT_TRUE(exists("Library/Caches/kept"));
    EXPECT_EQ(face.calls.back(), "report 2 removed, 1 left");
    EXPECT_EQ(face.callThreads, std::vector<std::thread::id>(face.calls.size(), std::this_thread::get_id()));
    ASSERT_EQ(face.removalThreads().size(), 4U);
    for (const std::thread::id thread : face.removalThreads()) {
        EXPECT_NE(thread, std::this_thread::get_id());
    }
}

} // namespace
} // namespace tidewell
