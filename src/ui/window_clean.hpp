#pragma once

#include <QObject>
#include <chrono>
#include <memory>
#include <thread>

#include "catalogue/scan_driver.hpp"
#include "cleaning/adult_words.hpp"
#include "cleaning/browser_check.hpp"
#include "platform/running_apps.hpp"

namespace tidewell {

class BrowserSheet;
class SpinningIndicator;
class WindowHost;

/// The main window's clean, from the Clean button to the fresh scan:
/// - Clean: the confirmation "Are you sure you want to erase selected privacy data?", then the check for running
///   browsers whose data is to go. With none, the indicator turns and a second later the removal starts. With some,
///   the browser sheet lists them and waits: Retry checks again without asking (and without looking into "Adult
///   History") and, once none is in the way, removes at once; Close abandons the clean.
/// - The removal takes every ticked item of the catalogue, inside the host's granted folder only (with no grant,
///   nothing), on a worker thread, so the window keeps answering meanwhile. It works on a copy of the records
///   taken as it starts, so ticks changed meanwhile count for the next clean. What is left as it was is logged.
/// - When it has ended: the indicator stops, removed is emitted (the window scans afresh), and a sheet put up by
///   the check is ended.
/// While a clean is under way (busy) a second Clean or Retry does nothing.
class WindowClean : public QObject {
    Q_OBJECT
public:
    /// The time between the confirmation and the removal on the Clean path, so the indicator is seen first.
    static constexpr std::chrono::seconds kDeferral{1};

    /// The clean of catalogue on host's disk, asking sheet about the browsers running and showing indicator. All of
    /// them outlive it. running says which applications run.
    WindowClean(WindowHost& host, const Catalogue& catalogue, BrowserSheet& sheet, SpinningIndicator& indicator,
                std::shared_ptr<const RunningApplications> running);
    /// Waits for a removal under way.
    ~WindowClean() override;
    WindowClean(const WindowClean&) = delete;
    WindowClean& operator=(const WindowClean&) = delete;

    /// The Clean button.
    void clean();
    /// The browser sheet's Retry.
    void retry();

    /// Whether a clean is between its confirmation (or a successful Retry) and the end of its removal.
    [[nodiscard]] bool isBusy() const { return m_busy; }
    /// The word list the removal purges history with (loaded once, when the window is made).
    [[nodiscard]] const AdultWords& adultWords() const { return m_words; }

signals:
    /// isBusy changed.
    void busyChanged(bool busy);
    /// A removal ended: the catalogue no longer says what is on the disk.
    void removed();

private:
    // The browser check before the Clean path's removal (forceQuitBrowsers) or the Retry path's (tryAgain).
    using BrowserCheck = bool(const RecordList*, const DiskRoot&, const RunningApplications&, const BrowserPanel&);

    [[nodiscard]] BrowserPanel browserPanel();
    // Whether no clean is under way and the check, over the sections ticked now, lets the removal go ahead.
    [[nodiscard]] bool mayRemove(const BrowserCheck& check);
    void setBusy(bool busy);
    // fromRetry: the Retry path, which shows no indicator and ends the sheet once the removal is done.
    void startRemoval(bool fromRetry);
    void finishRemoval(bool fromRetry);

    WindowHost& m_host;
    const Catalogue& m_catalogue;
    BrowserSheet& m_sheet;
    SpinningIndicator& m_indicator;
    std::shared_ptr<const RunningApplications> m_running;
    AdultWords m_words;
    bool m_busy = false;
    std::jthread m_worker;
};

} // namespace tidewell
