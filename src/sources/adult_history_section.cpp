#include "sources/adult_history_section.hpp"

#include <array>
#include <string_view>

#include "layout/browser_profiles.hpp"
#include "layout/tables.hpp"

namespace tidewell {

namespace {

RecordPtr adultItem(std::string name, FileUrl database) {
    return makeRecord({{"NameText", std::move(name)}, {"isChecked", true}, {"isEnabled", true}, {"Path", database}});
}

} // namespace

RecordPtr makeAdultHistorySection(const DiskRoot& disk) {
    RecordList items;
    if (disk.exists(tables::kChromeApp)) {
        items.push_back(
            adultItem("Google Chrome Adult History", disk.inHome(tables::kChromeFolder).appending("Default/History")));
    }
    if (disk.exists(tables::kSafari.app)) {
        items.push_back(adultItem("Safari Adult History", disk.inHome(tables::kSafariFolder).appending("History.db")));
    }
    if (disk.exists(tables::kFirefoxApp)) {
        if (const std::optional<std::string> profile = chooseFirefoxProfile(disk)) {
            items.push_back(
                adultItem("Firefox Adult History",
                          disk.inHome(tables::kFirefoxProfiles).appending(*profile).appending("places.sqlite")));
        }
    }
    return makeRecord({{"Name", std::string("Adult History")},
                       {"Img", std::string("adult")},
                       {"List", std::move(items)},
                       {"isChecked", true},
                       {"isEnabled", true}});
}

BuilderOutcome addAdultContent(ScanEnv& env) {
    return BuilderOutcome{makeAdultHistorySection(env.disk), 0, true};
}

} // namespace tidewell
