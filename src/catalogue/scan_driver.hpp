#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <stop_token>
#include <thread>
#include <vector>

#include "base/main_thread.hpp"
#include "catalogue/items.hpp"
#include "catalogue/records.hpp"
#include "catalogue/size_walker.hpp"
#include "layout/disk_root.hpp"

namespace tidewell {

/// The catalogue: the ordered list of sections. The scan thread appends while the main thread may draw, so every
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
/// thread to run `sectionsChanged` (every builder does, but Chrome's when "Local State" cannot be read).
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
    virtual void sectionsChanged() {}
    /// After `finishScan`.
    virtual void scanFinished() {}
};

/// The scan driver of `ToolsViewController`: two flags allow one scan at a time; a scan empties the catalogue
/// and runs the builders in their fixed order on one background thread, handing over to the main thread after
/// each and finishing on it.
///
/// A scan that a newer one replaces (the clean path clears both flags and starts afresh) is told to stop and its
/// thread is joined before the new one starts; its later appends and its completion are dropped, so two scans
/// never mix their sections, and a tray application refreshed for days keeps one scan thread, not one per scan.
class ScanDriver {
public:
    ScanDriver(DiskRoot disk, MainThreadExecutor& mainThread, ScanObserver& observer,
               std::vector<SectionBuilder> builders);
    /// Stops the running scan and waits for its thread.
    ~ScanDriver();
    ScanDriver(const ScanDriver&) = delete;
    ScanDriver& operator=(const ScanDriver&) = delete;

    /// Starts a scan unless one is running or done: starts the indicator, empties the catalogue, sets the flags,
    /// starts `runScan` on a new thread and calls `sectionsChanged` at once. Main thread.
    void startScan();
    /// The user's rescan: clears `scanDone` and starts.
    void refresh();

    [[nodiscard]] Catalogue& catalogue() { return m_catalogue; }
    [[nodiscard]] const Catalogue& catalogue() const { return m_catalogue; }
    [[nodiscard]] const DiskRoot& disk() const { return m_disk; }

    [[nodiscard]] bool scanDone() const { return m_scanDone; }
    [[nodiscard]] bool scanRunning() const { return m_scanRunning; }
    void setScanDone(bool done) { m_scanDone = done; }
    void setScanRunning(bool running) { m_scanRunning = running; }

    /// The measured total of the sections of the current scan so far.
    /// The total of the sections so far, on every layout: every place they measure counted once (a location
    /// inside another, or repeated, adds nothing more), plus the sizes of sections that name no locations.
    [[nodiscard]] std::int64_t measuredBytes() const;

    /// Every location the current scan has measured so far, with its size, in order.
    [[nodiscard]] std::vector<MeasuredLocation> measuredLocations() const;

    /// Waits until the current scan thread has ended (for callers without an event loop of their own).
    void waitForScanThread();

private:
    void runScan(const std::stop_token& stop, std::uint64_t generation);
    void finishScan(std::uint64_t generation);
    /// Stops the current scan thread and joins it, and any replaced before; see the .cpp for the one wait put off.
    void retireScanThread();
    /// Runs onMainThread on the main thread for the scan thread; false when the scan was stopped first.
    bool handOver(const std::stop_token& stop, const std::function<void()>& onMainThread);

    DiskRoot m_disk;
    MainThreadExecutor& m_mainThread;
    ScanObserver& m_observer;
    std::vector<SectionBuilder> m_builders;

    Catalogue m_catalogue;
    bool m_scanDone = false;
    bool m_scanRunning = false;

    mutable std::mutex m_scanMutex; // generation, total, appends
    std::uint64_t m_generation = 0;
    std::int64_t m_measuredBytes = 0;
    std::vector<MeasuredLocation> m_measuredLocations;
    std::int64_t m_unlocatedBytes = 0;
    std::jthread m_thread;
    std::vector<std::jthread> m_replaced; // stopped, joined at the next start (at most the one put off)
    bool m_handingOver = false;           // main thread only
};

} // namespace tidewell
