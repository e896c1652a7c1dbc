#include "ui/tools_view_controller.hpp"

#include <QCheckBox>
#include <QDesktopServices>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <chrono>

#include "app/alerts.hpp"
#include "app/app_delegate.hpp"
#include "app/notification_centre.hpp"
#include "base/log.hpp"
#include "catalogue/record_keys.hpp"
#include "catalogue/ticks.hpp"
#include "cleaning/browser_check.hpp"
#include "cleaning/cleaning_engine.hpp"
#include "sources/builders.hpp"
#include "ui/adult_history_info_view.hpp"
#include "ui/icons.hpp"
#include "ui/popover.hpp"
#include "ui/progress_indicator.hpp"
#include "ui/selection_view.hpp"
#include "ui/tools_cell.hpp"

namespace tidewell {

namespace {

constexpr int kItemTableTag = 1;

// The real-time box's tooltip: what the setting does, or, while the systemd timer does it, that the box rests.
constexpr const char* kRealTimeTip = "Remove adult-site history every hour while no browser runs";
constexpr const char* kRealTimeScheduledTip =
    "The systemd timer of tidewell-cli schedule runs the hourly purge, so this window's hourly timer is off";
constexpr int kSelectionTableTag = 2;

// The details panel's rows: grouped sections are denser and show more rows before scrolling.
constexpr int kGroupedRowHeight = 36;
constexpr int kPlainRowHeight = 50;
constexpr int kGroupedMostRows = 6;
constexpr int kPlainMostRows = 4;
// The panel's table outline adds one point above and one below.
constexpr int kSelectionTableOutline = 2;
// Where the item table is scrolled to while the panel is open.
constexpr int kScrollUnderPanel = 8;

// The clean waits this long after the confirmation, so the indicator is on screen before the main thread is
// busy deleting.
constexpr std::chrono::seconds kCleanDeferral{1};

const QString kChromeSummary = QStringLiteral(
    "Cookies, Visited Links, History, Login Data, LastSession, User preferences, Favicons, Top Sites, Local Storage");
const QString kExtensionsSummary = QStringLiteral("Browser extensions, Preferences");
const QString kAdultHistorySummary = QStringLiteral("All Adult Browser history");
const QString kPromotionSummary = QStringLiteral("Detects and Removes Adware");

QString qText(const std::string& text) {
    return QString::fromStdString(text);
}

// The summary of an ordinary section: its items' names, in order.
QString itemNames(const Record& section) {
    QStringList names;
    if (const RecordList* items = section.list(keys::kItems)) {
        for (const RecordPtr& item : *items) {
            names.push_back(qText(item->text(keys::kItemName)));
        }
    }
    return names.join(QStringLiteral(", "));
}

Tick tickOf(const Record& record) {
    const std::int64_t value = record.number(keys::kTick).value_or(0);
    return value == 1 ? Tick::On : value == -1 ? Tick::Mixed : Tick::Off;
}

// The bottom bar: a faint band with a hairline above, its lower corners following the window's.
class BottomBar : public QWidget {
public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        QPainterPath band;
        band.addRoundedRect(QRectF(rect()), 5, 5);
        band.addRect(QRectF(0, 0, width(), height() / 2.0));
        painter.fillPath(band.simplified(), QColor(247, 248, 249));
        painter.setPen(QColor(228, 228, 228));
        painter.drawLine(QPointF(0, 0.5), QPointF(width(), 0.5));
    }
};

} // namespace

QUrl ToolsViewController::thornsweepStoreUrl() {
    return QUrl(QStringLiteral("https://tidewell.app/thornsweep"));
}

ToolsViewController::ToolsViewController(AppDelegate* appDel, DiskRoot disk, ToolsViewOptions options, QWidget* parent)
    : QWidget(parent), m_appDel(appDel), m_disk(std::move(disk)), m_running(std::move(options.running)),
      m_mainThread(*this) {
    setObjectName(QStringLiteral("ToolsViewController"));
    if (!m_running) {
        m_running = systemRunningApplications();
    }
    m_driver = std::make_unique<ScanDriver>(m_disk, m_mainThread, *this,
                                            options.builders ? std::move(*options.builders)
                                                             : sectionBuilders(m_disk.layout()));

    m_tableArea = new QWidget(this);
    m_tableArea->setObjectName(QStringLiteral("tableArea"));
    m_itemTable = new CellTable(kItemTableTag, m_tableArea);
    m_itemTable->setObjectName(QStringLiteral("itemTable"));
    m_itemTable->setDataSource(this);
    m_itemTable->setRowHeight(ToolsCell::kHeight);
    // 10 above the first card and 10 after each, 5 below: 75 a section and 15 more.
    m_itemTable->setRowSpacing(kRowStep - ToolsCell::kHeight, QMargins(20, 10, 20, 5));
    m_emptyText = new QLabel(QStringLiteral("Looking for traces…"), m_tableArea);
    m_emptyText->setAlignment(Qt::AlignCenter);
    setTextColour(*m_emptyText, kMutedTextColor);
    auto* area = new QVBoxLayout(m_tableArea);
    area->setContentsMargins(0, 0, 0, 0);
    area->setSpacing(0);
    area->addWidget(m_itemTable);
    area->addWidget(m_emptyText);
    m_tableArea->setFixedHeight(m_height);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_tableArea);
    layout->addStretch(1);
    layout->addWidget(makeBottomBar());
    setFixedWidth(kWidth);

    m_selectionView = new SelectionView(this);
    m_selectionView->table()->setDataSource(this);
    connect(m_selectionView->doneButton(), &QPushButton::clicked, this,
            &ToolsViewController::doneActionFromselectionView);

    viewDidLoad();
}

ToolsViewController::~ToolsViewController() {
    // A scan thread waiting on a hand-over is let go, then joined, while everything it could reach still exists.
    m_mainThread.shutdown();
    m_driver.reset();
}

QWidget* ToolsViewController::makeBottomBar() {
    auto* bar = new BottomBar(this);
    bar->setObjectName(QStringLiteral("bottomBar"));

    m_realTimeScanBox = new QCheckBox(QStringLiteral("Real-time scan"), bar);
    m_realTimeScanBox->setObjectName(QStringLiteral("realTimeScan"));
    m_realTimeScanBox->setToolTip(QString::fromLatin1(kRealTimeTip));
    m_runAtStartBox = new QCheckBox(QStringLiteral("Run at start"), bar);
    m_runAtStartBox->setObjectName(QStringLiteral("runAtStart"));
    m_runAtStartBox->setToolTip(QStringLiteral("Start Tidewell when you log in"));
    m_hideDockBox = new QCheckBox(QStringLiteral("Hide dock icon"), bar);
    m_hideDockBox->setObjectName(QStringLiteral("hideDockIcon"));
    m_hideDockBox->setToolTip(QStringLiteral("Keep Tidewell in the status menu only"));
    // Only a person's click writes a setting; showing the stored values writes nothing back.
    connect(m_realTimeScanBox, &QCheckBox::clicked, this, &ToolsViewController::realTimeScanChange);
    connect(m_runAtStartBox, &QCheckBox::clicked, this, &ToolsViewController::runAtStartupChange);
    connect(m_hideDockBox, &QCheckBox::clicked, this, &ToolsViewController::hideDockChange);

    m_helpButton = new QToolButton(bar);
    m_helpButton->setObjectName(QStringLiteral("helpButton"));
    m_helpButton->setIcon(namedImage(QStringLiteral("help")));
    m_helpButton->setIconSize(QSize(20, 20));
    m_helpButton->setAutoRaise(true);
    m_helpButton->setToolTip(QStringLiteral("Help"));
    m_helpButton->setCursor(Qt::PointingHandCursor);
    m_helpButton->setStyleSheet(QStringLiteral("QToolButton { border: none; background: transparent; }"));
    connect(m_helpButton, &QToolButton::clicked, this, &ToolsViewController::getHelp);

    m_scannignIndicator = new ITProgressIndicator(bar);
    m_scannignIndicator->setColor(kAccentColor);

    m_refreshButton = new QPushButton(QStringLiteral("Refresh"), bar);
    m_refreshButton->setObjectName(QStringLiteral("refreshButton"));
    styleSecondaryButton(*m_refreshButton);
    connect(m_refreshButton, &QPushButton::clicked, this, &ToolsViewController::refresh);
    m_removeButton = new QPushButton(QStringLiteral("Clean"), bar);
    m_removeButton->setObjectName(QStringLiteral("removeButton"));
    stylePrimaryButton(*m_removeButton);
    connect(m_removeButton, &QPushButton::clicked, this, &ToolsViewController::cleanAndReloadData);
    for (QPushButton* button : {m_refreshButton, m_removeButton}) {
        button->setMinimumWidth(100);
        button->setAutoDefault(false);
    }

    auto* settings = new QHBoxLayout;
    settings->setSpacing(18);
    settings->addWidget(m_realTimeScanBox);
    settings->addWidget(m_runAtStartBox);
    settings->addWidget(m_hideDockBox);
    settings->addStretch(1);
    settings->addWidget(m_helpButton);

    auto* actions = new QHBoxLayout;
    actions->setSpacing(10);
    actions->addWidget(m_scannignIndicator);
    actions->addStretch(1);
    actions->addWidget(m_refreshButton);
    actions->addWidget(m_removeButton);

    auto* layout = new QVBoxLayout(bar);
    layout->setContentsMargins(20, 12, 20, 14);
    layout->setSpacing(12);
    layout->addLayout(settings);
    layout->addLayout(actions);
    return bar;
}

void ToolsViewController::viewDidLoad() {
    m_adultWords = loadAdultWords();
    m_selectionView->hide();
    connect(&NotificationCentre::defaultCenter(), &NotificationCentre::refreshBrowser, this,
            &ToolsViewController::refreshBrowser);
    if (m_appDel) {
        connect(m_appDel, &AppDelegate::settingsChanged, this, &ToolsViewController::restoreSettingsBoxes);
        m_appDel->makeAppChanges();
    }
    restoreSettingsBoxes();
    startScan();
}

// --- Catalogue and scan ---

void ToolsViewController::startScan() {
    m_driver->startScan();
}

void ToolsViewController::refresh() {
    m_driver->refresh();
}

void ToolsViewController::startIndicator() {
    m_scannignIndicator->startAnimation();
}

void ToolsViewController::stopIndicator() {
    m_scannignIndicator->stopAnimation();
}

void ToolsViewController::sectionsChanged() {
    const auto sections = static_cast<int>(catalogue().size());
    m_itemTable->setVisible(sections != 0);
    m_emptyText->setVisible(sections == 0 && m_driver->scanRunning());
    m_height = sections == 0                     ? kEmptyTableHeight
               : sections <= kMostRowsUnscrolled ? kRowStep * sections + kTableExtra
                                                 : kMostTableHeight;
    m_tableArea->setFixedHeight(m_height);
    reloadTableAndUI();
}

void ToolsViewController::scanFinished() {
    m_emptyText->hide();
}

void ToolsViewController::reloadTableAndUI() {
    m_itemTable->reloadData();
    m_removeButton->setEnabled(anythingToClean(catalogue()));
}

// --- Tables ---

int ToolsViewController::numberOfRowsInTableView(const CellTable& table) {
    if (table.tag() == kItemTableTag) {
        return static_cast<int>(catalogue().size());
    }
    if (table.tag() == kSelectionTableTag && m_toolsSelectedDic) {
        const RecordList* items = m_toolsSelectedDic->list(keys::kItems);
        return items != nullptr ? static_cast<int>(items->size()) : 0;
    }
    return 0;
}

QWidget* ToolsViewController::tableViewForRow(CellTable& table, int row, QWidget* reusable) {
    if (table.tag() == kItemTableTag) {
        return itemRow(row, reusable);
    }
    if (table.tag() == kSelectionTableTag) {
        return selectionRow(row, reusable);
    }
    logLine("ERROR");
    return nullptr;
}

QWidget* ToolsViewController::itemRow(int row, QWidget* reusable) {
    auto* cell = qobject_cast<ToolsCell*>(reusable);
    if (cell == nullptr) {
        cell = new ToolsCell;
        connect(cell->checkBox(), &QCheckBox::clicked, this, [this, cell] { checkBoxAction(*cell->checkBox()); });
        connect(cell->detailsButton(), &QToolButton::clicked, this,
                [this, cell] { showDetailsFor(tagOf(cell->detailsButton())); });
        connect(cell->infoButton(), &QToolButton::clicked, this,
                [this, cell] { adultHistoryInfoClick(*cell->infoButton()); });
        connect(cell->scanButton(), &QPushButton::clicked, this, &ToolsViewController::RedirectToThornsweepPath);
    }
    cell->infoButton()->hide();
    const RecordPtr section = row >= 0 ? catalogue().at(static_cast<std::size_t>(row)) : nullptr;
    if (!section) {
        return cell;
    }

    if (section->has(keys::kType)) {
        cell->checkBox()->hide();
        cell->setImageName(QStringLiteral("Thornsweep"));
        cell->detailsText()->setText(kPromotionSummary);
        cell->sizeText()->hide();
        cell->nameText()->setText(QStringLiteral("Thornsweep"));
        cell->detailsButton()->hide();
        cell->scanButton()->show();
        // A reused cell must not keep another section's tool tip.
        cell->setToolTip(QString());
        return cell;
    }

    cell->checkBox()->show();
    cell->detailsButton()->show();
    cell->sizeText()->show();
    cell->scanButton()->hide();
    const std::string& name = section->text(keys::kName);
    cell->nameText()->setText(qText(name));
    QString summary;
    QString size = qText(section->text(keys::kSize));
    if (name == "Chrome") {
        summary = kChromeSummary;
    } else if (name == "Browser Extensions") {
        summary = kExtensionsSummary;
    } else if (name == "Adult History") {
        size.clear();
        summary = kAdultHistorySummary;
        cell->infoButton()->show();
    } else {
        summary = itemNames(*section);
    }
    cell->sizeText()->setText(size);
    cell->detailsText()->setText(summary);
    cell->setToolTip(summary);
    cell->setDetailsImageName(QStringLiteral("DetatilsButton"));

    cell->setImageName(imageNameForImg(section->text(keys::kImage)));
    setTag(*cell->detailsButton(), row);
    setTag(*cell->checkBox(), row);
    cell->checkBox()->setTick(tickOf(*section));
    const bool enabled = section->flag(keys::kEnabled);
    cell->detailsButton()->setEnabled(enabled);
    cell->checkBox()->setEnabled(enabled);
    return cell;
}

QWidget* ToolsViewController::selectionRow(int row, QWidget* reusable) {
    auto* cell = qobject_cast<ToolsSelectionCell*>(reusable);
    if (cell == nullptr) {
        cell = new ToolsSelectionCell;
        connect(cell->checkBox(), &QCheckBox::clicked, this,
                [this, cell] { selectionCheckBoxAction(*cell->checkBox()); });
    }
    const RecordList* items = m_toolsSelectedDic ? m_toolsSelectedDic->list(keys::kItems) : nullptr;
    if (items == nullptr || row < 0 || static_cast<std::size_t>(row) >= items->size()) {
        return cell;
    }
    const Record& item = *(*items)[static_cast<std::size_t>(row)];
    const bool caption = !item.flag(keys::kNotCaption);
    const QString name = qText(item.text(keys::kItemName));
    cell->setCaption(caption);
    cell->setIndented(!caption && m_toolsSelectedDic->flag(keys::kGrouped));
    cell->checkBox()->setEnabled(item.flag(keys::kEnabled));
    cell->checkBox()->setTick(tickOf(item));
    cell->checkBox()->setToolTip(name);
    cell->nameText()->setText(name);
    cell->nameText()->setToolTip(name);
    cell->sizeText()->setVisible(item.has(keys::kSizeText));
    cell->sizeText()->setText(qText(item.text(keys::kSizeText)));
    return cell;
}

ToolsCell* ToolsViewController::cellAt(int row) const {
    return qobject_cast<ToolsCell*>(m_itemTable->viewAtRow(row));
}

ToolsSelectionCell* ToolsViewController::selectionCellAt(int row) const {
    return qobject_cast<ToolsSelectionCell*>(m_selectionView->table()->viewAtRow(row));
}

int ToolsViewController::heightSelectionTable() const {
    return m_selectionView->tableHeight();
}

// --- Ticking ---

void ToolsViewController::checkBoxAction(TickBox& sender) {
    const int row = tagOf(&sender);
    if (row < 0) {
        return;
    }
    sender.setTick(tickSection(catalogue(), static_cast<std::size_t>(row), sender.tick()));
    reloadTableAndUI();
}

void ToolsViewController::showDetailsFor(int row) {
    const RecordPtr section = row >= 0 ? catalogue().at(static_cast<std::size_t>(row)) : nullptr;
    if (!section) {
        return;
    }
    m_toolsSelectedDic = section;
    m_selectionView->titleText()->setText(qText(section->text(keys::kName)));
    m_selectionView->setGeometry(rect());
    m_selectionView->show();
    m_selectionView->raise();
    m_itemTable->scrollToPoint(kScrollUnderPanel);

    const bool grouped = section->flag(keys::kGrouped);
    CellTable& table = *m_selectionView->table();
    table.setRowHeight(grouped ? kGroupedRowHeight : kPlainRowHeight);
    table.setUsesAlternatingRowBackgroundColors(!grouped);
    table.reloadData();
    const int shown = std::min(table.numberOfRows(), grouped ? kGroupedMostRows : kPlainMostRows);
    m_selectionView->setTableHeight(table.rowHeight() * shown + kSelectionTableOutline);
    table.scrollToPoint(0);
    // A short catalogue makes a short window; it grows while the panel needs the room.
    setMinimumHeight(m_selectionView->neededHeight());
}

void ToolsViewController::selectionCheckBoxAction(TickBox& sender) {
    if (!m_toolsSelectedDic) {
        return;
    }
    Tick state = sender.tick();
    const bool reload = tickItemNamed(Section(m_toolsSelectedDic), sender.toolTip().toStdString(), state);
    sender.setTick(state);
    if (reload) {
        m_selectionView->table()->reloadData();
    }
}

void ToolsViewController::doneActionFromselectionView() {
    m_selectionView->hide();
    setMinimumHeight(0);
    if (m_toolsSelectedDic) {
        settleSectionTick(Section(m_toolsSelectedDic));
    }
    reloadTableAndUI();
}

void ToolsViewController::resizeEvent(QResizeEvent* event) {
    m_selectionView->setGeometry(rect());
    QWidget::resizeEvent(event);
}

// --- Popover and store page ---

void ToolsViewController::adultHistoryInfoClick(QWidget& sender) {
    if (!m_adultHistoryPopover) {
        m_adultHistoryPopover = std::make_unique<INPopoverController>(new AdultHistoryInfoView);
        m_adultHistoryPopover->setColor(Qt::white);
    }
    m_adultHistoryPopover->presentPopoverFromRect(sender.rect(), sender);
}

void ToolsViewController::RedirectToThornsweepPath() {
    QDesktopServices::openUrl(thornsweepStoreUrl());
}

// --- Cleaning ---

bool ToolsViewController::confirmClean() {
    return Alerts::createAlertForInformativeText(
               QStringLiteral("Are you sure you want to erase selected privacy data?"), QStringLiteral("Confirm"),
               window()) == kAlertFirstButtonReturn;
}

void ToolsViewController::cleanAndReloadData() {
    if (!confirmClean()) {
        return;
    }
    if (const RecordList inTheWay = browsersInTheWay(tickedSections(catalogue().snapshot()), m_disk, *m_running);
        !inTheWay.empty()) {
        if (m_appDel) {
            m_appDel->displayPanel(inTheWay);
        }
        return;
    }
    m_scannignIndicator->startAnimation();
    QTimer::singleShot(kCleanDeferral, this, [this] {
        cleanSelected();
        m_scannignIndicator->stopAnimation();
        rescanAfterClean();
    });
}

void ToolsViewController::refreshBrowser() {
    if (const RecordList stillInTheWay =
            browsersStillInTheWay(tickedSections(catalogue().snapshot()), m_disk, *m_running);
        !stillInTheWay.empty()) {
        if (m_appDel) {
            m_appDel->reloadPanel(stillInTheWay);
        }
        return;
    }
    cleanSelected();
    rescanAfterClean();
    if (m_appDel) {
        m_appDel->disMissPanel();
    }
}

void ToolsViewController::rescanAfterClean() {
    m_driver->setScanRunning(false);
    m_driver->setScanDone(false);
    startScan();
}

void ToolsViewController::cleanSelected() {
    // Without a started grant there is no folder Tidewell may delete in: the boundary then admits nothing. With
    // one, the granted folder is held for this clean, and every location is reached below it.
    const std::optional<FolderGrant> granted = m_appDel ? m_appDel->startedGrant() : std::nullopt;
    CleaningEngine engine(CleanMode::Interactive, granted ? boundaryOfGrant(*granted, m_disk) : DeletionBoundary(),
                          m_adultWords);
    engine.setLeftReporter([](const LeftAsItWas& left) { logLine(describe(left)); });
    engine.cleanTicked(catalogue().snapshot());
}

// --- Bottom bar ---

void ToolsViewController::realTimeScanChange(bool on) {
    if (m_appDel) {
        m_appDel->realTimeScanChange(on);
    }
}

void ToolsViewController::runAtStartupChange(bool on) {
    if (m_appDel) {
        m_appDel->runAtStartupChange(on);
    }
}

void ToolsViewController::hideDockChange(bool hide) {
    if (m_appDel) {
        m_appDel->hideDockChange(hide);
    }
}

void ToolsViewController::restoreSettingsBoxes() {
    const AppDelegate* appDel = m_appDel.data();
    if (appDel == nullptr) {
        return;
    }
    m_realTimeScanBox->setChecked(appDel->isRealTimeProtectionON());
    m_realTimeScanBox->setToolTip(
        QString::fromLatin1(appDel->purgeScheduledBySystem() ? kRealTimeScheduledTip : kRealTimeTip));
    m_runAtStartBox->setChecked(appDel->runOnStart());
    m_hideDockBox->setChecked(!appDel->dockIcon());
}

void ToolsViewController::getHelp() {
    if (m_appDel) {
        m_appDel->getHelp();
    }
}

} // namespace tidewell
