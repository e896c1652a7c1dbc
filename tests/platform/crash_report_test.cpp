#include <dirent.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <vector>

#include "platform/crash_report.hpp"
#include "support/disk_builder.hpp"

namespace tidewell {
namespace {

using testing::TempFolder;

// Runs crash in a child that first installs the reporter; returns the signal that ended the child (0 when it
// ended without one).
int crashInChild(const std::string& folder, bool recordExceptions, const std::function<void()>& crash) {
    const pid_t pid = ::fork();
    if (pid == 0) {
        if (!installCrashReporter(folder, "9.8.7", recordExceptions)) {
            ::_exit(3);
        }
        crash();
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(pid, &status, 0);
    return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

std::vector<std::string> reportsIn(const std::string& folder) {
    std::vector<std::string> texts;
    DIR* dir = ::opendir(folder.c_str());
    if (dir == nullptr) {
        return texts;
    }
    while (const dirent* entry = ::readdir(dir)) {
        const std::string name = entry->d_name;
        if (name.starts_with(kCrashReportPrefix) && name.ends_with(kCrashReportSuffix)) {
            std::ifstream in(folder + "/" + name);
            std::ostringstream text;
            text << in.rdbuf();
            texts.push_back(text.str());
        }
    }
    ::closedir(dir);
    return texts;
}

// Deep enough to run off any stack; the volatile array keeps the compiler from turning it into a loop.
int overflow(int depth) {
    if (depth < 0) {
        return 0;
    }
    volatile char frame[4096];
    frame[0] = static_cast<char>(depth);
    return overflow(depth + 1) + frame[0];
}

TEST(CrashReportTest, AFatalSignalLeavesOneReportAndStillEndsTheProcess) {
    TempFolder temp;
    const std::string folder = temp.path() + "/data/Crash Reports";
    EXPECT_EQ(crashInChild(folder, true, [] { ::raise(SIGSEGV); }), SIGSEGV);
    const auto reports = reportsIn(folder);
    ASSERT_EQ(reports.size(), 1U);
    const std::string& report = reports.front();
    EXPECT_TRUE(report.starts_with("Tidewell crash report\nVersion: 9.8.7\nProcess: "));
    EXPECT_NE(report.find("\nReason: signal 11 (SIGSEGV)\n"), std::string::npos);
    const auto backtrace = report.find("Backtrace:\n");
    ASSERT_NE(backtrace, std::string::npos);
    EXPECT_GT(report.size(), backtrace + 20) << "the backtrace has frames";
}

TEST(CrashReportTest, AStackOverflowIsReportedFromTheHandlersOwnStack) {
    TempFolder temp;
    EXPECT_EQ(crashInChild(temp.path(), true, [] { overflow(0); }), SIGSEGV);
    const auto reports = reportsIn(temp.path());
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_NE(reports.front().find("Reason: signal 11 (SIGSEGV)"), std::string::npos);
}

TEST(CrashReportTest, AnUncaughtExceptionIsReportedOnceWithItsTypeAndMessage) {
    TempFolder temp;
    const std::string recorded = temp.path() + "/recorded";
    // Thrown on a thread of its own, where nothing (not even the test framework) catches it.
    EXPECT_EQ(
        crashInChild(recorded, true, [] { std::thread([] { throw std::runtime_error("disk on fire"); }).join(); }),
        SIGABRT);
    const auto reports = reportsIn(recorded);
    ASSERT_EQ(reports.size(), 1U) << "the abort that follows adds no second report";
    EXPECT_NE(reports.front().find("Reason: uncaught exception of type std::runtime_error: disk on fire\n"),
              std::string::npos)
        << reports.front();

    // Not recording exceptions, the process still ends through abort, which is reported as a signal.
    const std::string unrecorded = temp.path() + "/unrecorded";
    EXPECT_EQ(crashInChild(unrecorded, false, [] { std::thread([] { throw std::logic_error("x"); }).join(); }),
              SIGABRT);
    const auto plain = reportsIn(unrecorded);
    ASSERT_EQ(plain.size(), 1U);
    EXPECT_NE(plain.front().find("Reason: signal 6 (SIGABRT)"), std::string::npos);
}

TEST(CrashReportTest, NoFolderNoReporter) {
    TempFolder temp;
    testing::DiskBuilder(temp.path()).text("/file", "x");
    EXPECT_FALSE(installCrashReporter(temp.path() + "/file/Crash Reports", "1", true));
    EXPECT_FALSE(installCrashReporter(temp.path() + "/" + std::string(5000, 'x'), "1", true));
}

} // namespace
} // namespace tidewell
