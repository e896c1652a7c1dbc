#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>
#include <chrono>
#include <functional>
#include <memory>

#include "catalogue/scan_driver.hpp"
#include "cleaning/adult_words.hpp"
#include "flows/clean_flow.hpp"
#include "platform/running_apps.hpp"
#include "ui/qt_main_thread.hpp"

namespace tidewell {

class BrowserSheet;
class SpinningIndicator;
class WindowHost;

/// The main window's side of the clean (flows/clean_flow), from the Clean button to the fresh scan:
/// - Clean: the confirmation "Are you sure you want to erase selected privacy data?", then the check for running
///   browsers whose data is to go. With none, the indicator turns and a second later the removal starts. With some,
///   the browser sheet lists them and waits: Retry checks again without asking (and without looking into "Adult
///   History") and, once none is in the way, removes at once; Close abandons the clean.
/// - The removal takes every ticked item of the catalogue as it is when the removal starts, inside the host's
///   granted folder only (with no grant, nothing), on the flow's own thread, so the window keeps answering
///   meanwhile; ticks changed meanwhile count for the next clean. What is left as it was is logged.
/// - When it has ended: the indicator stops, removed is emitted (the window scans afresh), and a sheet put up by
///   the check is ended.
/// - Then the report: an alert "Cleaning finished" whose text says what went (locations and bytes, rows purged
///   from each history database) and what was left as it was and why; OK closes it.
/// While a clean is under way (busy) a second Clean or Retry does nothing.
class WindowClean : public QObject, private CleanFace {
    Q_OBJECT
public:
    /// The time between the confirmation and the removal on the Clean path, so the indicator is seen first.
    static constexpr std::chrono::seconds kDeferral{1};

    /// The clean of catalogue on host's disk, asking sheet about the browsers running and showing indicator. All of
    /// them outlive it. running says which applications run.
    WindowClean(WindowHost& host, const Catalogue& catalogue, BrowserSheet& sheet, SpinningIndicator& indicator,
                std::shared_ptr<const RunningApplications> running);
    /// Waits for a removal under way; its rescan is not handed over any more.
    ~WindowClean() override;
    WindowClean(const WindowClean&) = delete;
    WindowClean& operator=(const WindowClean&) = delete;

    /// What the confirmation's informative text says (how much goes and from which sections), asked each time.
    void setConfirmationText(std::function<QString()> text) { m_confirmationText = std::move(text); }

    /// The Clean button.
    void clean();
    /// The browser sheet's Retry.
    void retry();

    /// Whether a clean is between its confirmation (or a successful Retry) and the end of its removal.
    [[nodiscard]] bool isBusy() const { return m_busy; }
    /// The report of the last clean while it is up (null once OK closed it, or when a test answered it).
    [[nodiscard]] QWidget* report() const { return m_report; }
    /// The word list the removal purges history with (loaded once, when the window is made).
    [[nodiscard]] const AdultWords& adultWords() const { return m_words; }

signals:
    /// isBusy changed.
    void busyChanged(bool busy);
    /// A removal ended: the catalogue no longer says what is on the disk.
    void removed();
    /// The removal has dealt with done of its total locations (on the main thread).
    void progressed(std::size_t done, std::size_t total);

private:
    bool confirm() override;
    void showBrowsersInTheWay(const RecordList& entries) override;
    void updateBrowsersInTheWay(const RecordList& entries) override;
    bool removeAtOnce(bool afterRetry) override;
    DeletionBoundary deletionBoundary() override;
    void reportLeft(const LeftAsItWas& left) override;
    void rescan() override;
    void removalProgress(std::size_t done, std::size_t total) override;
    void reportCleaned(const CleanOutcome& outcome) override;

    void setBusy(bool busy);

    WindowHost& m_host;
    const Catalogue& m_catalogue;
    BrowserSheet& m_sheet;
    SpinningIndicator& m_indicator;
    std::shared_ptr<const RunningApplications> m_running;
    AdultWords m_words;
    std::function<QString()> m_confirmationText;
    QPointer<QWidget> m_report;
    bool m_busy = false;
    // Whether the clean under way got past the sheet's Retry: no indicator, and the sheet ends after the removal.
    bool m_afterRetry = false;
    // The removal's hand-back to this object's thread; its tasks die with this object.
    QtMainThread m_mainThread{*this};
    // The clean of the last Clean press; a new press starts a new one unless this one is busy.
    std::unique_ptr<CleanFlow> m_flow;
};

} // namespace tidewell
