#include "ui/browser_sheet.hpp"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QShortcut>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <chrono>

#include "catalogue/record_keys.hpp"
#include "ui/icons.hpp"
#include "ui/widgets.hpp"

namespace tidewell {

namespace {

constexpr int kCardWidth = 360;
constexpr int kRowIconSize = 28;
constexpr std::chrono::milliseconds kSlideTime{220};

} // namespace

// --- BrowserSheetCard ---

BrowserSheetCard::BrowserSheetCard(QWidget* parent)
    : QWidget(parent), m_sentence(new QLabel(QStringLiteral("Close these browsers to continue cleaning:"), this)),
      m_rows(new QWidget(this)), m_rowsLayout(new QVBoxLayout(m_rows)),
      m_close(new QPushButton(QStringLiteral("Close"), this)), m_retry(new QPushButton(QStringLiteral("Retry"), this)) {
    setObjectName(QStringLiteral("browserSheetCard"));
    m_close->setObjectName(QStringLiteral("closeButton"));
    m_retry->setObjectName(QStringLiteral("retryButton"));
    m_sentence->setWordWrap(true);
    QFont bold = m_sentence->font();
    bold.setBold(true);
    m_sentence->setFont(bold);
    setTextColour(*m_sentence, kTextColor);
    m_rowsLayout->setContentsMargins(4, 0, 4, 0);
    m_rowsLayout->setSpacing(6);
    styleSecondaryButton(*m_close);
    stylePrimaryButton(*m_retry);
    for (QPushButton* button : {m_close, m_retry}) {
        button->setMinimumWidth(96);
        button->setAutoDefault(false);
    }

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_close);
    buttons->addSpacing(4);
    buttons->addWidget(m_retry);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(22, 18, 22, 18);
    layout->setSpacing(14);
    layout->addWidget(m_sentence);
    layout->addWidget(m_rows);
    layout->addLayout(buttons);
    setFixedWidth(kCardWidth);
}

void BrowserSheetCard::setBrowsers(const RecordList& entries) {
    m_rowImages.clear();
    while (QLayoutItem* item = m_rowsLayout->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    for (const RecordPtr& entry : entries) {
        auto* row = new QWidget(m_rows);
        auto* icon = new QLabel(row);
        const QString image = sectionImageName(entry->text(keys::kBrowserIcon));
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
    setFixedHeight(layout()->totalHeightForWidth(kCardWidth));
}

QStringList BrowserSheetCard::rowNames() const {
    QStringList names;
    for (const QLabel* name : m_rows->findChildren<QLabel*>(QStringLiteral("NameBrowser"))) {
        names.push_back(name->text());
    }
    return names;
}

void BrowserSheetCard::paintEvent(QPaintEvent* /*event*/) {
    // Hung from the bottom of the title bar: square at the top, rounded below, with a soft edge.
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF card = QRectF(rect()).adjusted(0.5, -10, -0.5, -0.5);
    painter.setPen(QPen(QColor(196, 196, 196), 1));
    painter.setBrush(Qt::white);
    painter.drawRoundedRect(card, 10, 10);
}

// --- BrowserSheet ---

BrowserSheet::BrowserSheet(QWidget& parent)
    : QWidget(&parent), m_card(new BrowserSheetCard(this)), m_slide(new QPropertyAnimation(m_card, "pos", this)) {
    setObjectName(QStringLiteral("browserSheet"));
    m_slide->setDuration(static_cast<int>(kSlideTime.count()));
    m_slide->setEasingCurve(QEasingCurve::OutCubic);
    connect(m_card->closeButton(), &QPushButton::clicked, this, &BrowserSheet::end);
    // While the sheet is up, Return is Retry, the filled button, and Escape is Close.
    for (const QKeySequence& key : {QKeySequence(Qt::Key_Return), QKeySequence(Qt::Key_Enter)}) {
        connect(new QShortcut(key, this), &QShortcut::activated, m_card->retryButton(), &QPushButton::click);
    }
    connect(new QShortcut(QKeySequence(Qt::Key_Escape), this), &QShortcut::activated, m_card->closeButton(),
            &QPushButton::click);
    connect(m_card->retryButton(), &QPushButton::clicked, this, &BrowserSheet::retryRequested);
    parent.installEventFilter(this);
    hide();
}

void BrowserSheet::setBrowsers(const RecordList& entries) {
    m_card->setBrowsers(entries);
    if (m_slide->state() != QAbstractAnimation::Running) {
        m_card->move(restingPlace());
    }
}

void BrowserSheet::begin() {
    if (m_up) {
        return;
    }
    m_up = true;
    coverParent();
    show();
    raise();
    const QPoint rest = restingPlace();
    m_slide->stop();
    m_slide->setStartValue(QPoint(rest.x(), -m_card->height()));
    m_slide->setEndValue(rest);
    m_slide->start();
}

void BrowserSheet::end() {
    m_up = false;
    m_slide->stop();
    hide();
}

void BrowserSheet::coverParent() {
    setGeometry(parentWidget()->rect());
    if (m_slide->state() != QAbstractAnimation::Running) {
        m_card->move(restingPlace());
    }
}

QPoint BrowserSheet::restingPlace() const {
    return {(width() - m_card->width()) / 2, 0};
}

bool BrowserSheet::eventFilter(QObject* watched, QEvent* event) {
    if (watched == parentWidget() && event->type() == QEvent::Resize) {
        coverParent();
    }
    return QWidget::eventFilter(watched, event);
}

void BrowserSheet::paintEvent(QPaintEvent* /*event*/) {
    QPainter(this).fillRect(rect(), QColor(30, 30, 30, 70));
}

// While the sheet is up the window beneath takes no clicks and no scrolling.
void BrowserSheet::mousePressEvent(QMouseEvent* event) {
    event->accept();
}

void BrowserSheet::wheelEvent(QWheelEvent* event) {
    event->accept();
}

} // namespace tidewell
