#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "layout/disk_root.hpp"
#include "catalogue/records.hpp"
#include "cleaning/adult_words.hpp"
#include "cleaning/clean_outcome.hpp"
#include "cleaning/history_purge.hpp"
#include "cleaning/safe_remove.hpp"
#include "platform/folder_grant.hpp"

namespace tidewell {

/// The boundary of the window face: the folder a started grant names, held only while it is still the very folder
/// granted, with the home as the catalogue writes it reached through its real place inside that folder.
[[nodiscard]] DeletionBoundary boundaryOfGrant(const FolderGrant& grant, const DiskRoot& disk);

/// The deletion step of the cleaning: `cleanSelected` of the window (Interactive) and `cleanSelected:` of the
/// hourly purge (RealTime), one engine whose mode carries their differences.
///
/// Both delete the same things. The sections' own ticks are not consulted: every section's "List" is taken, in
/// catalogue order (a record without one, the promotion row, gives nothing), and each item whose "isChecked" is
/// exactly true is cleaned in order:
/// - an item with an "AllList" (even an empty one) has each of its locations removed through the boundary (see
///   removeItem); a location that cannot be removed is left as it was and the rest still goes, and a location
///   already gone is passed over;
/// - otherwise an item with a "Path" goes to the purge routine its "NameText" names ("Google Chrome Adult
///   History", "Safari Adult History", "Firefox Adult History"); an item with another name is passed over.
///
/// Interactive: the routines run at once, in item order, on the calling thread.
/// RealTime: "Remove Start" is logged first (even when nothing is ticked), and each routine runs as a task of its
/// own, concurrently, reading the item's "Path" when it starts; `cleanSelected` may return before they end. The
/// engine owns its tasks: `joinAll` waits for them, and so does the destructor.
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

    /// `adultWords`: the list the purge routines use from now on. Tasks already started keep the list they began
    /// with.
    void setAdultWords(AdultWords words);
    [[nodiscard]] AdultWords adultWords() const;

    /// Called for each location or database left as it was, as soon as it is known, on the thread that cleaned it;
    /// never two calls at once. Set it before cleaning.
    using LeftReporter = std::function<void(const LeftAsItWas&)>;
    void setLeftReporter(LeftReporter reporter) { m_reporter = std::move(reporter); }

    /// Cleans what is ticked in sections, as described above.
    void cleanSelected(const RecordList& sections);

    /// Waits until every purge task started so far has ended, and hands over the outcome of everything cleaned
    /// since the last call.
    CleanOutcome joinAll();

private:
    struct Task {
        std::jthread thread;
        std::shared_ptr<std::atomic<bool>> done;
    };

    void purge(const RecordPtr& item);
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
