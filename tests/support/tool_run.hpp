#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "cli/cli.hpp"

namespace tidewell::testing {

/// What one in-process run of tidewell-cli gave.
struct ToolRun {
    int status;
    std::string out;
    std::string err;
};

/// Runs tidewell-cli in this process with these arguments, no one at the keyboard; `schedule` manages the given
/// timer (none: the user's own).
inline ToolRun runTool(const std::vector<std::string>& args, const PurgeSchedule* schedule = nullptr) {
    std::ostringstream out;
    std::ostringstream err;
    std::istringstream in;
    cli::CliIo io{out, err, in, false};
    io.schedule = schedule;
    const int status = cli::runCli(args, io);
    return {status, out.str(), err.str()};
}

} // namespace tidewell::testing
