#include "ui/window_clean.hpp"

#include <algorithm>

#include <QStringList>
#include <QTimer>

#include "app/alerts.hpp"
#include "app/window_host.hpp"
#include "base/byte_count.hpp"
#include "base/log.hpp"
#include "cleaning/cleaning_engine.hpp"
#include "ui/browser_sheet.hpp"
#include "ui/spinning_indicator.hpp"

namespace tidewell {

WindowClean::WindowClean(WindowHost& host, const Catalogue& catalogue, BrowserSheet& sheet,
                         SpinningIndicator& indicator, std::shared_ptr<const RunningApplications> running)
    : m_host(host), m_catalogue(catalogue), m_sheet(sheet), m_indicator(indicator), m_running(std::move(running)),
      m_words(loadAdultWords()) {
    connect(&m_sheet, &BrowserSheet::retryRequested, this, &WindowClean::retry);
}

WindowClean::~WindowClean() {
    // A removal still running is waited for; its hand-back is let go, as nothing is left to show it.
    m_mainThread.shutdown();
    m_flow.reset();
}

void WindowClean::clean() {
    if (m_busy) {
        return;
    }
    // A flow waiting on the sheet is dropped with it: this press asks afresh.
    m_flow =
        std::make_unique<CleanFlow>(m_host.disk(), *m_running, static_cast<CleanFace&>(*this), m_words, &m_mainThread);
    m_afterRetry = false;
    m_flow->start(m_catalogue.snapshot());
}

void WindowClean::retry() {
    if (!m_busy && m_flow) {
        m_flow->retry();
    }
}

bool WindowClean::confirm() {
    return Alerts::confirm(QStringLiteral("Are you sure you want to erase selected privacy data?"),
                           m_confirmationText ? m_confirmationText() : QString(), m_sheet.window());
}

void WindowClean::removalProgress(std::size_t done, std::size_t total) {
    // On the removal's thread: the window shows it on its own.
    QMetaObject::invokeMethod(
        this, [this, done, total] { emit progressed(done, total); }, Qt::QueuedConnection);
}

void WindowClean::reportCleaned(const CleanOutcome& outcome) {
    QStringList lines;
    lines.append(QStringLiteral("Removed %1 location%2, %3 freed.")
                     .arg(outcome.removed.size())
                     .arg(outcome.removed.size() == 1 ? QString() : QStringLiteral("s"))
                     .arg(QString::fromStdString(formatByteCount(static_cast<std::int64_t>(outcome.bytesFreed())))));
    for (const PurgedDatabase& purged : outcome.purged) {
        lines.append(QStringLiteral("%1: %2 history rows removed.")
                         .arg(QString::fromStdString(purged.database))
                         .arg(purged.rowsRemoved));
    }
    if (outcome.leftAnything()) {
        lines.append(QString());
        lines.append(QStringLiteral("Left as it was:"));
        // The sheet stays on the screen: the first places and how many more; the log names every one.
        constexpr std::size_t kPlacesShown = 8;
        const std::size_t shown = std::min(outcome.left.size(), kPlacesShown);
        for (std::size_t i = 0; i < shown; ++i) {
            const LeftAsItWas& left = outcome.left[i];
            lines.append(QStringLiteral("%1: %2%3")
                             .arg(QString::fromStdString(left.location),
                                  QString::fromUtf8(reasonName(left.reason).data(),
                                                    static_cast<qsizetype>(reasonName(left.reason).size())),
                                  left.detail.empty() ? QString()
                                                      : QStringLiteral(" (%1)").arg(QString::fromStdString(left.detail))));
        }
        if (outcome.left.size() > shown) {
            lines.append(QStringLiteral("… and %1 more, each named in the log.").arg(outcome.left.size() - shown));
        }
    }
    m_report = Alerts::showSheet({QStringLiteral("Cleaning finished"), lines.join(QLatin1Char('\n')),
                                  {QStringLiteral("OK")}, 0, m_sheet.window()});
}

void WindowClean::showBrowsersInTheWay(const RecordList& entries) {
    m_sheet.setBrowsers(entries);
    m_sheet.begin();
}

void WindowClean::updateBrowsersInTheWay(const RecordList& entries) {
    m_sheet.setBrowsers(entries);
}

bool WindowClean::removeAtOnce(bool afterRetry) {
    m_afterRetry = afterRetry;
    setBusy(true);
    if (afterRetry) {
        return true;
    }
    // The indicator turns for a moment before the removal, as it always has on the Clean path.
    m_indicator.startAnimation();
    QTimer::singleShot(kDeferral, this, [this] { m_flow->removeNow(); });
    return false;
}

DeletionBoundary WindowClean::deletionBoundary() {
    // Without a started grant there is no folder Tidewell may delete in: the boundary then admits nothing. With one,
    // the granted folder is held for this clean, and every location is reached below it.
    const std::optional<FolderGrant> grant = m_host.cleaningGrant();
    return grant ? boundaryOfGrant(*grant, m_host.disk()) : DeletionBoundary();
}

void WindowClean::reportLeft(const LeftAsItWas& left) {
    logLine(describe(left));
}

void WindowClean::rescan() {
    if (!m_afterRetry) {
        m_indicator.stopAnimation();
    }
    setBusy(false);
    emit removed();
    if (m_afterRetry) {
        m_sheet.end();
    }
}

void WindowClean::setBusy(bool busy) {
    m_busy = busy;
    emit busyChanged(busy);
}

} // namespace tidewell
