#pragma once

#include <string>
#include <vector>

#include "catalogue/scan_driver.hpp"
#include "catalogue/size_walker.hpp"

namespace tidewell::testing {

/// Runs one builder on the calling thread, as the scan thread would.
inline BuilderOutcome runBuilder(const SectionBuilder& builder, const DiskRoot& disk) {
    SizeCounter sizes(0);
    ScanEnv env{disk, sizes};
    return builder(env);
}

/// The "NameText" of every item of a section, in order.
inline std::vector<std::string> itemNames(const Record& section) {
    std::vector<std::string> names;
    if (const RecordList* items = section.list("List")) {
        for (const RecordPtr& item : *items) {
            names.push_back(item->text("NameText"));
        }
    }
    return names;
}

/// The paths of an item's "AllList", in order.
inline std::vector<std::string> locationPaths(const Record& item) {
    std::vector<std::string> paths;
    if (const UrlList* urls = item.urls("AllList")) {
        for (const FileUrl& url : *urls) {
            paths.push_back(url.path);
        }
    }
    return paths;
}

/// The item of a section at index.
inline Record& itemAt(const Record& section, std::size_t index) {
    return *section.list("List")->at(index);
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
