#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "catalogue/record_views.hpp"
#include "catalogue/scan_driver.hpp"
#include "catalogue/size_walker.hpp"
#include "sources/builders.hpp"

namespace tidewell::testing {

/// Runs one builder on the calling thread, as the scan thread would.
inline BuilderOutcome runBuilder(const SectionBuilder& builder, const DiskRoot& disk) {
    SizeCounter sizes(0);
    ScanEnv env{disk, sizes};
    return builder(env);
}

/// The builder of the macOS layout's section of this name ("Chrome", "System", "Adult History", "Browser Extensions",
/// "Promotion").
inline SectionBuilder builderNamed(std::string_view name) {
    const DiskLayout& layout = macosLayout();
    const std::vector<SectionBuilder> builders = sectionBuilders(layout);
    for (std::size_t i = 0; i < layout.sections.size(); ++i) {
        const SectionSlot& slot = layout.sections[i];
        const std::string_view slotName = slot.kind == SectionSlot::Kind::AdultHistory        ? "Adult History"
                                          : slot.kind == SectionSlot::Kind::BrowserExtensions ? "Browser Extensions"
                                          : slot.kind == SectionSlot::Kind::Promotion         ? "Promotion"
                                          : slot.source->browser != nullptr ? slot.source->browser->name
                                                                            : slot.source->name;
        if (slotName == name) {
            return builders.at(i);
        }
    }
    throw std::invalid_argument("no section " + std::string(name));
}

/// The section a builder of the macOS layout makes on a disk (null when it makes none).
inline RecordPtr sectionOn(const DiskRoot& disk, std::string_view name) {
    return runBuilder(builderNamed(name), disk).section;
}

/// The "NameText" of every item of a section, in order.
inline std::vector<std::string> itemNames(const RecordPtr& section) {
    std::vector<std::string> names;
    for (const Item& item : Section(section).items()) {
        names.push_back(item.name());
    }
    return names;
}

/// The paths of an item's "AllList", in order.
inline std::vector<std::string> locationPaths(const Item& item) {
    std::vector<std::string> paths;
    if (const UrlList* urls = item.locations()) {
        for (const FileUrl& url : *urls) {
            paths.push_back(url.path);
        }
    }
    return paths;
}

/// The item of a section at index.
inline Item itemAt(const RecordPtr& section, std::size_t index) {
    return Section(section).items().at(index);
}

/// The keys of a record, in order.
inline std::vector<std::string> keysOf(const Record& record) {
    std::vector<std::string> keys;
    for (const auto& entry : record.entries()) {
        keys.push_back(entry.first);
    }
    return keys;
}

} // namespace tidewell::testing
