#pragma once

#include <memory>
#include <set>
#include <string>

namespace tidewell {

/// Which programs run now, as the running-browser check and the hourly purge ask. The browser table says which
/// process names are which browser.
class RunningApplications {
public:
    virtual ~RunningApplications() = default;

    /// Those of these process names that a process of the current user runs under now: its comm, the base name
    /// of its executable, or the base name of its argv[0].
    [[nodiscard]] virtual std::set<std::string> runningAmong(const std::set<std::string>& processNames) const = 0;
};

/// The programs running on this machine, seen through the current user's processes.
[[nodiscard]] std::unique_ptr<RunningApplications> systemRunningApplications();

} // namespace tidewell
