#pragma once

#include <chrono>
#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "platform/running_apps.hpp"

namespace tidewell {
class PurgeSchedule;
}

namespace tidewell::cli {

/// The streams of one run of the command-line tool: the catalogue goes to `out`, log lines, questions and errors
/// to `err`, and answers to questions are read from `in` when `interactive` says a person is there.
struct CliIo {
    std::ostream& out;
    std::ostream& err;
    std::istream& in;
    bool interactive = false;
    /// Which browsers run; null asks the system.
    const RunningApplications* running = nullptr;
    /// How `clean --wait` waits between two looks at the browsers; empty sleeps.
    std::function<void(std::chrono::seconds)> pause = {};
    /// The timer `schedule` manages; null manages the user's own through `systemctl --user`.
    const PurgeSchedule* schedule = nullptr;
};

/// Exit statuses of tidewell-cli.
enum ExitCode : int {
    kExitOk = 0,
    kExitFailure = 1,
    kExitUsage = 2,
    kExitBrowsersRunning = 3, // a browser whose data is to go still runs; nothing was deleted
    kExitDeclined = 4,        // the confirmation was not answered yes; nothing was deleted
    kExitLeft = 5,            // finished; some ticked locations were left as they were (each named on `err`)
};

/// Runs `tidewell-cli` with its arguments (without the program name) and returns its exit status.
int runCli(const std::vector<std::string>& args, CliIo& io);

} // namespace tidewell::cli
