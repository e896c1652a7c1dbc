#pragma once

#include "layout/disk_layout.hpp"

namespace tidewell::testing {

/// The history schemas of the macOS layout's browsers.
inline const HistorySchema* chromeHistory() {
    return findBrowser(macosLayout(), "chrome")->history;
}
inline const HistorySchema* safariHistory() {
    return findBrowser(macosLayout(), "safari")->history;
}
inline const HistorySchema* firefoxHistory() {
    return findBrowser(macosLayout(), "firefox")->history;
}

} // namespace tidewell::testing
