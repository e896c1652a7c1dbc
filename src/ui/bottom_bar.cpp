#include "ui/bottom_bar.hpp"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

#include "app/window_host.hpp"
#include "ui/icons.hpp"
#include "ui/spinning_indicator.hpp"
#include "ui/widgets.hpp"

namespace tidewell {

namespace {

// The real-time box's tooltip: what the setting does, or, while the systemd timer does it, that the box rests.
const QString kRealTimeTip = QStringLiteral("Remove adult-site history every hour while no browser runs");
const QString kRealTimeScheduledTip = QStringLiteral(
    "The systemd timer of tidewell-cli schedule runs the hourly purge, so this window's hourly timer is off");

const QString kHideEntryTip = QStringLiteral("Keep Tidewell in the status menu only");
const QString kNoStatusAreaTip = QStringLiteral(
    "This desktop has no status area to hold Tidewell's icon, so the window stays and closing it quits Tidewell");

} // namespace

BottomBar::BottomBar(WindowHost& host, QWidget* parent)
    : QWidget(parent), m_host(host), m_realTimeScanBox(new QCheckBox(QStringLiteral("Real-time scan"), this)),
      m_runAtStartBox(new QCheckBox(QStringLiteral("Run at start"), this)),
      m_hideTaskbarEntryBox(new QCheckBox(QStringLiteral("Hide dock icon"), this)), m_helpButton(new QToolButton(this)),
      m_indicator(new SpinningIndicator(this)), m_statusText(new QLabel(this)), m_refreshButton(new QPushButton(QStringLiteral("Refresh"), this)),
      m_cleanButton(new QPushButton(QStringLiteral("Clean"), this)) {
    setObjectName(QStringLiteral("bottomBar"));

    m_realTimeScanBox->setObjectName(QStringLiteral("realTimeScan"));
    m_realTimeScanBox->setToolTip(kRealTimeTip);
    m_runAtStartBox->setObjectName(QStringLiteral("runAtStart"));
    m_runAtStartBox->setToolTip(QStringLiteral("Start Tidewell when you log in"));
    m_hideTaskbarEntryBox->setObjectName(QStringLiteral("hideTaskbarEntry"));
    // Only a person's click writes a choice; showing the stored values writes nothing back.
    connect(m_realTimeScanBox, &QCheckBox::clicked, this, [this](bool on) { m_host.setRealTimeScan(on); });
    connect(m_runAtStartBox, &QCheckBox::clicked, this, [this](bool on) { m_host.setRunAtStart(on); });
    connect(m_hideTaskbarEntryBox, &QCheckBox::clicked, this,
            [this](bool hide) { m_host.setShowsTaskbarEntry(!hide); });
    connect(&m_host, &WindowHost::settingsChanged, this, &BottomBar::showChoices);

    m_helpButton->setObjectName(QStringLiteral("helpButton"));
    m_helpButton->setIcon(namedImage(QStringLiteral("help_button")));
    m_helpButton->setIconSize(QSize(20, 20));
    m_helpButton->setAutoRaise(true);
    m_helpButton->setToolTip(QStringLiteral("Help"));
    m_helpButton->setCursor(Qt::PointingHandCursor);
    m_helpButton->setStyleSheet(QStringLiteral("QToolButton { border: none; background: transparent; }"
                                               "QToolButton::menu-indicator { image: none; }"));
    m_helpButton->setPopupMode(QToolButton::InstantPopup);
    auto* helpMenu = new QMenu(m_helpButton);
    helpMenu->setObjectName(QStringLiteral("helpMenu"));
    connect(helpMenu->addAction(QStringLiteral("Tidewell Help")), &QAction::triggered, this,
            [this] { m_host.openHelp(); });
    m_restoreDefaults = helpMenu->addAction(QStringLiteral("Restore Default Selection"));
    connect(m_restoreDefaults, &QAction::triggered, this, &BottomBar::restoreDefaultSelectionRequested);
    m_helpButton->setMenu(helpMenu);

    m_indicator->setColor(kAccentColor);
    m_statusText->setObjectName(QStringLiteral("statusText"));
    setTextColour(*m_statusText, kMutedTextColor);
    // The line takes the room left beside the buttons and wraps there: a warning never widens the window.
    m_statusText->setWordWrap(true);
    m_statusText->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_refreshButton->setObjectName(QStringLiteral("refreshButton"));
    styleSecondaryButton(*m_refreshButton);
    m_cleanButton->setObjectName(QStringLiteral("cleanButton"));
    stylePrimaryButton(*m_cleanButton);
    for (QPushButton* button : {m_refreshButton, m_cleanButton}) {
        button->setMinimumWidth(100);
        button->setAutoDefault(false);
    }

    auto* choices = new QHBoxLayout;
    choices->setSpacing(18);
    choices->addWidget(m_realTimeScanBox);
    choices->addWidget(m_runAtStartBox);
    choices->addWidget(m_hideTaskbarEntryBox);
    choices->addStretch(1);
    choices->addWidget(m_helpButton);

    auto* actions = new QHBoxLayout;
    actions->setSpacing(10);
    actions->addWidget(m_indicator);
    actions->addWidget(m_statusText, 1);
    actions->addWidget(m_refreshButton);
    actions->addWidget(m_cleanButton);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 12, 20, 14);
    layout->setSpacing(12);
    layout->addLayout(choices);
    layout->addLayout(actions);
    showChoices();
}

void BottomBar::showChoices() {
    const SettingsModel& choices = m_host.settings();
    m_realTimeScanBox->setChecked(choices.realTimeScan());
    m_realTimeScanBox->setToolTip(m_host.purgeScheduledBySystem() ? kRealTimeScheduledTip : kRealTimeTip);
    m_runAtStartBox->setChecked(choices.runAtStart());
    m_hideTaskbarEntryBox->setChecked(!choices.showsTaskbarEntry());
    // Without a status area the icon that would bring a hidden window back is missing, so the window stays.
    const bool statusArea = m_host.statusAreaAvailable();
    m_hideTaskbarEntryBox->setEnabled(statusArea);
    m_hideTaskbarEntryBox->setToolTip(statusArea ? kHideEntryTip : kNoStatusAreaTip);
}

void BottomBar::showEvent(QShowEvent* event) {
    // A status area may have come or gone since the choices were last shown.
    showChoices();
    QWidget::showEvent(event);
}

// A faint band with a hairline above, its lower corners following the window's.
void BottomBar::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath band;
    // Square where the window is (no compositor to show through rounded corners).
    const qreal radius = window()->testAttribute(Qt::WA_TranslucentBackground) ? 5 : 0;
    band.addRoundedRect(QRectF(rect()), radius, radius);
    band.addRect(QRectF(0, 0, width(), height() / 2.0));
    painter.fillPath(band.simplified(), QColor(247, 248, 249));
    painter.setPen(QColor(228, 228, 228));
    painter.drawLine(QPointF(0, 0.5), QPointF(width(), 0.5));
}

} // namespace tidewell
