#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "base/folders.hpp"
#include "platform/purge_schedule.hpp"
#include "support/disk_builder.hpp"
#include "support/fake_service_manager.hpp"

namespace tidewell {
namespace {

using testing::FakeServiceManager;
using testing::TempFolder;

std::string readFile(const std::string& path) {
    return readWholeFile(path).value_or("(unreadable)");
}

bool exists(const std::string& path) {
    struct stat info {};
    return ::lstat(path.c_str(), &info) == 0;
}

// An executable the service can name: what systemd checks of ExecStart.
std::string makeProgram(const std::string& folder, const std::string& name) {
    EXPECT_TRUE(makeFolders(folder));
    const std::string path = folder + "/" + name;
    std::ofstream(path) << "#!/bin/sh\n";
    EXPECT_EQ(::chmod(path.c_str(), 0755), 0);
    return path;
}

class PurgeScheduleTest : public ::testing::Test {
protected:
    TempFolder temp;
    std::string units = temp.path() + "/config/systemd/user";
    FakeServiceManager manager{units};

    [[nodiscard]] std::string unit(std::string_view name) const { return units + "/" + std::string(name); }
    [[nodiscard]] std::string wantsLink() const { return units + "/timers.target.wants/tidewell-purge.timer"; }
};

TEST_F(PurgeScheduleTest, OnWritesUnitsSystemdAcceptsForAnyProgramPathAndEnablesTheTimer) {
    const std::optional<ProgramRun> version = runProgram({"systemd-analyze", "--version"});
    const bool canVerify = version && version->status == 0;
    // Quoting and percent signs matter: blanks, "$" and "%" in the path must reach systemd as they are.
    for (const std::string& name : {std::string("tidewell-cli"), std::string("tide  well $HOME ${HOME} 100%")}) {
        SCOPED_TRACE(name);
        const std::string program = makeProgram(temp.path() + "/my apps", name);
        manager.calls.clear();
        ASSERT_TRUE(PurgeSchedule(units, program, manager).turnOn());
        EXPECT_EQ(manager.calls, (std::vector<std::string>{"show --property=Version", "daemon-reload",
                                                           "enable --now tidewell-purge.timer"}));
        EXPECT_EQ(readFile(unit(kPurgeServiceUnit)), purgeServiceUnit(program));
        EXPECT_EQ(readFile(unit(kPurgeTimerUnit)), purgeTimerUnit());
        EXPECT_TRUE(purgeTimerEnabledIn(units));
        EXPECT_NE(purgeTimerUnit().find("\nOnCalendar=hourly\nPersistent=true\n"), std::string::npos);
        EXPECT_NE(purgeServiceUnit(program).find(" purge\n"), std::string::npos) << "plain purge: no --root, no --user";

        if (!canVerify) {
            continue;
        }
        // The verifier needs a runtime folder of its own, and reads unit folders from this configuration only. The
        // units name tidewell-cli(1) as their documentation, which is installed with the package, not here.
        const std::string runtime = temp.path() + "/run";
        ASSERT_TRUE(makeFolders(runtime));
        const std::optional<ProgramRun> verified =
            runProgram({"env", "XDG_RUNTIME_DIR=" + runtime, "XDG_CONFIG_HOME=" + temp.path() + "/config",
                        "systemd-analyze", "--user", "--man=no", "verify", unit(kPurgeTimerUnit), unit(kPurgeServiceUnit)});
        ASSERT_TRUE(verified);
        EXPECT_EQ(verified->status, 0) << verified->err;
        EXPECT_EQ(verified->out + verified->err, "") << "no warning either";
    }
    if (!canVerify) {
        GTEST_SKIP() << "systemd-analyze is not installed: the units were not checked by systemd";
    }
}

TEST_F(PurgeScheduleTest, OffRemovesBothUnitsAndTheLinkAndIsDoneWhenAlreadyOff) {
    const PurgeSchedule schedule(units, makeProgram(temp.path() + "/bin", "tidewell-cli"), manager);
    ASSERT_TRUE(schedule.turnOn());
    manager.calls.clear();
    ASSERT_TRUE(schedule.turnOff());
    EXPECT_EQ(manager.calls,
              (std::vector<std::string>{"show --property=Version", "stop tidewell-purge.timer", "daemon-reload"}));
    for (const std::string& path : {unit(kPurgeTimerUnit), unit(kPurgeServiceUnit), wantsLink()}) {
        EXPECT_FALSE(exists(path)) << path;
    }
    EXPECT_FALSE(purgeTimerEnabledIn(units));
    EXPECT_TRUE(schedule.turnOff());
}

TEST_F(PurgeScheduleTest, WhatCannotBeSetUpIsNotLeftHalfDone) {
    const std::string program = makeProgram(temp.path() + "/bin", "tidewell-cli");
    const auto failure = [&](const std::expected<void, ScheduleFailure>& done) {
        return done ? std::string("no failure") : done.error().message;
    };

    // No user manager (this is what systemctl says without a session bus): nothing is written or removed.
    manager.running = false;
    const PurgeSchedule schedule(units, program, manager);
    const auto on = schedule.turnOn();
    ASSERT_FALSE(on);
    EXPECT_EQ(on.error().kind, ScheduleFailure::Kind::NoUserManager);
    EXPECT_EQ(failure(on), "systemctl --user is not available: no systemd user manager runs for this session "
                           "(Failed to connect to bus: No medium found)");
    EXPECT_FALSE(exists(units));
    ASSERT_FALSE(schedule.status());
    EXPECT_EQ(schedule.status().error().kind, ScheduleFailure::Kind::NoUserManager);
    ASSERT_TRUE(replaceFileWhole(units, kPurgeTimerUnit, purgeTimerUnit()));
    EXPECT_FALSE(schedule.turnOff());
    EXPECT_TRUE(exists(unit(kPurgeTimerUnit))) << "off without a manager removes nothing";
    manager.running = true;

    // The manager refuses the timer: the units go again, so no later login finds a timer half set up.
    manager.answers = {{"enable", ProgramRun{1, "", "Failed to enable unit: Access denied\n"}}};
    const auto refused = PurgeSchedule(units, program, manager).turnOn();
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().kind, ScheduleFailure::Kind::Failed);
    EXPECT_EQ(failure(refused), "systemctl --user could not enable tidewell-purge.timer (Failed to enable unit: "
                                "Access denied)");
    EXPECT_FALSE(exists(unit(kPurgeTimerUnit)));
    EXPECT_FALSE(exists(unit(kPurgeServiceUnit)));
    manager.answers.clear();

    // A path systemd would not run, or a unit file cannot hold (a line break would end the setting), is refused
    // before anything is written.
    for (const std::string name : {"a\nb", "a\"b", "a'b", "a\\b", "ab "}) {
        EXPECT_EQ(failure(PurgeSchedule(units, temp.path() + "/" + name, manager).turnOn()),
                  "a systemd unit cannot run the program at '" + temp.path() + "/" + name + "'");
    }
    EXPECT_FALSE(exists(unit(kPurgeServiceUnit)));
    EXPECT_EQ(failure(PurgeSchedule(units, "tidewell-cli", manager).turnOn()),
              "a systemd unit cannot run the program at 'tidewell-cli'");

    // A folder where the unit folder should be.
    std::ofstream(temp.path() + "/file") << "x";
    EXPECT_EQ(failure(PurgeSchedule(temp.path() + "/file/user", program, manager).turnOn()),
              "cannot write the units into " + temp.path() + "/file/user");
}

TEST_F(PurgeScheduleTest, StatusReadsTheTimerAndTheLastPurge) {
    const PurgeSchedule schedule(units, "/usr/bin/tidewell-cli", manager);
    const auto shown = [&](const std::string& output) {
        manager.answers = {{"show tidewell-purge.timer", ProgramRun{0, output, ""}}};
        const auto status = schedule.status();
        EXPECT_TRUE(status);
        return status.value_or(PurgeScheduleStatus{});
    };

    PurgeScheduleStatus status = shown("UnitFileState=enabled\nActiveState=active\n"
                                       "NextElapseUSecRealtime=Mon 2026-11-23 07:00:00 UTC\n\n"
                                       "Result=exit-code\nExecMainStatus=5\n"
                                       "ExecMainExitTimestamp=Mon 2026-11-23 06:00:04 UTC\n");
    EXPECT_TRUE(status.on);
    EXPECT_EQ(status.nextRun, "Mon 2026-11-23 07:00:00 UTC");
    EXPECT_EQ(status.lastRun, "Mon 2026-11-23 06:00:04 UTC");
    EXPECT_EQ(status.lastResult, "exit-code");
    EXPECT_EQ(status.lastExitStatus, 5);
    EXPECT_EQ(manager.calls.back(), "show tidewell-purge.timer tidewell-purge.service --property=UnitFileState,"
                                    "ActiveState,NextElapseUSecRealtime,Result,ExecMainStatus,ExecMainExitTimestamp");

    // Ended by a signal, the main status is the signal's number, not an exit status.
    status = shown("UnitFileState=enabled\nActiveState=active\nNextElapseUSecRealtime=\n\n"
                   "Result=signal\nExecMainStatus=9\nExecMainExitTimestamp=Mon 2026-11-23 06:00:04 UTC\n");
    EXPECT_EQ(status.lastResult, "signal");
    EXPECT_EQ(status.lastExitStatus, std::nullopt);
    EXPECT_EQ(status.nextRun, "");

    // Enabled but stopped is not on; a purge that never ran has no result.
    status = shown("UnitFileState=enabled\nActiveState=inactive\nNextElapseUSecRealtime=n/a\n\n"
                   "Result=success\nExecMainStatus=0\nExecMainExitTimestamp=n/a\n");
    EXPECT_FALSE(status.on);
    EXPECT_EQ(status.lastRun, "");
    EXPECT_EQ(status.lastResult, "");

    // Units the manager does not know, and only one block.
    status = shown("UnitFileState=\nActiveState=inactive\n");
    EXPECT_FALSE(status.on);
    EXPECT_EQ(status.lastRun, "");
}

TEST_F(PurgeScheduleTest, TheTimerIsOnOnlyWithItsUnitAndTheEnablingLink) {
    EXPECT_FALSE(purgeTimerEnabledIn(units));
    ASSERT_TRUE(replaceFileWhole(units, kPurgeTimerUnit, purgeTimerUnit()));
    EXPECT_FALSE(purgeTimerEnabledIn(units)) << "written but not enabled";
    ASSERT_TRUE(makeFolders(units + "/timers.target.wants"));
    ASSERT_EQ(::symlink("../tidewell-purge.timer", wantsLink().c_str()), 0);
    EXPECT_TRUE(purgeTimerEnabledIn(units));
    ASSERT_EQ(::unlink(unit(kPurgeTimerUnit).c_str()), 0);
    EXPECT_FALSE(purgeTimerEnabledIn(units)) << "a link to nothing is not a timer";
}

} // namespace
} // namespace tidewell
