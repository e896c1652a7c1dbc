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

TEST(RunningApplications, AProcessOfTheUserNamedFirefoxIsSeenWhileItRuns) {
    const auto probe = systemRunningApplications();
    const std::set<std::string> names{"Firefox", "Safari"};
    if (probe->runningAmong(names).contains("Firefox")) {
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
    const bool seen = probe->runningAmong(names).contains("Firefox");
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    EXPECT_TRUE(seen);
    EXPECT_FALSE(probe->runningAmong(names).contains("Firefox"));
}

} // namespace
} // namespace tidewell
