#pragma once

#include "catalogue/records.hpp"
#include "layout/browsers.hpp"
#include "layout/disk_root.hpp"
#include "layout/profiles.hpp"
#include "platform/running_apps.hpp"

namespace tidewell {

/// A running browser as the browser panel lists it: "NameBrowser" (the browser's name) and "iconBrowser", the
/// path of its application on the disk, whose icon the panel shows; a BrowserEntry of its browser, with the
/// browser's icon. Two entries are equal when both texts are.
[[nodiscard]] RecordPtr browserPanelEntry(const Browser& browser, const DiskRoot& disk);

/// The sections the check is given: those whose "isChecked" is not false (the promotion row included), in order.
[[nodiscard]] RecordList tickedSections(const RecordList& catalogue);

/// The browsers that hold the Clean back, as panel entries: those that run now and whose data is among the
/// sections. For each section in order: a browser's section adds its browser's entry when the browser runs (no
/// check for one already listed); the Adult History section adds, for each of its items in order whether ticked
/// or not, the entry of the item's browser when that one runs, logging "Not added" instead when an equal entry is
/// listed already. The Browser Extensions section adds, once each and in the layout's order, every running browser
/// whose data folders hold a location of one of its ticked rows (an extension, the preference reset): a running
/// browser rewrites those files as it quits. The running programs are looked at once.
[[nodiscard]] RecordList browsersInTheWay(const RecordList& sections, const DiskRoot& disk,
                                          const RunningApplications& running);

/// The same look for the panel's Retry, which does not look into the Adult History section: a browser listed
/// only for an adult-history item is not listed again, and no longer holds the clean back.
[[nodiscard]] RecordList browsersStillInTheWay(const RecordList& sections, const DiskRoot& disk,
                                               const RunningApplications& running);

/// The browsers of the layout with a history to purge that run now, in its order.
[[nodiscard]] std::vector<const Browser*> runningBrowsers(const DiskLayout& layout, const RunningApplications& running);

} // namespace tidewell
