#pragma once

#include <cstddef>
#include <stop_token>
#include <thread>

#include "base/main_thread.hpp"
#include "catalogue/records.hpp"
#include "cleaning/adult_words.hpp"
#include "cleaning/clean_outcome.hpp"
#include "cleaning/safe_remove.hpp"
#include "layout/disk_root.hpp"
#include "platform/running_apps.hpp"

namespace tidewell {

/// What a face (the command line, the window) does for a clean. Called on the face's main thread, except where
/// said.
class CleanFace {
public:
    virtual ~CleanFace() = default;

    /// Asks "Are you sure you want to erase selected privacy data?"; true for yes.
    virtual bool confirm() = 0;
    /// Browsers whose data is ticked run (panel entries): shows them. The clean waits until the face calls retry(),
    /// or drops the flow.
    virtual void showBrowsersInTheWay(const RecordList& entries) = 0;
    /// Retry found browsers still in the way: shows these instead.
    virtual void updateBrowsersInTheWay(const RecordList& /*entries*/) {}
    /// Retry found the way clear; the removal starts next.
    virtual void browsersGone() {}
    /// The way is clear (afterRetry: retry() found it so): true lets the removal start at once; false holds the flow
    /// ReadyToRemove until the face calls removeNow() (the window lets its indicator turn for a moment first).
    virtual bool removeAtOnce(bool /*afterRetry*/) { return true; }
    /// The folder the removal may delete in, held for this clean; asked when the removal starts.
    virtual DeletionBoundary deletionBoundary() = 0;
    /// The removal has started.
    virtual void removalStarted() {}
    /// How far the removal has come (see CleanProgress). On the removal's thread.
    virtual void removalProgress(std::size_t /*done*/, std::size_t /*total*/) {}
    /// A location or database left as it was, as soon as it is known. On the removal's thread, never two at once.
    virtual void reportLeft(const LeftAsItWas& /*left*/) {}
    /// The removal is done: scans the catalogue again.
    virtual void rescan() = 0;
    /// After the rescan: what the clean removed and what it left.
    virtual void reportCleaned(const CleanOutcome& /*outcome*/) {}
};

/// The one clean of both faces: confirm, then the browser check, then wait for the browsers to quit (the face's
/// Retry), then the removal of everything ticked, then a rescan, then the report.
///
/// Without an executor the removal runs on the calling thread, inside start() or retry(). With one (the window's),
/// it runs on a thread of the flow's own while the face's main thread goes on, and the rescan and the report are
/// handed to that main thread; what is ticked is read from the records before, on the face's thread.
class CleanFlow {
public:
    enum class State {
        Idle,               // not started
        Declined,           // the question was not answered yes; nothing was removed
        WaitingForBrowsers, // browsers whose data is ticked run: retry() looks again
        ReadyToRemove,      // the way is clear and the face holds the removal back: removeNow() starts it
        Removing,           // the removal runs on the flow's thread
        Done,               // removed, rescanned and reported
    };

    CleanFlow(const DiskRoot& disk, const RunningApplications& running, CleanFace& face, AdultWords words,
              MainThreadExecutor* mainThread = nullptr);
    /// Waits for a removal still running; its rescan and report are not handed over any more.
    ~CleanFlow();
    CleanFlow(const CleanFlow&) = delete;
    CleanFlow& operator=(const CleanFlow&) = delete;

    /// The Clean button, on the catalogue's sections: asks, and unless declined looks at the running browsers of the
    /// ticked sections (see browsersInTheWay); with none in the way it removes, else it waits for retry(). A flow
    /// that has started once does nothing more here.
    void start(const RecordList& catalogue);
    /// The panel's Retry, while waiting: looks again (see browsersStillInTheWay); with none in the way any more it
    /// removes.
    void retry();
    /// Starts the removal the face held back (see CleanFace::removeAtOnce); in any other state does nothing.
    void removeNow();

    [[nodiscard]] State state() const { return m_state; }

private:
    // The way is clear: removes now or when the face says so.
    void wayClear(bool afterRetry);
    void remove();
    void finish(const CleanOutcome& outcome);

    const DiskRoot& m_disk;
    const RunningApplications& m_running;
    CleanFace& m_face;
    AdultWords m_words;
    MainThreadExecutor* m_mainThread;
    RecordList m_catalogue;
    State m_state = State::Idle;
    std::jthread m_removal;
};

} // namespace tidewell
