#include "sources/source_section.hpp"

#include <algorithm>

#include "base/folders.hpp"
#include "layout/profiles.hpp"

#include "base/byte_count.hpp"
#include "catalogue/items.hpp"
#include "catalogue/record_keys.hpp"
#include "layout/locations.hpp"

namespace tidewell {

namespace {

bool isProfileLocation(const Location& location) {
    return location.anchor == Anchor::Profile || location.anchor == Anchor::ProfileCache;
}

RecordPtr tableItem(const ItemRow& row, std::string name, UrlList locations) {
    RecordPtr item = row.handMade ? makeRecord({{keys::kLocations, std::move(locations)},
                                                {keys::kItemName, std::move(name)},
                                                {keys::kTick, row.ticked},
                                                {keys::kSizeText, std::string("10KB")}},
                                               {RecordKind::LocationsItem})
                                  : makeItem(std::move(locations), std::move(name), false, row.ticked);
    RecordRole role = item->role();
    role.tickWarning = row.tickWarning;
    item->setRole(role);
    return item;
}

UrlList expanded(const ItemRow& row, const AnchorFolders& anchors) {
    UrlList locations;
    locations.reserve(row.locations.size());
    for (const Location& location : row.locations) {
        appendExpanded(locations, location, anchors);
    }
    return locations;
}

// A gathered row takes its profile locations for every profile, then its other locations once.
UrlList gathered(const ItemRow& row, AnchorFolders anchors, const std::vector<BrowserProfile>& profiles) {
    UrlList locations;
    for (const BrowserProfile& profile : profiles) {
        anchors.profile = &profile;
        for (const Location& location : row.locations) {
            if (isProfileLocation(location)) {
                appendExpanded(locations, location, anchors);
            }
        }
    }
    anchors.profile = nullptr;
    for (const Location& location : row.locations) {
        if (!isProfileLocation(location)) {
            appendExpanded(locations, location, anchors);
        }
    }
    return locations;
}

} // namespace

namespace {

bool isPresent(const DiskRoot& disk, const SourceTable& table) {
    if (table.alwaysShown) {
        return true;
    }
    if (table.browser != nullptr) {
        return isInstalled(disk, *table.browser);
    }
    if (table.application.empty()) {
        return std::ranges::any_of(table.presence,
                                   [&](std::string_view path) { return fileExistsAt(disk.inHome(path).path); });
    }
    return disk.exists(table.application);
}

// The section's "Img": its application, or for a source without one the first of its folders that is there (the
// home when none is).
std::string sectionImage(const DiskRoot& disk, const SourceTable& table) {
    if (table.browser != nullptr) {
        return applicationImage(disk, *table.browser);
    }
    if (!table.application.empty()) {
        return disk.resolve(table.application);
    }
    for (const std::string_view path : table.presence) {
        if (fileExistsAt(disk.inHome(path).path)) {
            return disk.inHome(path).path;
        }
    }
    return disk.homePath();
}

std::string itemName(const SourceTable& table, const ItemRow& row, const BrowserProfile& profile,
                     std::size_t profileCount) {
    if (table.profileInNames && profileCount > 1) {
        return std::string(row.name) + " (" + profile.name + ")";
    }
    return fillName(row.name, profile.name);
}

} // namespace

BuilderOutcome sourceSection(ScanEnv& env, const SourceTable& table) {
    const Browser* browser = table.browser;
    if (!isPresent(env.disk, table)) {
        return {};
    }
    AnchorFolders anchors = anchorsOf(env.disk, table);
    RecordList items;
    std::vector<BrowserProfile> profiles;
    if (browser != nullptr) {
        std::optional<std::vector<BrowserProfile>> found = profilesOf(env.disk, *browser);
        if (!found) {
            return BuilderOutcome{nullptr, 0, false};
        }
        profiles = std::move(*found);
        for (const BrowserProfile& profile : profiles) {
            anchors.profile = &profile;
            for (const ItemRow& row : table.items) {
                items.push_back(tableItem(row, itemName(table, row, profile, profiles.size()), expanded(row, anchors)));
            }
        }
        anchors.profile = nullptr;
    } else {
        for (const ItemRow& row : table.items) {
            items.push_back(tableItem(row, std::string(row.name), expanded(row, anchors)));
        }
    }
    for (const ItemRow& row : table.gathered) {
        items.push_back(tableItem(row, std::string(row.name), gathered(row, anchors, profiles)));
    }
    const RecordRole role{RecordKind::SourceSection, browser, browser != nullptr ? browser->icon : table.icon,
                          browser != nullptr ? browser->summary : std::string_view()};
    return measuredSection(env, std::string(browser != nullptr ? browser->name : table.name), std::move(items),
                           sectionImage(env.disk, table), role);
}

BuilderOutcome measuredSection(ScanEnv& env, std::string name, RecordList items, std::string image, RecordRole role) {
    const MeasuredItems measured = measureItems(items, env.sizes, env.disk.homePath());
    const std::int64_t bytes =
        env.disk.layout().countNestedOnce ? bytesCountedOnce(measured.locations) : measured.bytes;
    const SizeText size = sizeTextFor(bytes);
    auto section = makeRecord({{keys::kName, std::move(name)},
                               {keys::kItems, std::move(items)},
                               {keys::kSize, size.text},
                               {keys::kImage, std::move(image)},
                               {keys::kTick, true},
                               {keys::kEnabled, size.enabled},
                               {keys::kGrouped, false}},
                              role);
    return {std::move(section), bytes, true, measured.locations};
}

std::string fillName(std::string_view nameTemplate, std::string_view value) {
    std::string out(nameTemplate);
    if (const auto at = out.find("%@"); at != std::string::npos) {
        out.replace(at, 2, value);
    }
    return out;
}

} // namespace tidewell
