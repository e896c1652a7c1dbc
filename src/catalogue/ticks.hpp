#pragma once

#include <string_view>

#include "catalogue/record_views.hpp"
#include "catalogue/scan_driver.hpp"

namespace tidewell {

// What ticking does to the records. The window's tick boxes call exactly these, and so do the command line's
// --tick and --untick.

/// A section's tick box in the item table, on row `row` of the catalogue, with the state the box now shows. A
/// mixed box becomes on. The section's items all take the section's tick (as booleans), on every row. The
/// section's own "isChecked" becomes true or false. Returns the
/// state the box ends in. A row outside the catalogue changes nothing.
Tick tickSection(const Catalogue& catalogue, std::size_t row, Tick state);

/// An item's tick box in the details panel, for the row named `name` in the section the panel shows. The first
/// row with that name is the one changed, whichever of several equal names was clicked. A mixed box becomes on
/// and the row stores 1 or 0. In a grouped section a caption passes its tick to its group, and an item recomputes
/// its caption's tri-state; the last row of a grouped section changes only itself. `state` is updated to what the
/// box shows afterwards. Returns whether the panel's table is reloaded (false only for the last row of a grouped
/// section, or when no row has that name).
bool tickItemNamed(const Section& section, std::string_view name, Tick& state);

/// The details panel's Done: the section's "isChecked" becomes 1 when every row is ticked (1), -1 when some are,
/// 0 when none is. A caption at -1 does not count as ticked.
void settleSectionTick(const Section& section);

/// Whether the Clean button is enabled: some section's "isChecked" is not false. A section without the key (the
/// promotion row) counts.
[[nodiscard]] bool anythingToClean(const Catalogue& catalogue);

} // namespace tidewell
