#include "sources/extensions_section.hpp"

#include <fmt/format.h>

#include "base/folders.hpp"
#include "catalogue/items.hpp"
#include "inventory/privacy_scan.hpp"
#include "layout/browser_profiles.hpp"
#include "layout/tables.hpp"

namespace tidewell {

namespace {

// The rows of one browser go under its caption, and only when there are any: a browser without extensions shows
// no empty group.
class GroupedRows {
public:
    void add(RecordPtr row) { m_group.push_back(std::move(row)); }

    void closeGroup(std::string caption) {
        if (m_group.empty()) {
            return;
        }
        m_rows.push_back(getDicForList({}, std::move(caption), true));
        m_rows.insert(m_rows.end(), std::make_move_iterator(m_group.begin()), std::make_move_iterator(m_group.end()));
        m_group.clear();
    }

    RecordList take() { return std::move(m_rows); }

private:
    RecordList m_rows;
    RecordList m_group;
};

void addSafariRows(ScanEnv& env, GroupedRows& rows, UrlList& resetList) {
    resetList.push_back(env.disk.inHome(tables::kSafariFolder).appending("Configurations.plist.signed"));
    for (const FileUrl& entry : PrivacyScan::getSafariExtantionList(env.disk)) {
        const std::string name = entry.lastPathComponent();
        // Safari's own bookkeeping in the extensions folder is not an extension.
        if (name == "Extensions.plist" || name == ".DS_Store") {
            continue;
        }
        rows.add(getDicForList({entry}, std::string(nameWithoutExtension(name)), true));
    }
    rows.closeGroup("Safari Extensions");
}

void addChromeRows(ScanEnv& env, GroupedRows& rows, UrlList& resetList) {
    if (const std::optional<RecordList> records = PrivacyScan::getChromeExtantionList(env.disk, env.sizes)) {
        for (const RecordPtr& record : *records) {
            const FileUrl* location = record->url("urlExt");
            // An extension removed since it was listed is not offered. Each version folder gives a row of its
            // own, and each such row removes the whole identifier folder, and nothing outside its profile's
            // "Extensions" folder (`within`).
            if (location == nullptr || !fileExistsAt(location->path)) {
                continue;
            }
            rows.add(getDicForList(
                {*location},
                fmt::format("{} v{} ({})", record->text("nameExt"), record->text("verExt"), record->text("PersonExt")),
                true));
        }
    }
    rows.closeGroup("Google Chrome Extensions");
    // "Local State" is read a second time for the preference files: every profile it names, in its order.
    if (const std::optional<std::vector<ChromeProfile>> profiles = readChromeProfiles(env.disk)) {
        const FileUrl chromeFolder = env.disk.inHome(tables::kChromeFolder);
        for (const ChromeProfile& profile : *profiles) {
            resetList.push_back(chromeFolder.appending(profile.folder).appending("Preferences"));
        }
    }
}

void addFirefoxRows(ScanEnv& env, GroupedRows& rows, UrlList& resetList) {
    for (auto& [record, location] : PrivacyScan::getFirefoxExtensions(env.disk, env.sizes)) {
        // The location is whatever "extensions.json" says; only one that names something on disk is offered. It
        // is listed wherever it lies, but its removal keeps to its profile's extensions folder (`within`): one
        // recorded elsewhere is left as it was, and reported.
        if (!fileExistsAt(location.path)) {
            continue;
        }
        rows.add(getDicForList({std::move(location)},
                               fmt::format("{} v{}", record->text("nameExt"), record->text("verExt")), true));
    }
    rows.closeGroup("Firefox Extensions");
    // Only the profile the Firefox section cleans has its preferences reset.
    if (const std::optional<std::string> profile = chooseFirefoxProfile(env.disk)) {
        const FileUrl profileFolder = env.disk.inHome(tables::kFirefoxProfiles).appending(*profile);
        for (const std::string_view file : {"user.js", "xulstore.json", "prefs.js"}) {
            resetList.push_back(profileFolder.appending(file));
        }
    }
}

} // namespace

BuilderOutcome addBrowserExtensionsDetails(ScanEnv& env) {
    GroupedRows rows;
    UrlList resetList;
    if (env.disk.exists(tables::kSafariApp)) {
        addSafariRows(env, rows, resetList);
    }
    if (env.disk.exists(tables::kChromeApp)) {
        addChromeRows(env, rows, resetList);
    }
    if (env.disk.exists(tables::kFirefoxApp)) {
        addFirefoxRows(env, rows, resetList);
    }
    RecordList list = rows.take();
    // The reset row is always there, even with no browser and nothing to reset, and always last. It is made by
    // hand: it has locations, yet it must read as a caption ("isHeader" false) in the grouped details panel.
    list.push_back(makeRecord({{"AllList", std::move(resetList)},
                               {"NameText", std::string("Reset Browsers Preferences to Defaults")},
                               {"isChecked", true},
                               {"sizeText", std::string("0KB")},
                               {"isExt", true},
                               {"isHeader", false}}));
    // Nothing in this section is measured, and no size is shown for any row, the reset row included.
    for (const RecordPtr& row : list) {
        row->set("isEnabled", true);
        row->set("sizeText", std::string());
    }
    auto section = makeRecord({{"Name", std::string("Browser Extensions")},
                               {"List", std::move(list)},
                               {"Size", std::string()},
                               {"Img", std::string("Browser_ext")},
                               {"isChecked", true},
                               {"isEnabled", true},
                               {"isFromThornsweep", true}});
    return {std::move(section), 0, true};
}

} // namespace tidewell
