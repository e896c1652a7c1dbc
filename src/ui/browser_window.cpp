#include "ui/browser_window.hpp"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <chrono>

#include "app/app_delegate.hpp"
#include "app/notification_centre.hpp"
#include "catalogue/record_keys.hpp"
#include "ui/icons.hpp"
#include "ui/widgets.hpp"
#include "ui/window_chrome.hpp"

namespace tidewell {

namespace {

constexpr int kViewWidth = 360;
constexpr int kRowIconSize = 28;
constexpr std::chrono::milliseconds kSlideTime{220};

} // namespace

// --- BrowserView ---

BrowserView::BrowserView(QWidget* parent)
    : QWidget(parent), m_sentence(new QLabel(QStringLiteral("Close these browsers to continue cleaning:"), this)),
      m_rows(new QWidget(this)), m_rowsLayout(new QVBoxLayout(m_rows)),
      m_closeWindow(new QPushButton(QStringLiteral("Close"), this)),
      m_retry(new QPushButton(QStringLiteral("Retry"), this)) {
    setObjectName(QStringLiteral("BrowserView"));
    m_closeWindow->setObjectName(QStringLiteral("closeWindow"));
    m_retry->setObjectName(QStringLiteral("retry"));
    m_sentence->setWordWrap(true);
    QFont bold = m_sentence->font();
    bold.setBold(true);
    m_sentence->setFont(bold);
    setTextColour(*m_sentence, kTextColor);
    m_rowsLayout->setContentsMargins(4, 0, 4, 0);
    m_rowsLayout->setSpacing(6);
    styleSecondaryButton(*m_closeWindow);
    stylePrimaryButton(*m_retry);
    for (QPushButton* button : {m_closeWindow, m_retry}) {
        button->setMinimumWidth(96);
        button->setAutoDefault(false);
    }
    connect(m_closeWindow, &QPushButton::clicked, this, &BrowserView::closeWindowAction);
    connect(m_retry, &QPushButton::clicked, this, &BrowserView::retryAction);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_closeWindow);
    buttons->addSpacing(4);
    buttons->addWidget(m_retry);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(22, 18, 22, 18);
    layout->setSpacing(14);
    layout->addWidget(m_sentence);
    layout->addWidget(m_rows);
    layout->addLayout(buttons);
    setFixedWidth(kViewWidth);
}

void BrowserView::setBrowserList(const RecordList& entries) {
    m_browserList.clear();
    m_rowImages.clear();
    while (QLayoutItem* item = m_rowsLayout->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    for (const RecordPtr& entry : entries) {
        m_browserList.push_back(entry);
        auto* row = new QWidget(m_rows);
        auto* icon = new QLabel(row);
        const QString image = imageNameForImg(entry->text(keys::kBrowserIcon));
        icon->setPixmap(imagePixmap(image, kRowIconSize, devicePixelRatioF()));
        icon->setFixedSize(kRowIconSize, kRowIconSize);
        auto* name = new QLabel(QString::fromStdString(entry->text(keys::kBrowserName)), row);
        name->setObjectName(QStringLiteral("NameBrowser"));
        setTextColour(*name, kTextColor);
        auto* line = new QHBoxLayout(row);
        line->setContentsMargins(0, 0, 0, 0);
        line->setSpacing(10);
        line->addWidget(icon);
        line->addWidget(name, 1);
        m_rowsLayout->addWidget(row);
        m_rowImages.push_back(image);
    }
    setFixedHeight(layout()->totalHeightForWidth(kViewWidth));
}

QList<QLabel*> BrowserView::rowNames() const {
    return m_rows->findChildren<QLabel*>(QStringLiteral("NameBrowser"));
}

QStringList BrowserView::rowImages() const {
    return m_rowImages;
}

void BrowserView::closeWindowAction() {
    NotificationCentre::defaultCenter().postNotificationName(kDismissPanelNotification);
    emit orderedOut();
}

void BrowserView::retryAction() {
    NotificationCentre::defaultCenter().postNotificationName(kRefreshBrowserNotification);
}

void BrowserView::paintEvent(QPaintEvent* /*event*/) {
    // Hung from the bottom of the title bar: square at the top, rounded below, with a soft edge.
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF card = QRectF(rect()).adjusted(0.5, -10, -0.5, -0.5);
    painter.setPen(QPen(QColor(196, 196, 196), 1));
    painter.setBrush(Qt::white);
    painter.drawRoundedRect(card, 10, 10);
}

// --- BrowserWindow ---

BrowserWindow::BrowserWindow(AppDelegate* appDel, QWidget& mainWindow)
    : BrowserPanelWindow(&mainWindow), m_view(new BrowserView(this)),
      m_slide(new QPropertyAnimation(m_view, "pos", this)) {
    setObjectName(QStringLiteral("BrowserWindow"));
    m_view->setAppDel(appDel);
    m_slide->setDuration(static_cast<int>(kSlideTime.count()));
    m_slide->setEasingCurve(QEasingCurve::OutCubic);
    connect(m_view, &BrowserView::orderedOut, this, &BrowserWindow::endSheet);
    mainWindow.installEventFilter(this);
    hide();
}

void BrowserWindow::setBrowserList(const RecordList& entries) {
    m_view->setBrowserList(entries);
    if (m_slide->state() != QAbstractAnimation::Running) {
        m_view->move(restingPlace());
    }
}

void BrowserWindow::beginSheet() {
    if (m_shown) {
        return;
    }
    m_shown = true;
    placeOverWindow();
    show();
    raise();
    const QPoint rest = restingPlace();
    m_slide->stop();
    m_slide->setStartValue(QPoint(rest.x(), -m_view->height()));
    m_slide->setEndValue(rest);
    m_slide->start();
}

void BrowserWindow::endSheet() {
    m_shown = false;
    m_slide->stop();
    hide();
}

void BrowserWindow::placeOverWindow() {
    const QWidget* window = parentWidget();
    if (window == nullptr) {
        return;
    }
    const auto* custom = qobject_cast<const CustomWindow*>(window);
    setGeometry(custom != nullptr ? custom->contentRect() : window->rect());
    if (m_slide->state() != QAbstractAnimation::Running) {
        m_view->move(restingPlace());
    }
}

QPoint BrowserWindow::restingPlace() const {
    return {(width() - m_view->width()) / 2, 0};
}

bool BrowserWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched == parentWidget() && event->type() == QEvent::Resize) {
        placeOverWindow();
    }
    return BrowserPanelWindow::eventFilter(watched, event);
}

void BrowserWindow::paintEvent(QPaintEvent* /*event*/) {
    QPainter(this).fillRect(rect(), QColor(30, 30, 30, 70));
}

// While the sheet is up the window beneath takes no clicks and no scrolling.
void BrowserWindow::mousePressEvent(QMouseEvent* event) {
    event->accept();
}

void BrowserWindow::wheelEvent(QWheelEvent* event) {
    event->accept();
}

} // namespace tidewell
