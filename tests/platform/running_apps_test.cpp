#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/running_apps.hpp"

namespace tidewell {
namespace {

TEST(RunningApplications, AProcessOfTheUserNamedFirefoxIsSeenWhileItRuns) {
    const auto probe = systemRunningApplications();
    const std::set<std::string> names{"Firefox", "Safari"};
    if (probe->runningAmong(names).contains("Firefox")) {
        GTEST_SKIP() << "a Firefox runs on this machine already";
    }
    int named[2];
    ASSERT_EQ(::pipe(named), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        ::prctl(PR_SET_NAME, "Firefox");
        ::close(named[0]);
        ::close(named[1]); // tells the parent the name is set
        ::pause();
        ::_exit(0);
    }
    ASSERT_GT(child, 0);
    ::close(named[1]);
    char none = 0;
    ASSERT_EQ(::read(named[0], &none, 1), 0); // the end of the pipe: the child has its name
    ::close(named[0]);
    const bool seen = probe->runningAmong(names).contains("Firefox");
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    EXPECT_TRUE(seen);
    EXPECT_FALSE(probe->runningAmong(names).contains("Firefox"));
}

} // namespace
} // namespace tidewell
