#include "sources/adult_history_section.hpp"

#include "base/folders.hpp"
#include "catalogue/record_keys.hpp"
#include "layout/locations.hpp"

namespace tidewell {

namespace {

// The history database of every profile, in profile order; on a layout that offers existing databases only, those
// alone.
UrlList profileDatabases(const DiskRoot& disk, const Browser& browser, AnchorFolders anchors) {
    UrlList databases;
    const std::optional<std::vector<BrowserProfile>> profiles = historyProfilesOf(disk, browser);
    for (const BrowserProfile& profile : profiles.value_or(std::vector<BrowserProfile>())) {
        anchors.profile = &profile;
        FileUrl database = locationOf(browser.profileHistory, anchors);
        if (!disk.layout().adultHistoryOfExistingDatabases || fileExistsAt(database.path)) {
            databases.push_back(std::move(database));
        }
    }
    return databases;
}

// The item of one browser, or none: "Path" is its history database (on a layout that offers existing databases
// only, the first profile's that exists), and "AllPaths" that database followed by every other profile's.
RecordPtr adultHistoryItem(const DiskRoot& disk, const Browser& browser) {
    AnchorFolders anchors = anchorsOf(disk, browser);
    UrlList all = profileDatabases(disk, browser, anchors);
    std::optional<FileUrl> first;
    if (disk.layout().adultHistoryOfExistingDatabases) {
        if (all.empty()) {
            return nullptr;
        }
        first = all.front();
    } else if (browser.historyDatabase.anchor != Anchor::Profile) {
        first = locationOf(browser.historyDatabase, anchors);
    } else if (!all.empty()) {
        first = all.front();
    } else {
        return nullptr;
    }
    std::erase(all, *first);
    all.insert(all.begin(), *first);
    return makeRecord({{keys::kItemName, std::string(browser.adultHistoryName)},
                       {keys::kTick, true},
                       {keys::kEnabled, true},
                       {keys::kHistoryDatabase, std::move(*first)},
                       {keys::kAllHistoryDatabases, std::move(all)}},
                      {RecordKind::HistoryItem, &browser});
}

} // namespace

RecordPtr adultHistorySection(const DiskRoot& disk) {
    RecordList items;
    for (const Browser* browser : disk.layout().adultHistory) {
        if (!isInstalled(disk, *browser)) {
            continue;
        }
        if (RecordPtr item = adultHistoryItem(disk, *browser)) {
            items.push_back(std::move(item));
        }
    }
    return makeRecord({{keys::kName, std::string("Adult History")},
                       {keys::kImage, std::string("adult")},
                       {keys::kItems, std::move(items)},
                       {keys::kTick, true},
                       {keys::kEnabled, true}},
                      {RecordKind::AdultHistorySection, nullptr, "adult", "All Adult Browser history"});
}

BuilderOutcome buildAdultHistorySection(ScanEnv& env) {
    return BuilderOutcome{adultHistorySection(env.disk), 0, true};
}

} // namespace tidewell
