#include "cleaning/browser_check.hpp"

#include <algorithm>
#include <optional>
#include <set>
#include <string>

#include "base/held_folder.hpp"
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
    // A browser whose files a ticked row of another section touches is listed once, without a word.
    void addQuietlyIfRunning(const Browser& browser) {
        const RecordPtr entry = browserPanelEntry(browser, m_disk);
        if (runs(browser, m_running) &&
            std::ranges::none_of(m_entries, [&](const RecordPtr& listed) { return sameEntry(*listed, *entry); })) {
            m_entries.push_back(entry);
        }
    }
    RecordList take() { return std::move(m_entries); }

private:
    const DiskRoot& m_disk;
    std::set<std::string> m_running;
    RecordList m_entries;
};

// Whether the path lies at or below the folder, both as components.
bool isWithin(const std::vector<std::string>& path, const std::vector<std::string>& folder) {
    return path.size() >= folder.size() && std::equal(folder.begin(), folder.end(), path.begin());
}

// The browsers whose data folders hold a location of a ticked row of the section, in the layout's order: the
// extension rows and the preference reset, which a running browser would undo or trip over.
std::vector<const Browser*> browsersTouchedBy(const Section& section, const DiskRoot& disk) {
    std::vector<std::vector<std::string>> locations;
    for (const Item& item : section.items()) {
        if (const UrlList* urls = item.locations(); urls != nullptr && item.isTicked()) {
            for (const FileUrl& url : *urls) {
                if (std::optional<std::vector<std::string>> components = normalisedComponents(url.path)) {
                    locations.push_back(std::move(*components));
                }
            }
        }
    }
    std::vector<const Browser*> touched;
    for (const Browser* browser : disk.layout().browsers) {
        const bool touches = std::ranges::any_of(browser->dataFolders, [&](std::string_view folder) {
            const std::optional<std::vector<std::string>> data = normalisedComponents(disk.inHome(folder).path);
            return data && std::ranges::any_of(locations, [&](const auto& path) { return isWithin(path, *data); });
        });
        if (touches) {
            touched.push_back(browser);
        }
    }
    return touched;
}

RecordList browsersOf(const RecordList& sections, const DiskRoot& disk, const RunningApplications& running,
                      bool lookIntoAdultHistory) {
    EntryList list(disk, running);
    for (const Section& section : sectionsOf(sections)) {
        if (section.kind() == RecordKind::ExtensionsSection) {
            for (const Browser* browser : browsersTouchedBy(section, disk)) {
                list.addQuietlyIfRunning(*browser);
            }
        } else if (section.kind() == RecordKind::SourceSection && section.browser() != nullptr) {
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
    std::ranges::copy_if(layout.browsers, std::back_inserter(found),
                         [&](const Browser* browser) { return browser->history != nullptr && runs(*browser, names); });
    return found;
}

} // namespace tidewell
