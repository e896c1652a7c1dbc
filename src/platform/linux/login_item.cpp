#include "platform/login_item.hpp"

#include <unistd.h>

#include <cerrno>

#include "platform/file_access.hpp"

namespace tidewell {

std::string defaultAutostartFolder() {
    return userConfigFolder() + "/autostart";
}

bool setLoginItemEnabled(const LoginItemPlace& place, bool on) {
    if (on) {
        return replaceFileWhole(place.autostartFolder, kLoginItemFileName, loginItemEntry(place.program));
    }
    const std::string target = place.autostartFolder + "/" + std::string(kLoginItemFileName);
    return ::unlink(target.c_str()) == 0 || errno == ENOENT;
}

} // namespace tidewell
