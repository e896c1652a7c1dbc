#pragma once

#include <string>
#include <string_view>

namespace tidewell {

/// The argument the login item starts Tidewell with. A start that carries it was made by the session at login,
/// which is how Tidewell knows it was started at login.
inline constexpr std::string_view kAutostartArgument = "--autostart";

/// The name of the login item's entry in the autostart folder.
inline constexpr std::string_view kLoginItemFileName = "tidewell.desktop";

/// Where the login item lives and what it starts.
struct LoginItemPlace {
    /// The session's autostart folder; made when missing.
    std::string autostartFolder;
    /// The absolute path of the program to start at login.
    std::string program;
};

/// The session's autostart folder: $XDG_CONFIG_HOME/autostart, or ~/.config/autostart when that variable is unset,
/// empty or not absolute (the home folder from $HOME, else from the user database).
std::string defaultAutostartFolder();

/// The entry that starts program at login with kAutostartArgument: a desktop entry whose Exec line quotes the
/// program's path as desktop entries require (spaces, quotes, "$", "`", "\" and "%" survive).
std::string loginItemEntry(std::string_view program);

/// Registers (on) or removes (off) the login item: writes <autostart folder>/tidewell.desktop, making the folder
/// if needed and replacing the entry whole, or removes it. Removing an entry that is not there succeeds. Returns
/// false when the entry could not be written or removed (a read-only folder, a folder where the file should be).
bool setLoginItemEnabled(const LoginItemPlace& place, bool on);

} // namespace tidewell
