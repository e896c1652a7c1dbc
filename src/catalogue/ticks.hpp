#pragma once

#include <string_view>

#include "catalogue/records.hpp"
#include "catalogue/scan_driver.hpp"

namespace tidewell {

// What ticking does to the records. The window's check boxes call exactly these, and so does the command line's
// --tick and --untick.

/// The item table's check box (`checkBoxAction:`) on row `row` of the catalogue, with the state the box now
/// shows. A mixed box becomes on. The section's items all take the section's tick (as booleans), except on the
/// fourth row (index 3), which never passes its tick down. The section's own "isChecked" becomes true or false.
/// Returns the state the box ends in. A row outside the catalogue changes nothing.
Tick checkBoxAction(const Catalogue& catalogue, std::size_t row, Tick state);

/// The details panel's check box (`selectionCheckBoxAction:`) for the row whose name is `toolTip`, in the section
/// the panel shows. The first row with that name is the one changed, whichever of several equal names was
/// clicked. A mixed box becomes on and the row stores 1 or 0. In a grouped section ("isFromThornsweep" true) a
/// caption passes its tick to its group, and an item recomputes its caption's tri-state; the last row of a
/// grouped section changes only itself. `state` is updated to what the box shows afterwards. Returns whether the
/// panel's table is reloaded (false only for the last row of a grouped section, or when no row has that name).
bool selectionCheckBoxAction(Record& section, std::string_view toolTip, Tick& state);

/// The panel's Done button (`doneActionFromselectionView:`): the section's "isChecked" becomes 1 when every row
/// is ticked (1), -1 when some are, 0 when none is. A caption at -1 does not count as ticked.
void doneActionFromselectionView(Record& section);

/// The remove button's rule (`reloadTableAndUI`): enabled when some section's "isChecked" is not false. A section
/// without the key (the promotion row) counts.
[[nodiscard]] bool removeButtonEnabled(const Catalogue& catalogue);

} // namespace tidewell
