#pragma once

#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/child_program.hpp"

namespace tidewell {

/// The systemd user units that run the hourly purge without the window: the timer starts the service, which runs
/// `tidewell-cli purge` once.
inline constexpr std::string_view kPurgeTimerUnit = "tidewell-purge.timer";
inline constexpr std::string_view kPurgeServiceUnit = "tidewell-purge.service";

/// The user's own systemd unit folder: $XDG_CONFIG_HOME/systemd/user, or ~/.config/systemd/user when that
/// variable is unset, empty or not absolute.
[[nodiscard]] std::string defaultUserUnitFolder();

/// The service unit: a one-shot run of `<program> purge`, on the user's own home (never --root or --user), quietly
/// skipped once the program is gone (the package removed before the timer was turned off). The program's absolute
/// path is written as unit files require (blanks, "%" and "$" survive); systemd runs no program whose path holds a
/// quote, a backslash or a control character, and PurgeSchedule::turnOn refuses those.
[[nodiscard]] std::string purgeServiceUnit(std::string_view program);
/// The timer unit: every hour on the hour, Persistent=true (an hour missed while the computer was off runs once at
/// the next start), wanted by timers.target.
[[nodiscard]] std::string purgeTimerUnit();

/// Whether the purge timer is on in a unit folder, read from the files alone: its unit is there and enabled (the
/// link `systemctl --user enable` makes in timers.target.wants). Asks no service manager, so the window can look
/// often.
[[nodiscard]] bool purgeTimerEnabledIn(const std::string& unitFolder);

/// The user's service manager, reached through `systemctl --user`.
class UserServiceManager {
public:
    virtual ~UserServiceManager() = default;
    /// Runs `systemctl --user <args>`; nothing when systemctl cannot be started.
    [[nodiscard]] virtual std::optional<ProgramRun> systemctl(const std::vector<std::string>& args) const = 0;
};

/// The service manager of this session, through the systemctl program on PATH.
[[nodiscard]] std::unique_ptr<UserServiceManager> systemUserServiceManager();

/// Why a schedule operation did not happen; message is one line for the person.
struct ScheduleFailure {
    enum class Kind {
        /// No user service manager answers (no systemctl, no user session bus); nothing was changed.
        NoUserManager,
        /// The units could not be written or removed, or systemctl refused.
        Failed,
    };
    Kind kind;
    std::string message;
};

/// What `schedule status` shows.
struct PurgeScheduleStatus {
    /// The timer is enabled and active.
    bool on = false;
    /// When the timer next fires, as systemctl writes times; empty when it will not.
    std::string nextRun;
    /// When the last purge ended, as systemctl writes times; empty when none has run since the timer was set up.
    std::string lastRun;
    /// How it ended: "success", or systemd's word for the failure ("exit-code", "signal", ...).
    std::string lastResult;
    /// Its exit status, when it ended by exiting.
    std::optional<int> lastExitStatus;
};

/// The hourly purge as a systemd user timer, in a unit folder, managed through a user service manager.
class PurgeSchedule {
public:
    /// program: the absolute path of tidewell-cli that the service runs.
    PurgeSchedule(std::string unitFolder, std::string program, const UserServiceManager& manager);

    /// Writes both units (making the folder when missing, replacing earlier units whole), reloads the manager and
    /// enables and starts the timer. When the manager refuses, the units are removed again.
    std::expected<void, ScheduleFailure> turnOn() const;
    /// Stops and disables the timer and removes both units and the enabling link; a timer that is not there is
    /// already off.
    std::expected<void, ScheduleFailure> turnOff() const;
    /// Whether the timer is on, its next run and the last purge's end.
    [[nodiscard]] std::expected<PurgeScheduleStatus, ScheduleFailure> status() const;

    [[nodiscard]] const std::string& unitFolder() const { return m_unitFolder; }

private:
    std::optional<ScheduleFailure> requireManager() const;
    [[nodiscard]] bool systemctlSucceeds(const std::vector<std::string>& args) const;
    bool removeUnits() const;

    std::string m_unitFolder;
    std::string m_program;
    const UserServiceManager& m_manager;
};

} // namespace tidewell
