#pragma once

#include <memory>
#include <set>
#include <string>
#include <string_view>

namespace tidewell {

/// Which applications run now, as the browser check and the hourly purge ask (`launchedApplications`).
class RunningApplications {
public:
    virtual ~RunningApplications() = default;

    /// The names of the running applications Tidewell cares about: "Safari", "Google Chrome" and "Firefox", each
    /// present when at least one of its processes belongs to the current user.
    [[nodiscard]] virtual std::set<std::string> launchedApplicationNames() const = 0;
};

/// The application a process of the given name counts as: "Safari", "Google Chrome" and "Firefox" stand for
/// themselves; "chrome" and "google-chrome" count as "Google Chrome"; "firefox", "firefox-esr" and "firefox-bin"
/// as "Firefox". Any other name counts as none ("").
[[nodiscard]] std::string_view applicationForProcessName(std::string_view processName);

/// The running applications of this machine, seen through the current user's processes.
[[nodiscard]] std::unique_ptr<RunningApplications> systemRunningApplications();

} // namespace tidewell
