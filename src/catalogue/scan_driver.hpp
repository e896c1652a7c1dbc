#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <stop_token>
#include <thread>
#include <vector>

#include "layout/disk_root.hpp"
#include "base/main_thread.hpp"
#include "catalogue/items.hpp"
#include "catalogue/records.hpp"
#include "catalogue/size_walker.hpp"

namespace tidewell {

/// `availbleApp`: the ordered list of sections. The scan thread appends while the main thread may draw, so every
/// access goes through a lock; the records themselves are only changed on the main thread once appended.
class Catalogue {
public:
    void append(RecordPtr section);
    void clear();
    [[nodiscard]] RecordList snapshot() const;
    [[nodiscard]] std::size_t size() const;
    /// The section at index, or null when out of range.
    [[nodiscard]] RecordPtr at(std::size_t index) const;

private:
    mutable std::mutex m_mutex;
    RecordList m_sections;
};

/// What a section builder reads: the disk and the scan's size counter.
struct ScanEnv {
    const DiskRoot& disk;
    SizeCounter& sizes;
};

/// What a section builder produced: zero or one section (with its measured total), and whether it asks the main
/// thread to run `setHeightDetails` (every builder does, but Chrome's when "Local State" cannot be read).
struct BuilderOutcome {
    RecordPtr section;
    std::int64_t bytes = 0;
    bool handOver = true;
    /// The section's measured locations, for a total that counts each place once.
    std::vector<MeasuredLocation> locations = {};
};

using SectionBuilder = std::function<BuilderOutcome(ScanEnv&)>;

/// The window's (or the command-line tool's) side of a scan, always called on the main thread.
class ScanObserver {
public:
    virtual ~ScanObserver() = default;
    virtual void startIndicator() {}
    virtual void stopIndicator() {}
    /// After each builder, and once when a scan starts: the catalogue may have grown.
    virtual void setHeightDetails() {}
    /// After `BGscanDone`.
    virtual void scanFinished() {}
};

/// The scan driver of `ToolsViewController`: two flags allow one scan at a time; a scan empties `availbleApp`
/// and runs the builders in their fixed order on one background thread, handing over to the main thread after
/// each and finishing on it.
///
/// A scan that a newer one replaces (the clean path clears both flags and starts afresh) is told to stop; its
/// later appends and its completion are dropped, so two scans never mix their sections.
class ScanDriver {
public:
    ScanDriver(DiskRoot disk, MainThreadExecutor& mainThread, ScanObserver& observer,
               std::vector<SectionBuilder> builders);
    /// Stops the running scan and waits for its thread.
    ~ScanDriver();
    ScanDriver(const ScanDriver&) = delete;
    ScanDriver& operator=(const ScanDriver&) = delete;

    /// Starts a scan unless one is running or done: starts the indicator, empties the catalogue, sets the flags,
    /// starts `scanInBG` on a new thread and calls `setHeightDetails` at once. Main thread.
    void resetAndAddavailbleApplications();
    /// The user's rescan: clears `scanningDone` and starts.
    void refreshBrowserData();

    [[nodiscard]] Catalogue& availbleApp() { return m_catalogue; }
    [[nodiscard]] const Catalogue& availbleApp() const { return m_catalogue; }
    [[nodiscard]] const DiskRoot& disk() const { return m_disk; }

    [[nodiscard]] bool scanningDone() const { return m_scanningDone; }
    [[nodiscard]] bool isScanRunningForDetails() const { return m_isScanRunningForDetails; }
    void setScanningDone(bool done) { m_scanningDone = done; }
    void setIsScanRunningForDetails(bool running) { m_isScanRunningForDetails = running; }

    /// The measured total of the sections of the current scan so far.
    /// The total of the sections so far: their sizes added up, or on a layout that counts nested locations once,
    /// every place they measure counted once.
    [[nodiscard]] std::int64_t measuredBytes() const;

    /// Waits until the current scan thread has ended (for callers without an event loop of their own).
    void waitForScanThread();

private:
    void scanInBG(const std::stop_token& stop, std::uint64_t generation);
    void BGscanDone(std::uint64_t generation);

    DiskRoot m_disk;
    MainThreadExecutor& m_mainThread;
    ScanObserver& m_observer;
    std::vector<SectionBuilder> m_builders;

    Catalogue m_catalogue;
    bool m_scanningDone = false;
    bool m_isScanRunningForDetails = false;

    mutable std::mutex m_scanMutex; // generation, total, appends
    std::uint64_t m_generation = 0;
    std::int64_t m_measuredBytes = 0;
    std::vector<MeasuredLocation> m_measuredLocations;
    std::jthread m_thread;
    std::vector<std::jthread> m_replaced;
};

} // namespace tidewell
