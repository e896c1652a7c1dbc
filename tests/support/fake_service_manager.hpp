#pragma once

#include <unistd.h>

#include <string>
#include <utility>
#include <vector>

#include "platform/file_access.hpp"
#include "platform/purge_schedule.hpp"

namespace tidewell::testing {

/// A user service manager that starts nothing: it records each `systemctl --user` call and answers as a running
/// manager would. Like `enable`, it makes the timer's enabling link in the unit folder. A test can make it answer
/// as systemctl does where no user manager runs, or give its own answer to calls that begin with given words.
class FakeServiceManager final : public UserServiceManager {
public:
    explicit FakeServiceManager(std::string unitFolder) : m_unitFolder(std::move(unitFolder)) {}

    /// False: every call fails as systemctl does without a user session bus.
    bool running = true;
    /// Answers to calls whose words, joined by spaces, begin with the first of the pair; the first match wins.
    std::vector<std::pair<std::string, ProgramRun>> answers;
    /// Every call, in order.
    mutable std::vector<std::string> calls;

    std::optional<ProgramRun> systemctl(const std::vector<std::string>& args) const override {
        std::string call;
        for (const std::string& arg : args) {
            call += (call.empty() ? "" : " ") + arg;
        }
        calls.push_back(call);
        if (!running) {
            return ProgramRun{1, "", "Failed to connect to bus: No medium found\n"};
        }
        for (const auto& [words, answer] : answers) {
            if (call.starts_with(words)) {
                return answer;
            }
        }
        if (call.starts_with("enable")) {
            const std::string wants = m_unitFolder + "/timers.target.wants";
            makeFolders(wants);
            const std::string link = wants + "/" + std::string(kPurgeTimerUnit);
            static_cast<void>(::symlink(("../" + std::string(kPurgeTimerUnit)).c_str(), link.c_str()));
        }
        return ProgramRun{};
    }

private:
    std::string m_unitFolder;
};

} // namespace tidewell::testing
