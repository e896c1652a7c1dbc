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
/// bundle below each. With name endings, only the entries whose name ends with one of them.
struct InventoryListing {
    std::string_view kind;
    std::vector<Location> folders;
    bool applicationSearch = false;
    std::vector<std::string_view> nameEndings = {};
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
    /// Adult History offers a browser only when one of its profiles' history databases exists, and lists those
    /// alone; otherwise it lists every profile's database whether it exists or not.
    bool adultHistoryOfExistingDatabases = false;
    /// A location inside another measured one (the browser caches inside ~/.cache) counts once in a section's size
    /// and in the scan's total; otherwise every item's size adds up, repeats included.
    bool countNestedOnce = false;
};

/// The layout of a macOS disk: homes under /Users, applications under /Applications.
[[nodiscard]] const DiskLayout& macosLayout();

/// The layout of a Linux desktop disk: homes under /home, traces in the XDG folders of the home.
[[nodiscard]] const DiskLayout& linuxLayout();

/// The layout named so ("macos", "linux"), or null.
[[nodiscard]] const DiskLayout* layoutNamed(std::string_view name);

/// The browser of a layout with this key ("chrome"), or null.
[[nodiscard]] const Browser* findBrowser(const DiskLayout& layout, std::string_view key);

/// Every process name of the layout's browsers.
[[nodiscard]] std::set<std::string> browserProcessNames(const DiskLayout& layout);

} // namespace tidewell
