#include "flows/clean_flow.hpp"

#include "cleaning/browser_check.hpp"
#include "cleaning/cleaning_engine.hpp"

namespace tidewell {

CleanFlow::CleanFlow(const DiskRoot& disk, const RunningApplications& running, CleanFace& face, AdultWords words,
                     MainThreadExecutor* mainThread)
    : m_disk(disk), m_running(running), m_face(face), m_words(std::move(words)), m_mainThread(mainThread) {}

CleanFlow::~CleanFlow() {
    m_removal.request_stop();
}

void CleanFlow::start(const RecordList& catalogue) {
    if (m_state != State::Idle) {
        return;
    }
    m_catalogue = catalogue;
    if (!m_face.confirm()) {
        m_state = State::Declined;
        return;
    }
    const RecordList entries = browsersInTheWay(tickedSections(m_catalogue), m_disk, m_running);
    if (!entries.empty()) {
        m_state = State::WaitingForBrowsers;
        m_face.showBrowsersInTheWay(entries);
        return;
    }
    wayClear(false);
}

void CleanFlow::retry() {
    if (m_state != State::WaitingForBrowsers) {
        return;
    }
    const RecordList entries = browsersStillInTheWay(tickedSections(m_catalogue), m_disk, m_running);
    if (!entries.empty()) {
        m_face.updateBrowsersInTheWay(entries);
        return;
    }
    m_face.browsersGone();
    wayClear(true);
}

void CleanFlow::removeNow() {
    if (m_state == State::ReadyToRemove) {
        remove();
    }
}

void CleanFlow::wayClear(bool afterRetry) {
    if (m_face.removeAtOnce(afterRetry)) {
        remove();
        return;
    }
    m_state = State::ReadyToRemove;
}

void CleanFlow::remove() {
    m_state = State::Removing;
    // What is ticked is read here, on the thread that owns the records; the removal works from the plan alone.
    auto plan = std::make_shared<const CleanPlan>(planClean(m_catalogue));
    auto engine = std::make_shared<CleaningEngine>(CleanMode::Interactive, m_face.deletionBoundary(), m_words);
    engine->setLeftReporter([this](const LeftAsItWas& left) { m_face.reportLeft(left); });
    m_face.removalStarted();
    const auto removeAll = [this, plan, engine] {
        engine->clean(*plan, [this](std::size_t done, std::size_t total) { m_face.removalProgress(done, total); });
        return engine->joinAll();
    };
    if (m_mainThread == nullptr) {
        finish(removeAll());
        return;
    }
    m_removal = std::jthread([this, removeAll](const std::stop_token& stop) {
        const CleanOutcome outcome = removeAll();
        m_mainThread->runAndWait([this, &outcome] { finish(outcome); }, stop);
    });
}

void CleanFlow::finish(const CleanOutcome& outcome) {
    m_state = State::Done;
    m_face.rescan();
    m_face.reportCleaned(outcome);
}

} // namespace tidewell
