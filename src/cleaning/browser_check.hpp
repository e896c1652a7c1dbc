#pragma once

#include <array>
#include <functional>
#include <string_view>

#include "layout/disk_root.hpp"
#include "catalogue/records.hpp"
#include "platform/running_apps.hpp"

namespace tidewell {

/// One row of the browser table: how a section's "Name", an adult-history item's "NameText", the running
/// application's name, the panel entry's "NameBrowser" and the application bundle relate.
struct BrowserRow {
    std::string_view sectionName;
    std::string_view adultItemName;
    std::string_view applicationName;
    std::string_view entryName;
    std::string_view bundle;
};

/// Chrome, Safari and Firefox.
[[nodiscard]] const std::array<BrowserRow, 3>& browserTable();

/// A browser entry of the panel: "NameBrowser" ("Chrome", "Safari" or "Firefox") and "iconBrowser", the path of
/// the browser's application bundle on the disk (whose icon the panel shows). Two entries are equal when both
/// texts are.
[[nodiscard]] RecordPtr makeBrowserEntry(const BrowserRow& browser, const DiskRoot& disk);

/// What the check asks of the window (or of the command-line tool).
struct BrowserPanel {
    /// The confirmation "Are you sure you want to erase selected privacy data?": true only for "Yes".
    std::function<bool()> confirm;
    /// `displayPanel:`: shows the running browsers.
    std::function<void(const RecordList& entries)> displayPanel;
    /// `reloadPanel:`: replaces the rows of the panel already shown.
    std::function<void(const RecordList& entries)> reloadPanel;
};

/// The sections the check is given: those whose "isChecked" is not false (the promotion row included), in order.
[[nodiscard]] RecordList tickedSections(const RecordList& catalogue);

/// `forceQuitBrowsers:` before the Clean action: asks for confirmation (false at "No"), then lists the browsers
/// that run and whose data is to go. For each section in order: "Chrome", "Safari" or "Firefox" adds its entry
/// when its application runs (no check for one already listed); "Adult History" adds, for each of its items in
/// order whether ticked or not, the entry of the browser its "NameText" names when that one runs, logging "Not
/// added" instead when an equal entry is listed already. sections null: Safari, Chrome and Firefox are looked at,
/// in that order. With entries listed, calls `displayPanel` with them and returns false; otherwise returns true.
bool forceQuitBrowsers(const RecordList* sections, const DiskRoot& disk, const RunningApplications& running,
                       const BrowserPanel& panel);

/// `tryAgain:` for the panel's Retry: the same check without the confirmation and without looking into
/// "Adult History", so a browser listed only for an adult-history item is not listed again and no longer holds
/// the cleaning back. With entries listed, calls `reloadPanel` with them. Returns whether none is listed.
bool tryAgain(const RecordList* sections, const DiskRoot& disk, const RunningApplications& running,
              const BrowserPanel& panel);

} // namespace tidewell
