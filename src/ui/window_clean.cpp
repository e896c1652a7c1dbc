#include "ui/window_clean.hpp"

#include <QTimer>

#include "app/alerts.hpp"
#include "app/window_host.hpp"
#include "cleaning/cleaning_engine.hpp"
#include "platform/log.hpp"
#include "ui/browser_sheet.hpp"
#include "ui/spinning_indicator.hpp"

namespace tidewell {

namespace {

// The removal reads the records on its own thread while the person may go on ticking, so it gets records of its
// own: the sections and their items as they are the moment it starts.
RecordPtr copyOf(const Record& record) {
    auto copy = std::make_shared<Record>(record);
    for (const auto& [key, value] : record.entries()) {
        if (const auto* items = std::get_if<RecordList>(&value)) {
            RecordList copies;
            for (const RecordPtr& item : *items) {
                copies.push_back(copyOf(*item));
            }
            copy->set(key, std::move(copies));
        }
    }
    return copy;
}

} // namespace

WindowClean::WindowClean(WindowHost& host, const Catalogue& catalogue, BrowserSheet& sheet,
                         SpinningIndicator& indicator, std::shared_ptr<const RunningApplications> running)
    : m_host(host), m_catalogue(catalogue), m_sheet(sheet), m_indicator(indicator), m_running(std::move(running)),
      m_words(loadAdultWords()) {
    connect(&m_sheet, &BrowserSheet::retryRequested, this, &WindowClean::retry);
}

WindowClean::~WindowClean() {
    if (m_worker.joinable()) {
        m_worker.join();
    }
}

BrowserPanel WindowClean::browserPanel() {
    return BrowserPanel{
        .confirm =
            [] {
                return Alerts::confirm(QStringLiteral("Confirm"),
                                       QStringLiteral("Are you sure you want to erase selected privacy data?"));
            },
        .displayPanel =
            [this](const RecordList& entries) {
                m_sheet.setBrowsers(entries);
                m_sheet.begin();
            },
        .reloadPanel = [this](const RecordList& entries) { m_sheet.setBrowsers(entries); },
    };
}

void WindowClean::clean() {
    if (!mayRemove(forceQuitBrowsers)) {
        return;
    }
    setBusy(true);
    m_indicator.startAnimation();
    QTimer::singleShot(kDeferral, this, [this] { startRemoval(false); });
}

void WindowClean::retry() {
    if (!mayRemove(tryAgain)) {
        return;
    }
    setBusy(true);
    startRemoval(true);
}

bool WindowClean::mayRemove(const BrowserCheck& check) {
    if (m_busy) {
        return false;
    }
    const RecordList sections = tickedSections(m_catalogue.snapshot());
    return check(&sections, m_host.disk(), *m_running, browserPanel());
}

void WindowClean::setBusy(bool busy) {
    m_busy = busy;
    emit busyChanged(busy);
}

void WindowClean::startRemoval(bool fromRetry) {
    RecordList sections;
    for (const RecordPtr& section : m_catalogue.snapshot()) {
        sections.push_back(copyOf(*section));
    }
    m_worker = std::jthread([this, sections = std::move(sections), grant = m_host.cleaningGrant(), disk = m_host.disk(),
                             words = m_words, fromRetry] {
        // Without a started grant there is no folder Tidewell may delete in: the boundary then admits nothing.
        // With one, the granted folder is held for this clean, and every location is reached below it.
        CleaningEngine engine(CleanMode::Interactive, grant ? boundaryOfGrant(*grant, disk) : DeletionBoundary(),
                              words);
        engine.setLeftReporter([](const LeftAsItWas& left) { logLine(describe(left)); });
        engine.cleanSelected(sections);
        static_cast<void>(engine.joinAll());
        QMetaObject::invokeMethod(
            this, [this, fromRetry] { finishRemoval(fromRetry); }, Qt::QueuedConnection);
    });
}

void WindowClean::finishRemoval(bool fromRetry) {
    m_worker.join();
    if (!fromRetry) {
        m_indicator.stopAnimation();
    }
    setBusy(false);
    emit removed();
    if (fromRetry) {
        m_sheet.end();
    }
}

} // namespace tidewell
