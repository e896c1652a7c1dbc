#include "sources/extensions_section.hpp"

#include <fmt/format.h>

#include "base/folders.hpp"
#include "catalogue/items.hpp"
#include "catalogue/record_keys.hpp"
#include "inventory/inventories.hpp"
#include "layout/locations.hpp"

namespace tidewell {

namespace {

// Everything in this section starts unticked, captions and the reset row included: a person's extensions and
// browser settings are kept on purpose, and a clean with the defaults must never remove them.
//
// The rows of one browser go under its caption, and only when there are any: a browser without extensions shows
// no empty group.
class GroupedRows {
public:
    void add(RecordPtr row) { m_group.push_back(std::move(row)); }

    void closeGroup(std::string_view caption) {
        if (m_group.empty()) {
            return;
        }
        m_rows.push_back(makeItem({}, std::string(caption), true, false));
        m_rows.insert(m_rows.end(), std::make_move_iterator(m_group.begin()), std::make_move_iterator(m_group.end()));
        m_group.clear();
    }

    RecordList take() { return std::move(m_rows); }

private:
    RecordList m_rows;
    RecordList m_group;
};

void addSafariRows(ScanEnv& env, const Browser& browser, GroupedRows& rows) {
    for (const FileUrl& entry : safariExtensions(env.disk, browser)) {
        const std::string name = entry.lastPathComponent();
        // Safari's own bookkeeping in the extensions folder is not an extension.
        if (name == "Extensions.plist" || name == ".DS_Store") {
            continue;
        }
        rows.add(makeItem({entry}, std::string(nameWithoutExtension(name)), true, false));
    }
}

void addChromeRows(ScanEnv& env, const Browser& browser, GroupedRows& rows) {
    const std::optional<RecordList> records = chromeExtensions(env.disk, browser, env.sizes);
    if (!records) {
        return;
    }
    for (const RecordPtr& record : *records) {
        const FileUrl* location = record->url(keys::kExtensionLocation);
        // An extension removed since it was listed is not offered. Each version folder gives a row of its own, and
        // each such row removes the whole identifier folder, and nothing outside its profile's "Extensions" folder
        // (`within`).
        if (location == nullptr || !fileExistsAt(location->path)) {
            continue;
        }
        rows.add(makeItem({*location},
                          fmt::format("{} v{} ({})", record->text(keys::kExtensionName),
                                      record->text(keys::kExtensionVersion), record->text(keys::kExtensionProfile)),
                          true, false));
    }
}

void addFirefoxRows(ScanEnv& env, const Browser& browser, GroupedRows& rows) {
    for (FirefoxExtension& extension : firefoxExtensions(env.disk, browser, env.sizes)) {
        // The location is whatever "extensions.json" says; only one that names something on disk is offered. It is
        // listed wherever it lies, but its removal keeps to its profile's extensions folder (`within`): one recorded
        // elsewhere is left as it was, and reported.
        if (!fileExistsAt(extension.location.path)) {
            continue;
        }
        rows.add(makeItem({std::move(extension.location)},
                          fmt::format("{} v{}", extension.record->text(keys::kExtensionName),
                                      extension.record->text(keys::kExtensionVersion)),
                          true, false));
    }
}

// The preference files of every profile of the browser, for the reset row.
void addPreferenceFiles(const DiskRoot& disk, const Browser& browser, UrlList& resetList) {
    const std::optional<std::vector<BrowserProfile>> profiles = profilesOf(disk, browser);
    if (!profiles) {
        return;
    }
    AnchorFolders anchors = anchorsOf(disk, browser);
    for (const BrowserProfile& profile : *profiles) {
        anchors.profile = &profile;
        for (const Location& file : browser.preferenceFiles) {
            resetList.push_back(locationOf(file, anchors));
        }
    }
}

} // namespace

BuilderOutcome buildBrowserExtensionsSection(ScanEnv& env) {
    GroupedRows rows;
    UrlList resetList;
    for (const Browser* browser : env.disk.layout().browsers) {
        if (!isInstalled(env.disk, *browser)) {
            continue;
        }
        switch (browser->family) {
        case BrowserFamily::Safari:
            addSafariRows(env, *browser, rows);
            break;
        case BrowserFamily::Chrome:
            addChromeRows(env, *browser, rows);
            break;
        case BrowserFamily::Firefox:
            addFirefoxRows(env, *browser, rows);
            break;
        case BrowserFamily::Mail:
            break;
        }
        rows.closeGroup(browser->extensionsCaption);
        addPreferenceFiles(env.disk, *browser, resetList);
    }
    RecordList list = rows.take();
    // The reset row is always there, even with no browser and nothing to reset, and always last. It is made by
    // hand: it has locations, yet it must read as a caption ("isHeader" false) in the grouped details panel.
    list.push_back(makeRecord({{keys::kLocations, std::move(resetList)},
                               {keys::kItemName, std::string("Reset Browsers Preferences to Defaults")},
                               {keys::kTick, false},
                               {keys::kSizeText, std::string("0KB")},
                               {keys::kExtensionRow, true},
                               {keys::kNotCaption, false}},
                              {RecordKind::LocationsItem}));
    // Nothing in this section is measured, and no size is shown for any row, the reset row included.
    for (const RecordPtr& row : list) {
        row->set(keys::kEnabled, true);
        row->set(keys::kSizeText, std::string());
        // Every row here takes away something the person set up: the extension, or a browser's extensions under
        // a caption, or (the last row) the browsers' own settings.
        RecordRole role = row->role();
        role.tickWarning = row == list.back()                 ? "the browsers' settings"
                           : row->flag(keys::kNotCaption) ? "the extension"
                                                              : "the browser's extensions";
        row->setRole(role);
    }
    auto section =
        makeRecord({{keys::kName, std::string("Browser Extensions")},
                    {keys::kItems, std::move(list)},
                    {keys::kSize, std::string()},
                    {keys::kImage, std::string("Browser_ext")},
                    {keys::kTick, false},
                    {keys::kEnabled, true},
                    {keys::kGrouped, true}},
                   {RecordKind::ExtensionsSection, nullptr, "Browser_ext", "Browser extensions, Preferences"});
    return {std::move(section), 0, true};
}

} // namespace tidewell
