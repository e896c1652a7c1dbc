#include "catalogue/scan_driver.hpp"

namespace tidewell {

void Catalogue::append(RecordPtr section) {
    std::lock_guard lock(m_mutex);
    m_sections.push_back(std::move(section));
}

void Catalogue::clear() {
    std::lock_guard lock(m_mutex);
    m_sections.clear();
}

RecordList Catalogue::snapshot() const {
    std::lock_guard lock(m_mutex);
    return m_sections;
}

std::size_t Catalogue::size() const {
    std::lock_guard lock(m_mutex);
    return m_sections.size();
}

RecordPtr Catalogue::at(std::size_t index) const {
    std::lock_guard lock(m_mutex);
    return index < m_sections.size() ? m_sections[index] : nullptr;
}

ScanDriver::ScanDriver(DiskRoot disk, MainThreadExecutor& mainThread, ScanObserver& observer,
                       std::vector<SectionBuilder> builders)
    : m_disk(std::move(disk)), m_mainThread(mainThread), m_observer(observer), m_builders(std::move(builders)) {}

ScanDriver::~ScanDriver() {
    m_thread.request_stop();
    // jthread joins on destruction; a thread blocked in a hand-over returns from it once stopped.
}

void ScanDriver::startScan() {
    if (m_scanDone || m_scanRunning) {
        return;
    }
    m_observer.startIndicator();
    std::uint64_t generation = 0;
    {
        std::lock_guard lock(m_scanMutex);
        generation = ++m_generation;
        m_measuredBytes = 0;
        m_unlocatedBytes = 0;
        m_measuredLocations.clear();
        m_catalogue.clear();
    }
    m_scanRunning = true;
    m_scanDone = false;
    retireScanThread();
    m_thread = std::jthread([this, generation](const std::stop_token& stop) { runScan(stop, generation); });
    m_observer.sectionsChanged();
}

void ScanDriver::retireScanThread() {
    if (m_thread.joinable()) {
        m_thread.request_stop();
        m_replaced.push_back(std::move(m_thread));
    }
    // A stopped thread ends at its next builder or hand-over, so joining it waits at most for one builder. The
    // one exception: a scan started from inside a hand-over (a rescan asked for when a scan finishes) runs while
    // that scan's thread waits for the very call it is in; that thread is joined at the next start instead.
    if (!m_handingOver) {
        m_replaced.clear();
    }
}

bool ScanDriver::handOver(const std::stop_token& stop, const std::function<void()>& onMainThread) {
    return m_mainThread.runAndWait(
        [this, &onMainThread] {
            m_handingOver = true;
            onMainThread();
            m_handingOver = false;
        },
        stop);
}

void ScanDriver::refresh() {
    m_scanDone = false;
    startScan();
}

std::vector<MeasuredLocation> ScanDriver::measuredLocations() const {
    std::lock_guard lock(m_scanMutex);
    return m_measuredLocations;
}

std::int64_t ScanDriver::measuredBytes() const {
    std::lock_guard lock(m_scanMutex);
    return m_measuredBytes;
}

void ScanDriver::waitForScanThread() {
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void ScanDriver::runScan(const std::stop_token& stop, std::uint64_t generation) {
    // The home is resolved once per scan and held: every location is measured below that open folder.
    SizeCounter sizes(SizeCounter::defaultWorkers(), stop, HeldFolder(m_disk.homePath()));
    ScanEnv env{m_disk, sizes};
    for (const SectionBuilder& builder : m_builders) {
        if (stop.stop_requested()) {
            return;
        }
        BuilderOutcome outcome = builder(env);
        if (outcome.section) {
            std::lock_guard lock(m_scanMutex);
            if (generation != m_generation) {
                return;
            }
            m_catalogue.append(std::move(outcome.section));
            // The total counts each place once on every layout, whatever the sections' own sizes do: a location
            // inside another (a cache inside the caches folder) or listed twice adds nothing more. A section that
            // names no locations adds its size as it is.
            if (outcome.locations.empty()) {
                m_unlocatedBytes += outcome.bytes;
            } else {
                m_measuredLocations.insert(m_measuredLocations.end(), outcome.locations.begin(),
                                           outcome.locations.end());
            }
            m_measuredBytes = m_unlocatedBytes + bytesCountedOnce(m_measuredLocations);
        }
        if (outcome.handOver && !handOver(stop, [this] { m_observer.sectionsChanged(); })) {
            return;
        }
    }
    handOver(stop, [this, generation] { finishScan(generation); });
}

void ScanDriver::finishScan(std::uint64_t generation) {
    {
        std::lock_guard lock(m_scanMutex);
        if (generation != m_generation) {
            return;
        }
    }
    m_observer.stopIndicator();
    m_scanRunning = false;
    m_scanDone = true;
    m_observer.scanFinished();
}

} // namespace tidewell
