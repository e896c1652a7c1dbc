#include "platform/login_item.hpp"

#include <fmt/format.h>

namespace tidewell {

namespace {

// An Exec argument is quoted whole; inside the quotes ", `, $ and \ are escaped with a backslash, and every %
// is doubled since % starts a field code.
std::string quoteExecArgument(std::string_view argument) {
    std::string quoted = "\"";
    for (const char c : argument) {
        if (c == '"' || c == '`' || c == '$' || c == '\\') {
            quoted += '\\';
        } else if (c == '%') {
            quoted += '%';
        }
        quoted += c;
    }
    quoted += '"';
    return quoted;
}

// The Exec value is itself a desktop-entry string, whose own escapes apply on top: a backslash is written twice
// and a line break as "\n", so the entry stays one line.
std::string escapeEntryValue(std::string_view value) {
    std::string escaped;
    for (const char c : value) {
        if (c == '\\') {
            escaped += "\\\\";
        } else if (c == '\n') {
            escaped += "\\n";
        } else {
            escaped += c;
        }
    }
    return escaped;
}

} // namespace

std::string loginItemEntry(std::string_view program) {
    return fmt::format("[Desktop Entry]\n"
                       "Type=Application\n"
                       "Name=Tidewell\n"
                       "Comment=Starts Tidewell at login\n"
                       "Exec={} {}\n"
                       "Icon=tidewell\n"
                       "Terminal=false\n"
                       "X-GNOME-Autostart-enabled=true\n",
                       escapeEntryValue(quoteExecArgument(program)), kAutostartArgument);
}

} // namespace tidewell
