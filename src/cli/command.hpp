#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <optional>

#include "layout/disk_root.hpp"
#include "cleaning/clean_outcome.hpp"
#include "cli/cli.hpp"

namespace tidewell::cli {

/// What every command is given once the global options are read.
struct CommandContext {
    const DiskRoot& disk;
    CliIo& io;
};

/// A command's body, run after parsing; returns the exit status.
using CommandRunner = std::function<int(CommandContext&)>;

/// Adds a command to the tool and returns what runs it. Each command lives in a file of its own.
CommandRunner addScanCommand(CLI::App& app);
/// `extensions [--json]`: the Chrome, Firefox and Safari extension inventories, grouped by browser.
CommandRunner addExtensionsCommand(CLI::App& app);
/// `inventory launch-agents|launch-daemons|app-support|apps [--json]`: one of the start-up, support-folder or
/// application listings, in its order.
CommandRunner addInventoryCommand(CLI::App& app);
CommandRunner addCleanCommand(CLI::App& app);
CommandRunner addPurgeCommand(CLI::App& app);
/// `schedule on|off|status`: the hourly purge as a systemd user timer, on the user's own home.
CommandRunner addScheduleCommand(CLI::App& app);

/// The running browsers as the run sees them: the injected probe, or the system's (kept in `owned`).
const RunningApplications& runningApplications(CliIo& io, std::unique_ptr<RunningApplications>& owned);

/// Checks the home before a command works on the disk (the disk root and the login name are checked for every
/// command; `schedule` never looks at the disk): a home that is not there, or that leads off the disk under
/// --root, is reported as a usage error naming the folder. Returns whether the command may go on.
[[nodiscard]] bool homeIsUsable(CommandContext& context);

/// Prints a usage error found after parsing (a PATH that names nothing, say) as one line on the error stream and
/// returns the usage exit status.
int reportUsageError(CliIo& io, std::string_view message);

/// Names, on the error stream, a location or database a clean or purge left as it was, and why, one line each.
void reportLeft(CliIo& io, const LeftAsItWas& left);

} // namespace tidewell::cli
