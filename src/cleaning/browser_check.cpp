#include "cleaning/browser_check.hpp"

#include <algorithm>
#include <set>
#include <string>

#include "base/log.hpp"

namespace tidewell {

namespace {

const BrowserRow* rowWhere(std::string_view BrowserRow::*key, std::string_view value) {
    for (const BrowserRow& row : browserTable()) {
        if (row.*key == value) {
            return &row;
        }
    }
    return nullptr;
}

bool sameEntry(const Record& a, const Record& b) {
    return a.text("NameBrowser") == b.text("NameBrowser") && a.text("iconBrowser") == b.text("iconBrowser");
}

class EntryList {
public:
    EntryList(const DiskRoot& disk, const RunningApplications& running)
        : m_disk(disk), m_running(running.launchedApplicationNames()) {}

    [[nodiscard]] bool runs(const BrowserRow& browser) const {
        return m_running.contains(std::string(browser.applicationName));
    }
    void addIfRunning(const BrowserRow& browser) {
        if (runs(browser)) {
            m_entries.push_back(makeBrowserEntry(browser, m_disk));
        }
    }
    // An adult-history item's browser is listed once, however many items and sections name it.
    void addOnceIfRunning(const BrowserRow& browser) {
        const RecordPtr entry = makeBrowserEntry(browser, m_disk);
        if (std::ranges::any_of(m_entries, [&](const RecordPtr& listed) { return sameEntry(*listed, *entry); })) {
            logLine("Not added");
        } else if (runs(browser)) {
            m_entries.push_back(entry);
        }
    }
    [[nodiscard]] const RecordList& entries() const { return m_entries; }

private:
    const DiskRoot& m_disk;
    std::set<std::string> m_running;
    RecordList m_entries;
};

void addRunningBrowsers(EntryList& list, const RecordList* sections, bool lookIntoAdultHistory) {
    if (sections == nullptr) {
        for (const std::string_view name : {"Safari", "Chrome", "Firefox"}) {
            list.addIfRunning(*rowWhere(&BrowserRow::sectionName, name));
        }
        return;
    }
    for (const RecordPtr& section : *sections) {
        const std::string& name = section->text("Name");
        if (const BrowserRow* browser = rowWhere(&BrowserRow::sectionName, name)) {
            list.addIfRunning(*browser);
        } else if (lookIntoAdultHistory && name == "Adult History") {
            if (const RecordList* items = section->list("List")) {
                for (const RecordPtr& item : *items) {
                    if (const BrowserRow* named = rowWhere(&BrowserRow::adultItemName, item->text("NameText"))) {
                        list.addOnceIfRunning(*named);
                    }
                }
            }
        }
    }
}

// True when no browser is listed; otherwise the panel shows the list.
bool noneListed(const EntryList& list, const std::function<void(const RecordList&)>& show) {
    if (list.entries().empty()) {
        return true;
    }
    if (show) {
        show(list.entries());
    }
    return false;
}

} // namespace

const std::array<BrowserRow, 3>& browserTable() {
    static const std::array<BrowserRow, 3> kTable{{
        {"Chrome", "Google Chrome Adult History", "Google Chrome", "Chrome", "/Applications/Google Chrome.app"},
        {"Safari", "Safari Adult History", "Safari", "Safari", "/Applications/Safari.app"},
        {"Firefox", "Firefox Adult History", "Firefox", "Firefox", "/Applications/Firefox.app"},
    }};
    return kTable;
}

RecordPtr makeBrowserEntry(const BrowserRow& browser, const DiskRoot& disk) {
    return makeRecord({{"NameBrowser", std::string(browser.entryName)}, {"iconBrowser", disk.resolve(browser.bundle)}});
}

RecordList tickedSections(const RecordList& catalogue) {
    RecordList ticked;
    for (const RecordPtr& section : catalogue) {
        if (isNotFalse(*section, "isChecked")) {
            ticked.push_back(section);
        }
    }
    return ticked;
}

bool forceQuitBrowsers(const RecordList* sections, const DiskRoot& disk, const RunningApplications& running,
                       const BrowserPanel& panel) {
    if (!panel.confirm || !panel.confirm()) {
        return false;
    }
    EntryList list(disk, running);
    addRunningBrowsers(list, sections, true);
    return noneListed(list, panel.displayPanel);
}

bool tryAgain(const RecordList* sections, const DiskRoot& disk, const RunningApplications& running,
              const BrowserPanel& panel) {
    EntryList list(disk, running);
    addRunningBrowsers(list, sections, false);
    return noneListed(list, panel.reloadPanel);
}

} // namespace tidewell
