#include "layout/disk_layout.hpp"

namespace tidewell {

const DiskLayout* layoutNamed(std::string_view name) {
    for (const DiskLayout* layout : {&macosLayout(), &linuxLayout()}) {
        if (layout->name == name) {
            return layout;
        }
    }
    return nullptr;
}

const Browser* findBrowser(const DiskLayout& layout, std::string_view key) {
    for (const Browser* browser : layout.browsers) {
        if (browser->key == key) {
            return browser;
        }
    }
    return nullptr;
}

std::set<std::string> browserProcessNames(const DiskLayout& layout) {
    std::set<std::string> names;
    for (const Browser* browser : layout.browsers) {
        names.insert(browser->processNames.begin(), browser->processNames.end());
    }
    return names;
}

} // namespace tidewell
