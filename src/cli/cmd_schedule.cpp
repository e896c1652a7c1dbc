#include <fmt/format.h>

#include <ostream>

#include "cli/command.hpp"
#include "platform/purge_schedule.hpp"
#include "platform/resources.hpp"

namespace tidewell::cli {

namespace {

constexpr const char* kActions[] = {"on", "off", "status"};

void printStatus(std::ostream& out, const PurgeScheduleStatus& status) {
    out << "Hourly purge: " << (status.on ? "on" : "off") << '\n';
    if (status.on) {
        out << "Next run: " << (status.nextRun.empty() ? "not planned" : status.nextRun) << '\n';
    }
    if (status.lastRun.empty()) {
        out << "Last run: none yet\n";
        return;
    }
    std::string result = status.lastResult.empty() ? "ended" : status.lastResult;
    if (status.lastExitStatus && *status.lastExitStatus != 0) {
        result += fmt::format(", exit status {}", *status.lastExitStatus);
    }
    out << "Last run: " << status.lastRun << ", " << result << '\n';
    out << fmt::format("Its log: journalctl --user -u {}\n", kPurgeServiceUnit);
}

} // namespace

CommandRunner addScheduleCommand(CLI::App& app) {
    CLI::App* command = app.add_subcommand(
        "schedule", "Run the hourly purge from a systemd user timer, without the window application");
    auto action = std::make_shared<std::string>();
    command
        ->add_option("ACTION", *action,
                     "on (write and start the timer), off (stop it and remove its units) or status (whether it is "
                     "on, its next run and the last result)")
        ->required()
        ->check(CLI::IsMember(std::vector<std::string>(std::begin(kActions), std::end(kActions))));

    return [&app, action](CommandContext& context) {
        // The timer purges the home of the person who set it up, on this computer's own disk; another disk or
        // another person's home is never scheduled.
        for (const char* global : {"--root", "--user"}) {
            if (app.get_option(global)->count() > 0) {
                return reportUsageError(context.io, fmt::format("schedule takes no {}: the timer always purges "
                                                                "your own home",
                                                                global));
            }
        }
        std::unique_ptr<UserServiceManager> manager;
        std::optional<PurgeSchedule> own;
        const PurgeSchedule* schedule = context.io.schedule;
        if (schedule == nullptr) {
            manager = systemUserServiceManager();
            own.emplace(defaultUserUnitFolder(), executablePath().value_or(std::string()), *manager);
            schedule = &*own;
        }

        std::ostream& out = context.io.out;
        std::expected<void, ScheduleFailure> done;
        if (*action == "status") {
            const std::expected<PurgeScheduleStatus, ScheduleFailure> status = schedule->status();
            if (status) {
                printStatus(out, *status);
                return static_cast<int>(kExitOk);
            }
            done = std::unexpected(status.error());
        } else {
            done = *action == "on" ? schedule->turnOn() : schedule->turnOff();
        }
        if (!done) {
            context.io.err << "tidewell-cli: schedule " << *action << ": " << done.error().message << '\n';
            return static_cast<int>(done.error().kind == ScheduleFailure::Kind::NoUserManager ? kExitUsage
                                                                                             : kExitFailure);
        }
        out << (*action == "on" ? fmt::format("Hourly purge: on ({} in {})\n", kPurgeTimerUnit, schedule->unitFolder())
                                : std::string("Hourly purge: off\n"));
        return static_cast<int>(kExitOk);
    };
}

} // namespace tidewell::cli
