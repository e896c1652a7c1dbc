#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tidewell {

/// One profile that a "profiles.ini" names: its Path= (relative to the file's folder when IsRelative= is not 0)
/// and its Name=.
struct IniProfile {
    std::string path;
    std::string name;
    bool relative = true;
};

/// The profiles of a "profiles.ini" text: every [ProfileN] section (N a decimal number) that has a usable Path=,
/// in the order of N. A path is usable when it is not empty, holds no NUL byte, no "." or ".." component, and is
/// absolute exactly when IsRelative= is 0. Keys are matched exactly; a key given twice keeps its last value;
/// lines are trimmed of spaces, tabs and a carriage return; ";" and "#" start comments. Other sections, lines
/// outside a section, and lines without "=" are passed over.
[[nodiscard]] std::vector<IniProfile> profilesFromIni(std::string_view contents);

} // namespace tidewell
