#include "cleaning/browser_check.hpp"

#include <algorithm>
#include <set>
#include <string>

#include "base/log.hpp"
#include "catalogue/record_keys.hpp"
#include "catalogue/record_views.hpp"

namespace tidewell {

namespace {

bool sameEntry(const Record& a, const Record& b) {
    return a.text(keys::kBrowserName) == b.text(keys::kBrowserName) &&
           a.text(keys::kBrowserIcon) == b.text(keys::kBrowserIcon);
}

bool runs(const Browser& browser, const std::set<std::string>& running) {
    return std::ranges::any_of(browser.processNames,
                               [&](std::string_view name) { return running.contains(std::string(name)); });
}

class EntryList {
public:
    EntryList(const DiskRoot& disk, const RunningApplications& running)
        : m_disk(disk), m_running(running.runningAmong(browserProcessNames(disk.layout()))) {}

    void addIfRunning(const Browser& browser) {
        if (runs(browser, m_running)) {
            m_entries.push_back(browserPanelEntry(browser, m_disk));
        }
    }
    // An adult-history item's browser is listed once, however many items and sections name it.
    void addOnceIfRunning(const Browser& browser) {
        const RecordPtr entry = browserPanelEntry(browser, m_disk);
        if (std::ranges::any_of(m_entries, [&](const RecordPtr& listed) { return sameEntry(*listed, *entry); })) {
            logLine("Not added");
        } else if (runs(browser, m_running)) {
            m_entries.push_back(entry);
        }
    }
    RecordList take() { return std::move(m_entries); }

private:
    const DiskRoot& m_disk;
    std::set<std::string> m_running;
    RecordList m_entries;
};

RecordList browsersOf(const RecordList& sections, const DiskRoot& disk, const RunningApplications& running,
                      bool lookIntoAdultHistory) {
    EntryList list(disk, running);
    for (const Section& section : sectionsOf(sections)) {
        if (section.kind() == RecordKind::SourceSection && section.browser() != nullptr) {
            list.addIfRunning(*section.browser());
        } else if (lookIntoAdultHistory && section.kind() == RecordKind::AdultHistorySection) {
            for (const Item& item : section.items()) {
                if (item.browser() != nullptr) {
                    list.addOnceIfRunning(*item.browser());
                }
            }
        }
    }
    return list.take();
}

} // namespace

RecordPtr browserPanelEntry(const Browser& browser, const DiskRoot& disk) {
    return makeRecord(
        {{keys::kBrowserName, std::string(browser.name)}, {keys::kBrowserIcon, applicationImage(disk, browser)}},
        {RecordKind::BrowserEntry, &browser, browser.icon});
}

RecordList tickedSections(const RecordList& catalogue) {
    RecordList ticked;
    for (const Section& section : sectionsOf(catalogue)) {
        if (section.isNotUnticked()) {
            ticked.push_back(section.record());
        }
    }
    return ticked;
}

RecordList browsersInTheWay(const RecordList& sections, const DiskRoot& disk, const RunningApplications& running) {
    return browsersOf(sections, disk, running, true);
}

RecordList browsersStillInTheWay(const RecordList& sections, const DiskRoot& disk, const RunningApplications& running) {
    return browsersOf(sections, disk, running, false);
}

std::vector<const Browser*> runningBrowsers(const DiskLayout& layout, const RunningApplications& running) {
    const std::set<std::string> names = running.runningAmong(browserProcessNames(layout));
    std::vector<const Browser*> found;
    // Only a browser whose history the purge changes is in its way: a running mail program is not.
    std::ranges::copy_if(layout.browsers, std::back_inserter(found), [&](const Browser* browser) {
        return browser->history != nullptr && runs(*browser, names);
    });
    return found;
}

} // namespace tidewell
