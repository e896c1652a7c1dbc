#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "catalogue/records.hpp"
#include "cleaning/adult_words.hpp"
#include "cleaning/clean_outcome.hpp"
#include "cleaning/history_purge.hpp"
#include "cleaning/safe_remove.hpp"
#include "layout/disk_root.hpp"
#include "platform/folder_grant.hpp"

namespace tidewell {

/// The boundary of the window face: the folder a started grant names, held only while it is still the very folder
/// granted, with the home as the catalogue writes it reached through its real place inside that folder.
[[nodiscard]] DeletionBoundary boundaryOfGrant(const FolderGrant& grant, const DiskRoot& disk);

/// One step of a clean: the locations of an item to remove, or a history database to purge with its browser's
/// schema.
struct CleanStep {
    UrlList locations;
    const HistorySchema* history = nullptr;
    FileUrl database = {};
    std::string item = {}; // the item's "NameText", for the preview
};

/// What a clean will do, read from the catalogue's records on the thread that owns them, so that the clean itself
/// may run on another thread while the records change. The sections' own ticks are not consulted: every section's
/// "List" is taken, in catalogue order (a record without one, the promotion row, gives nothing), and each item whose
/// "isChecked" is exactly true is a step, in order:
/// - an item with an "AllList" (even an empty one) removes its locations;
/// - otherwise an Adult History item purges its "Path" with its browser's history schema; an item of no browser,
///   or without a "Path", is passed over.
/// Unticked wins: every location of an item that is not ticked exactly true is kept, even where a ticked item
/// names it or a folder that holds it (two extension versions sharing one folder; a browser's caches inside the
/// caches folder). The rest of a ticked folder still goes.
struct CleanPlan {
    std::vector<CleanStep> steps;
    UrlList kept;
};
[[nodiscard]] CleanPlan planClean(const RecordList& sections);

/// What a clean would do, changing nothing: the locations that would go with their bytes (through the same walk
/// and checks as the removal) and, for each history database that would be purged, the URL rows that match the
/// word list, counted on the database opened read-only. What would be left, and why, is said as well.
struct PreviewedLocation {
    std::string location;
    std::uint64_t bytes = 0;
    std::string item;
    bool whole = true;
};
struct PreviewedDatabase {
    std::string database;
    std::int64_t matchingRows = 0;
    std::string item;
};
struct CleanPreview {
    std::vector<PreviewedLocation> locations;
    std::vector<PreviewedDatabase> databases;
    std::vector<LeftAsItWas> left;
};
[[nodiscard]] CleanPreview previewClean(const CleanPlan& plan, const DeletionBoundary& boundary,
                                        const AdultWords& words);
/// The preview as lines of text: "Would remove <location> (<size>) [<item>]", "Would empty ..." for a folder
/// emptied around what stays, "Would purge <database>: <n> matching rows [<item>]", "Would leave <location>:
/// <reason name>", and a last line with the totals.
[[nodiscard]] std::vector<std::string> previewLines(const CleanPreview& preview);

/// How far a clean has come: steps' locations and databases done, out of all of them. Called on the cleaning thread
/// after each.
using CleanProgress = std::function<void(std::size_t done, std::size_t total)>;

/// The deletion step of the cleaning, for the Clean of both faces (Interactive) and the hourly purge (RealTime): one
/// engine whose mode carries their differences.
///
/// Both delete the same things: each step's locations are removed through the boundary (see removeItem), a location
/// that cannot be removed is left as it was and the rest still goes, and a location already gone is passed over;
/// each history database is purged (see purgeHistory).
///
/// Interactive: the purges run at once, in step order, on the calling thread, which may be any thread.
/// RealTime: "Remove Start" is logged first (even when nothing is ticked), and each purge runs as a task of its
/// own, concurrently; `clean` may return before they end. The engine owns its tasks: `joinAll` waits for them, and
/// so does the destructor.
///
/// What every removal and purge came to is gathered in one CleanOutcome, which `joinAll` hands over.
class CleaningEngine {
public:
    CleaningEngine(CleanMode mode, DeletionBoundary boundary, AdultWords words = makeAdultWords({}));
    ~CleaningEngine();
    CleaningEngine(const CleaningEngine&) = delete;
    CleaningEngine& operator=(const CleaningEngine&) = delete;

    [[nodiscard]] CleanMode mode() const { return m_mode; }
    [[nodiscard]] const DeletionBoundary& boundary() const { return m_boundary; }

    /// The word list the purges use from now on. Tasks already started keep the list they began with.
    void setAdultWords(AdultWords words);
    [[nodiscard]] AdultWords adultWords() const;

    /// Called for each location or database left as it was, as soon as it is known, on the thread that cleaned it;
    /// never two calls at once. Set it before cleaning.
    using LeftReporter = std::function<void(const LeftAsItWas&)>;
    void setLeftReporter(LeftReporter reporter) { m_reporter = std::move(reporter); }

    /// Carries out a plan, as described above.
    void clean(const CleanPlan& plan, const CleanProgress& progress = {});
    /// Cleans what is ticked in sections: the plan of planClean, at once.
    void cleanTicked(const RecordList& sections) { clean(planClean(sections)); }

    /// Waits until every purge task started so far has ended, and hands over the outcome of everything cleaned
    /// since the last call.
    CleanOutcome joinAll();

private:
    struct Task {
        std::jthread thread;
        std::shared_ptr<std::atomic<bool>> done;
    };

    void purge(const HistorySchema& schema, const FileUrl& database);
    void reapFinishedTasks();

    // Adds what one removal or purge came to, telling the reporter what was left.
    void record(CleanOutcome outcome);

    CleanMode m_mode;
    DeletionBoundary m_boundary;
    mutable std::mutex m_mutex; // the word list, the task list and the outcome
    AdultWords m_words;
    std::vector<Task> m_tasks;
    CleanOutcome m_outcome;
    LeftReporter m_reporter;
};

} // namespace tidewell
