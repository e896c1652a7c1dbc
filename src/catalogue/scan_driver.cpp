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
    for (auto& replaced : m_replaced) {
        replaced.request_stop();
    }
    // jthread joins on destruction; a thread blocked in a hand-over returns from it once stopped.
}

void ScanDriver::resetAndAddavailbleApplications() {
    if (m_scanningDone || m_isScanRunningForDetails) {
        return;
    }
    m_observer.startIndicator();
    std::uint64_t generation = 0;
    {
        std::lock_guard lock(m_scanMutex);
        generation = ++m_generation;
        m_measuredBytes = 0;
        m_measuredLocations.clear();
        m_catalogue.clear();
    }
    m_isScanRunningForDetails = true;
    m_scanningDone = false;
    if (m_thread.joinable()) {
        m_thread.request_stop();
        m_replaced.push_back(std::move(m_thread));
    }
    m_thread = std::jthread([this, generation](const std::stop_token& stop) { scanInBG(stop, generation); });
    m_observer.setHeightDetails();
}

void ScanDriver::refreshBrowserData() {
    m_scanningDone = false;
    resetAndAddavailbleApplications();
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

void ScanDriver::scanInBG(const std::stop_token& stop, std::uint64_t generation) {
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
            if (m_disk.layout().countNestedOnce) {
                m_measuredLocations.insert(m_measuredLocations.end(), outcome.locations.begin(),
                                           outcome.locations.end());
                m_measuredBytes = bytesCountedOnce(m_measuredLocations);
            } else {
                m_measuredBytes += outcome.bytes;
            }
        }
        if (outcome.handOver && !m_mainThread.runAndWait([this] { m_observer.setHeightDetails(); }, stop)) {
            return;
        }
    }
    m_mainThread.runAndWait([this, generation] { BGscanDone(generation); }, stop);
}

void ScanDriver::BGscanDone(std::uint64_t generation) {
    {
        std::lock_guard lock(m_scanMutex);
        if (generation != m_generation) {
            return;
        }
    }
    m_observer.stopIndicator();
    m_isScanRunningForDetails = false;
    m_scanningDone = true;
    m_observer.scanFinished();
}

} // namespace tidewell
