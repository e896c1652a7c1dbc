#pragma once

#include <QByteArray>

#include "catalogue/record_views.hpp"

namespace tidewell {

// The person's ticks, kept by section and item name so that they outlive the records: a Refresh, a clean and a
// restart each make new records with the builders' default ticks, and the remembered ticks are laid over them.
// The text is JSON: {"<section>": {"tick": 1, "items": {"<item>": [1, 0]}}}, one tick per item of that name in
// order (a section may list a name more than once).

/// The remembered ticks of remembered, updated with the ticks of sections as they are now. Sections not among them
/// (not scanned yet, or not on the disk this time) keep what was remembered for them.
[[nodiscard]] QByteArray rememberedSelection(const std::vector<Section>& sections, const QByteArray& remembered);

/// Lays the remembered ticks over a freshly scanned section. Items that were not remembered (new since) keep their
/// default tick; the section's own tick is the remembered one when every item was remembered, and otherwise follows
/// its items as the details panel's Done makes it. Returns whether anything was remembered for the section.
bool restoreSelection(const Section& section, const QByteArray& remembered);

} // namespace tidewell
