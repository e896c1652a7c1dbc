#include "app/settings_model.hpp"

namespace tidewell {

SettingsModel::SettingsModel(AppSettings& store) : m_store(store) {}

void SettingsModel::restore(bool launchedAtLogin) {
    m_realTimeScan = m_store.hasValue(keys::kRealTimeScan) ? m_store.boolAt(keys::kRealTimeScan) : true;

    m_runAtStart = m_store.hasValue(keys::kRunAtStart) ? m_store.boolAt(keys::kRunAtStart) : true;
    m_store.setBool(keys::kRunAtStart, m_runAtStart);

    m_showsTaskbarEntry = m_store.boolAt(keys::kTaskbarEntry);
    m_store.setBool(keys::kTaskbarEntry, m_showsTaskbarEntry);

    // A start by the login item proves start at login is wanted, whatever was stored. There is no helper process
    // to tell to quit: the login item is an entry the session reads.
    if (launchedAtLogin) {
        m_runAtStart = true;
    }
    m_store.sync();
}

void SettingsModel::setRealTimeScan(bool on) {
    m_realTimeScan = on;
    m_store.setBool(keys::kRealTimeScan, on);
}

void SettingsModel::setRunAtStart(bool on) {
    m_runAtStart = on;
    m_store.setBool(keys::kRunAtStart, on);
}

void SettingsModel::setShowsTaskbarEntry(bool show) {
    m_showsTaskbarEntry = show;
    m_store.setBool(keys::kTaskbarEntry, show);
}

bool SettingsModel::startsInStatusMenu() const {
    return m_store.hasValue(keys::kTaskbarEntry) && !m_store.boolAt(keys::kTaskbarEntry);
}

} // namespace tidewell
