#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <thread>

#include "platform/running_apps.hpp"

namespace tidewell {
namespace {

TEST(RunningApplications, EachBrowsersProcessNamesCountAsIt) {
    // Each browser's own spelling and its usual Linux process names; near misses count as nothing.
    const std::vector<std::pair<const char*, const char*>> names{{"Google Chrome", "Google Chrome"},
                                                                 {"google-chrome", "Google Chrome"},
                                                                 {"firefox-esr", "Firefox"},
                                                                 {"Safari", "Safari"},
                                                                 {"safari", ""},
                                                                 {"Chrome", ""},
                                                                 {"chromium", ""},
                                                                 {"Firefox ", ""},
                                                                 {"Web Content", ""}};
    for (const auto& [process, application] : names) {
        EXPECT_EQ(applicationForProcessName(process), application) << process;
    }
}

TEST(RunningApplications, AProcessOfTheUserNamedFirefoxIsSeenWhileItRuns) {
    const auto probe = systemRunningApplications();
    if (probe->launchedApplicationNames().contains("Firefox")) {
        GTEST_SKIP() << "a Firefox runs on this machine already";
    }
    const pid_t child = ::fork();
    if (child == 0) {
        ::prctl(PR_SET_NAME, "Firefox");
        ::pause();
        ::_exit(0);
    }
    ASSERT_GT(child, 0);
    const std::string comm = "/proc/" + std::to_string(child) + "/comm";
    std::string name;
    for (int tries = 0; tries < 500 && name != "Firefox"; ++tries) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        std::ifstream(comm) >> name;
    }
    const bool seen = probe->launchedApplicationNames().contains("Firefox");
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    EXPECT_TRUE(seen);
    EXPECT_FALSE(probe->launchedApplicationNames().contains("Firefox"));
}

} // namespace
} // namespace tidewell
