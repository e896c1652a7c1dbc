#include "sources/adult_history_section.hpp"

#include "catalogue/record_keys.hpp"
#include "layout/locations.hpp"

namespace tidewell {

RecordPtr adultHistorySection(const DiskRoot& disk) {
    RecordList items;
    for (const Browser* browser : disk.layout().adultHistory) {
        if (!isInstalled(disk, *browser)) {
            continue;
        }
        AnchorFolders anchors = anchorsOf(disk, *browser);
        std::optional<std::vector<BrowserProfile>> profiles;
        if (browser->historyDatabase.anchor == Anchor::Profile) {
            profiles = profilesOf(disk, *browser);
            if (!profiles || profiles->empty()) {
                continue;
            }
            anchors.profile = &profiles->front();
        }
        items.push_back(makeRecord({{keys::kItemName, std::string(browser->adultHistoryName)},
                                    {keys::kTick, true},
                                    {keys::kEnabled, true},
                                    {keys::kHistoryDatabase, locationOf(browser->historyDatabase, anchors)}},
                                   {RecordKind::HistoryItem, browser}));
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
