#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tidewell {

/// How a program run by runProgram ended, and what it wrote.
struct ProgramRun {
    /// Its exit status; 128 + the signal's number when a signal ended it.
    int status = 0;
    std::string out;
    std::string err;
};

/// Runs a program and waits for it: command[0] is looked up on PATH as a shell would, the rest are its arguments,
/// passed as they are (no shell). Its standard input is empty; its standard output and error are collected.
/// Nothing when the command is empty or the program cannot be started (not installed, not executable).
[[nodiscard]] std::optional<ProgramRun> runProgram(const std::vector<std::string>& command);

} // namespace tidewell
