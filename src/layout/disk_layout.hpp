#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "layout/browsers.hpp"
#include "layout/tables.hpp"

namespace tidewell {

/// One section of the scan, in a layout's order: a source built from its table, or one of the sections built
/// from the browser table.
struct SectionSlot {
    enum class Kind { Source, AdultHistory, BrowserExtensions, Promotion };
    Kind kind;
    const SourceTable* source = nullptr;
};

/// What `inventory KIND` lists: the entries of each folder in turn, or with applicationSearch every application
/// bundle below each.
struct InventoryListing {
    std::string_view kind;
    std::vector<Location> folders;
    bool applicationSearch = false;
};

/// How a disk is laid out: where a user's home is, which browsers and sources it has and where they keep their
/// traces, and what the inventories list. Adding a browser or a source to a layout is a matter of these tables.
struct DiskLayout {
    /// Its name for --layout ("macos").
    std::string_view name;
    /// The folder of the homes, below the root: a login name's home is <root><homes>/<login name>.
    std::string_view homes;
    /// The browsers, in the order the Browser Extensions section and the running-browser panel list them.
    std::vector<const Browser*> browsers;
    /// The browsers of the Adult History section, in its order.
    std::vector<const Browser*> adultHistory;
    /// The scan's sections, in order.
    std::vector<SectionSlot> sections;
    std::vector<InventoryListing> inventories;
};

/// The layout of a macOS disk: homes under /Users, applications under /Applications.
[[nodiscard]] const DiskLayout& macosLayout();

/// The browser of a layout with this key ("chrome"), or null.
[[nodiscard]] const Browser* findBrowser(const DiskLayout& layout, std::string_view key);

/// Every process name of the layout's browsers.
[[nodiscard]] std::set<std::string> browserProcessNames(const DiskLayout& layout);

} // namespace tidewell
