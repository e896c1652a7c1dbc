#include "platform/running_apps.hpp"

#include <array>
#include <utility>

namespace tidewell {

std::string_view applicationForProcessName(std::string_view processName) {
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 8> kNames{{
        {"Safari", "Safari"},
        {"Google Chrome", "Google Chrome"},
        {"chrome", "Google Chrome"},
        {"google-chrome", "Google Chrome"},
        {"Firefox", "Firefox"},
        {"firefox", "Firefox"},
        {"firefox-esr", "Firefox"},
        {"firefox-bin", "Firefox"},
    }};
    for (const auto& [process, application] : kNames) {
        if (process == processName) {
            return application;
        }
    }
    return {};
}

} // namespace tidewell
