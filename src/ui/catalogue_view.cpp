#include "ui/catalogue_view.hpp"

#include <QLabel>
#include <algorithm>
#include <map>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/window_host.hpp"
#include "base/byte_count.hpp"
#include "catalogue/ticks.hpp"
#include "sources/builders.hpp"
#include "ui/adult_history_info_view.hpp"
#include "ui/bottom_bar.hpp"
#include "ui/browser_sheet.hpp"
#include "ui/details_panel.hpp"
#include "ui/item_table_source.hpp"
#include "ui/popover.hpp"
#include "ui/section_card.hpp"
#include "ui/selection_memory.hpp"
#include "ui/spinning_indicator.hpp"
#include "ui/widgets.hpp"
#include "ui/window_clean.hpp"

namespace tidewell {

CatalogueView::CatalogueView(WindowHost& host, CatalogueViewOptions options, QWidget* parent)
    : QWidget(parent), m_host(host), m_mainThread(*this) {
    setObjectName(QStringLiteral("catalogueView"));
    m_driver = std::make_unique<ScanDriver>(m_host.disk(), m_mainThread, *this,
                                            options.builders ? std::move(*options.builders) : sectionBuilders(m_host.disk().layout()));

    m_tableArea = new QWidget(this);
    m_tableArea->setObjectName(QStringLiteral("tableArea"));
    m_itemTable = new CellTable(m_tableArea);
    m_itemTable->setObjectName(QStringLiteral("itemTable"));
    m_itemTable->setRowHeight(SectionCard::kHeight);
    // 10 above the first card and 10 after each, 5 below: 75 a section and 15 more.
    m_itemTable->setRowSpacing(kRowStep - SectionCard::kHeight, QMargins(20, 10, 20, 5));
    m_itemSource = std::make_unique<ItemTableSource>(*m_itemTable, catalogue());
    connect(m_itemSource.get(), &ItemTableSource::warned, this, [this](const QString& text) { m_tickWarning = text; });
    connect(m_itemSource.get(), &ItemTableSource::ticked, this, [this] {
        rememberSelection();
        refreshTable();
        // The warning of this click stands beside the total until the next change of the ticks.
        if (!m_tickWarning.isEmpty() && !m_clean->isBusy()) {
            m_bottomBar->statusText()->setText(m_tickWarning);
        }
        m_tickWarning.clear();
    });
    connect(m_itemSource.get(), &ItemTableSource::detailsRequested, this, &CatalogueView::showDetails);
    connect(m_itemSource.get(), &ItemTableSource::infoRequested, this, &CatalogueView::showAdultHistoryInfo);
    m_emptyText = new QLabel(QStringLiteral("Looking for traces…"), m_tableArea);
    m_emptyText->setAlignment(Qt::AlignCenter);
    setTextColour(*m_emptyText, kMutedTextColor);
    auto* area = new QVBoxLayout(m_tableArea);
    area->setContentsMargins(0, 0, 0, 0);
    area->setSpacing(0);
    area->addWidget(m_itemTable);
    area->addWidget(m_emptyText);
    m_tableArea->setFixedHeight(m_height);

    m_bottomBar = new BottomBar(m_host, this);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_tableArea);
    layout->addStretch(1);
    layout->addWidget(m_bottomBar);
    setFixedWidth(kWidth);

    m_detailsPanel = new DetailsPanel(this);
    connect(m_detailsPanel, &DetailsPanel::closed, this, [this] {
        rememberSelection();
        setMinimumHeight(0);
        refreshTable();
    });

    m_browserSheet = new BrowserSheet(*this);
    m_clean = std::make_unique<WindowClean>(m_host, catalogue(), *m_browserSheet, *m_bottomBar->indicator(),
                                            options.running ? std::move(options.running)
                                                            : std::shared_ptr(systemRunningApplications()));
    connect(m_bottomBar->refreshButton(), &QPushButton::clicked, this, [this] { m_driver->refresh(); });
    connect(m_bottomBar, &BottomBar::restoreDefaultSelectionRequested, this, &CatalogueView::restoreDefaultSelection);
    connect(m_bottomBar->cleanButton(), &QPushButton::clicked, m_clean.get(), &WindowClean::clean);
    connect(m_clean.get(), &WindowClean::busyChanged, this, [this](bool busy) {
        m_bottomBar->refreshButton()->setEnabled(!busy);
        refreshTable();
    });
    connect(m_clean.get(), &WindowClean::removed, this, &CatalogueView::rescan);

    connect(m_clean.get(), &WindowClean::progressed, this, [this](std::size_t done, std::size_t total) {
        m_bottomBar->statusText()->setText(QStringLiteral("%1 of %2").arg(done).arg(total));
    });
    m_clean->setConfirmationText([this] {
        return QStringLiteral("%1 from %2 will be removed.").arg(selectedText().chopped(9), tickedSectionNames());
    });

    m_host.restoreSettings();
    m_driver->startScan();
}

CatalogueView::~CatalogueView() {
    // A scan thread waiting on a hand-over is let go, then joined, while everything it could reach still exists.
    m_mainThread.shutdown();
    m_driver.reset();
}

// --- The scan ---

void CatalogueView::startIndicator() {
    m_bottomBar->indicator()->startAnimation();
}

void CatalogueView::stopIndicator() {
    m_bottomBar->indicator()->stopAnimation();
}

void CatalogueView::sectionsChanged() {
    restoreNewSections();
    const auto sections = static_cast<int>(catalogue().size());
    m_itemTable->setVisible(sections != 0);
    m_emptyText->setVisible(sections == 0 && m_driver->scanRunning());
    m_height = sections == 0                     ? kEmptyTableHeight
               : sections <= kMostRowsUnscrolled ? kRowStep * sections + kTableExtra
                                                 : kMostTableHeight;
    m_tableArea->setFixedHeight(m_height);
    refreshTable();
}

void CatalogueView::restoreNewSections() {
    // Sections only ever arrive at the end of the catalogue; a scan starts from an empty one.
    const RecordList sections = catalogue().snapshot();
    if (sections.size() < m_sectionsRestored) {
        m_sectionsRestored = 0;
    }
    if (sections.size() == m_sectionsRestored) {
        return;
    }
    const QByteArray remembered = m_host.storedSelection();
    for (std::size_t index = m_sectionsRestored; index < sections.size(); ++index) {
        restoreSelection(Section(sections[index]), remembered);
    }
    m_sectionsRestored = sections.size();
}

void CatalogueView::rememberSelection() {
    m_host.storeSelection(tidewell::rememberedSelection(sectionsOf(catalogue().snapshot()), m_host.storedSelection()));
}

void CatalogueView::restoreDefaultSelection() {
    if (m_clean->isBusy()) {
        return;
    }
    // Forgotten, then scanned afresh: every item comes back with its builder's tick.
    m_host.storeSelection({});
    m_driver->setScanRunning(false);
    m_driver->refresh();
}

void CatalogueView::scanFinished() {
    m_emptyText->hide();
}

void CatalogueView::rescan() {
    // A clean always ends in a fresh scan, even after one that had finished.
    m_driver->setScanRunning(false);
    m_driver->setScanDone(false);
    m_driver->startScan();
}

QString CatalogueView::selectedText() const {
    std::vector<MeasuredLocation> ticked;
    const std::vector<MeasuredLocation> measured = m_driver->measuredLocations();
    std::map<std::string, std::int64_t> sizes;
    for (const MeasuredLocation& location : measured) {
        sizes.emplace(location.path, location.bytes);
    }
    for (const Section& section : sectionsOf(m_driver->catalogue().snapshot())) {
        for (const Item& item : section.items()) {
            const UrlList* locations = item.locations();
            if (!item.isTicked() || locations == nullptr) {
                continue;
            }
            for (const FileUrl& location : *locations) {
                const auto size = sizes.find(location.path);
                ticked.push_back({location.path, size != sizes.end() ? size->second : 0});
            }
        }
    }
    // A place that two ticked items name, or that lies inside another ticked one, is counted once.
    return QStringLiteral("%1 selected").arg(QString::fromStdString(formatByteCount(bytesCountedOnce(ticked))));
}

QString CatalogueView::tickedSectionNames() const {
    QStringList names;
    for (const Section& section : sectionsOf(m_driver->catalogue().snapshot())) {
        const std::vector<Item> items = section.items();
        if (std::any_of(items.begin(), items.end(), [](const Item& item) { return item.isTicked(); })) {
            names.append(QString::fromStdString(section.name()));
        }
    }
    if (names.size() <= 1) {
        return names.join(QString());
    }
    const QString last = names.takeLast();
    return QStringLiteral("%1 and %2").arg(names.join(QStringLiteral(", ")), last);
}

void CatalogueView::refreshTable() {
    m_itemTable->reload();
    if (!m_clean->isBusy()) {
        m_bottomBar->statusText()->setText(selectedText());
    }
    m_bottomBar->cleanButton()->setEnabled(!m_clean->isBusy() && anythingToClean(catalogue()));
}

SectionCard* CatalogueView::cardAt(int row) const {
    return qobject_cast<SectionCard*>(m_itemTable->viewAtRow(row));
}

// --- Details and info ---

void CatalogueView::showDetails(int row) {
    const RecordPtr section = row >= 0 ? catalogue().at(static_cast<std::size_t>(row)) : nullptr;
    if (!section) {
        return;
    }
    m_detailsPanel->setGeometry(rect());
    m_detailsPanel->open(section);
    m_itemTable->scrollTo(kScrollUnderPanel);
    // A short catalogue makes a short window; it grows while the panel needs the room.
    setMinimumHeight(m_detailsPanel->neededHeight());
}

void CatalogueView::showAdultHistoryInfo(QWidget& button) {
    if (!m_adultHistoryPopover) {
        m_adultHistoryPopover = std::make_unique<Popover>(new AdultHistoryInfoView);
        m_adultHistoryPopover->setColor(Qt::white);
    }
    m_adultHistoryPopover->showAt(button.rect(), button);
}

void CatalogueView::resizeEvent(QResizeEvent* event) {
    m_detailsPanel->setGeometry(rect());
    QWidget::resizeEvent(event);
}

} // namespace tidewell
