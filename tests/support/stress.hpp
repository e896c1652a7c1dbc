#pragma once

#include <cstddef>
#include <cstdlib>
#include <string>

namespace tidewell::testing {

/// How hard a stress test works: the short form every test run uses, or the number set in the environment
/// variable `name` (`make stress` sets them for its long form).
inline std::size_t stressSetting(const char* name, std::size_t shortForm) {
    const char* text = std::getenv(name);
    return text != nullptr && *text != '\0' ? std::stoul(text) : shortForm;
}

} // namespace tidewell::testing
