#pragma once

#include "app/settings.hpp"

namespace tidewell {

/// The three choices a person makes in the main window's bottom bar (and the first of them in the status menu too):
/// real-time scan, run at start, and the main window's taskbar entry. The model holds their current values and the
/// rules by which they are stored; applying them (the hourly timer, the login item, the window's type) is the
/// application's.
class SettingsModel {
public:
    /// Choices stored in store; nothing is read before restore.
    explicit SettingsModel(AppSettings& store);

    /// Reads the stored choices, as the main window asks once it has loaded. Real-time scan is on unless stored off.
    /// Run at start is on unless stored off, and the value is written back. The taskbar entry is as stored, an
    /// absent key reading NO, and is written back: so a first start hides the entry, as Tidewell is meant to start.
    /// A start by the login item (launchedAtLogin) then makes run at start on for this run, after the write-back,
    /// so the stored value keeps what the person chose.
    void restore(bool launchedAtLogin);

    [[nodiscard]] bool realTimeScan() const { return m_realTimeScan; }
    [[nodiscard]] bool runAtStart() const { return m_runAtStart; }
    [[nodiscard]] bool showsTaskbarEntry() const { return m_showsTaskbarEntry; }

    /// A person's choice: each is stored at once.
    void setRealTimeScan(bool on);
    void setRunAtStart(bool on);
    void setShowsTaskbarEntry(bool show);

    /// Whether the stored taskbar setting says NO (an absent key does not): then the start-up makes the main window
    /// without showing it, and Tidewell lives in the status menu.
    [[nodiscard]] bool startsInStatusMenu() const;

private:
    AppSettings& m_store;
    bool m_realTimeScan = true;
    bool m_runAtStart = true;
    bool m_showsTaskbarEntry = false;
};

} // namespace tidewell
