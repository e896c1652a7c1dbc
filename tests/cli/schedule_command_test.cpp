#include <gtest/gtest.h>

#include "platform/purge_schedule.hpp"
#include "support/disk_builder.hpp"
#include "support/fake_service_manager.hpp"
#include "support/tool_run.hpp"

namespace tidewell::cli {
namespace {

using testing::FakeServiceManager;
using testing::runTool;
using testing::TempFolder;
using testing::ToolRun;

TEST(ScheduleCommand, OnStatusAndOffAnswerForTheTimerAndAMissingUserManagerIsExitTwo) {
    TempFolder temp;
    const std::string units = temp.path() + "/systemd/user";
    FakeServiceManager manager(units);
    const PurgeSchedule schedule(units, "/usr/bin/tidewell-cli", manager);
    const auto run = [&](std::vector<std::string> args) { return runTool(args, &schedule); };

    ToolRun done = run({"schedule", "on"});
    EXPECT_EQ(done.status, 0) << done.err;
    EXPECT_EQ(done.out, "Hourly purge: on (tidewell-purge.timer in " + units + ")\n");
    EXPECT_TRUE(purgeTimerEnabledIn(units));

    manager.answers = {{"show tidewell-purge.timer",
                        ProgramRun{0,
                                   "UnitFileState=enabled\nActiveState=active\n"
                                   "NextElapseUSecRealtime=Mon 2026-11-23 07:00:00 UTC\n\n"
                                   "Result=exit-code\nExecMainStatus=5\n"
                                   "ExecMainExitTimestamp=Mon 2026-11-23 06:00:04 UTC\n",
                                   ""}}};
    done = run({"schedule", "status"});
    EXPECT_EQ(done.status, 0) << done.err;
    EXPECT_EQ(done.out, "Hourly purge: on\n"
                        "Next run: Mon 2026-11-23 07:00:00 UTC\n"
                        "Last run: Mon 2026-11-23 06:00:04 UTC, exit-code, exit status 5\n"
                        "Its log: journalctl --user -u tidewell-purge.service\n");
    manager.answers.clear();

    done = run({"schedule", "off"});
    EXPECT_EQ(done.status, 0) << done.err;
    EXPECT_EQ(done.out, "Hourly purge: off\n");
    EXPECT_FALSE(purgeTimerEnabledIn(units));
    done = run({"schedule", "status"});
    EXPECT_EQ(done.out, "Hourly purge: off\nLast run: none yet\n");

    // The timer purges the user's own home: another disk or home is a usage error, and nothing is asked.
    manager.calls.clear();
    for (const std::vector<std::string>& args : {std::vector<std::string>{"--root", temp.path(), "schedule", "on"},
                                                 std::vector<std::string>{"--user", "ann", "schedule", "status"}}) {
        done = run(args);
        EXPECT_EQ(done.status, 2);
        EXPECT_TRUE(done.err.starts_with("tidewell-cli: schedule takes no --")) << done.err;
    }
    EXPECT_EQ(run({"schedule", "sometimes"}).status, 2);
    EXPECT_TRUE(manager.calls.empty());

    // Without a user manager: one clear line and exit 2, whatever was asked.
    manager.running = false;
    for (const std::string action : {"on", "off", "status"}) {
        done = run({"schedule", action});
        EXPECT_EQ(done.status, 2);
        EXPECT_EQ(done.out, "");
        EXPECT_EQ(done.err, "tidewell-cli: schedule " + action +
                                ": systemctl --user is not available: no systemd user manager runs for this session "
                                "(Failed to connect to bus: No medium found)\n");
    }

    // A manager that refuses is a failure of its own.
    manager.running = true;
    manager.answers = {{"enable", ProgramRun{1, "", "Failed to enable unit: Access denied\n"}}};
    done = run({"schedule", "on"});
    EXPECT_EQ(done.status, 1);
    EXPECT_EQ(done.err, "tidewell-cli: schedule on: systemctl --user could not enable tidewell-purge.timer (Failed "
                        "to enable unit: Access denied)\n");
}

} // namespace
} // namespace tidewell::cli
