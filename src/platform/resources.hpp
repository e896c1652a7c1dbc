#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tidewell {

/// The absolute path of the running program, links resolved; nothing when the platform cannot say.
[[nodiscard]] std::optional<std::string> executablePath();

/// The folder of the running program, without a trailing slash; nothing when the platform cannot say.
[[nodiscard]] std::optional<std::string> executableFolder();

/// Where a file shipped with Tidewell is: next to the running program (as in the build tree), or in the data
/// folder installed beside its program folder (<prefix>/share/tidewell for <prefix>/bin). The first candidate
/// that is a regular file wins; nothing when neither is.
[[nodiscard]] std::optional<std::string> locateResource(std::string_view fileName);

} // namespace tidewell
