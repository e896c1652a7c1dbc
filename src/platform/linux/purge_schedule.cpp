#include "platform/purge_schedule.hpp"

#include "platform/file_access.hpp"

namespace tidewell {

namespace {

class SystemctlManager final : public UserServiceManager {
public:
    std::optional<ProgramRun> systemctl(const std::vector<std::string>& args) const override {
        std::vector<std::string> command{"systemctl", "--user", "--no-ask-password"};
        command.insert(command.end(), args.begin(), args.end());
        return runProgram(command);
    }
};

} // namespace

std::string defaultUserUnitFolder() {
    return userConfigFolder() + "/systemd/user";
}

std::unique_ptr<UserServiceManager> systemUserServiceManager() {
    return std::make_unique<SystemctlManager>();
}

} // namespace tidewell
