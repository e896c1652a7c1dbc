#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include "cleaning/browser_check.hpp"
#include "platform/running_apps.hpp"

namespace tidewell {
namespace {

// A process renamed as a browser's process (the kernel's comm, as Firefox's renamed main process "GeckoMain"
// shows) is seen while it runs, and no longer once it has ended; the layout says which browser the name is.
TEST(RunningApplications, AProcessOfTheUserNamedLikeABrowserIsSeenWhileItRuns) {
    const auto probe = systemRunningApplications();
    const struct {
        const char* processName;
        const DiskLayout& layout;
        const char* browser;
    } scenarios[] = {{"Firefox", macosLayout(), "Firefox"},
                     {"GeckoMain", linuxLayout(), "Firefox"},
                     {"firefox-esr", linuxLayout(), "Firefox"},
                     {"chromium", linuxLayout(), "Chromium"},
                     {"vivaldi-bin", linuxLayout(), "Vivaldi"}};
    for (const auto& scenario : scenarios) {
        const std::set<std::string> names{scenario.processName, "Safari"};
        if (probe->runningAmong(names).contains(scenario.processName)) {
            std::printf("skipped %s: one runs on this machine already\n", scenario.processName);
            continue;
        }
        int named[2];
        ASSERT_EQ(::pipe(named), 0);
        const pid_t child = ::fork();
        if (child == 0) {
            ::prctl(PR_SET_NAME, scenario.processName);
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
        const bool seen = probe->runningAmong(names).contains(scenario.processName);
        const std::vector<const Browser*> browsers = runningBrowsers(scenario.layout, *probe);
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        EXPECT_TRUE(seen) << scenario.processName;
        EXPECT_TRUE(std::ranges::any_of(browsers, [&](const Browser* b) { return b->name == scenario.browser; }))
            << scenario.processName;
        EXPECT_FALSE(probe->runningAmong(names).contains(scenario.processName)) << scenario.processName;
    }
}

} // namespace
} // namespace tidewell
