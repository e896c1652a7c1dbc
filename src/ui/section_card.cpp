#include "ui/section_card.hpp"

#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

#include "ui/icons.hpp"
#include "ui/widgets.hpp"

namespace tidewell {

const QColor SectionCard::kBackgroundColor{236, 236, 236};

namespace {

constexpr int kIconSize = 38;
constexpr int kDetailsIconSize = 22;
constexpr int kCardRadius = 7;

QToolButton* makeFlatButton(const QString& name, QWidget* parent) {
    auto* button = new QToolButton(parent);
    button->setObjectName(name);
    button->setAutoRaise(true);
    button->setCursor(Qt::PointingHandCursor);
    button->setFocusPolicy(Qt::TabFocus);
    button->setStyleSheet(QStringLiteral("QToolButton { border: none; background: transparent; padding: 0; }"
                                         "QToolButton:pressed { background: rgba(0, 0, 0, 18); border-radius: 4px; }"
                                         "QToolButton:disabled { background: transparent; }"));
    return button;
}

} // namespace

SectionCard::SectionCard(QWidget* parent)
    : QWidget(parent), m_imageIcon(new QLabel(this)), m_checkBox(new TickBox(this)), m_nameText(new QLabel(this)),
      m_infoButton(makeFlatButton(QStringLiteral("infoButton"), this)), m_detailsText(new ElidedLabel(this)),
      m_sizeText(new QLabel(this)), m_detailsButton(makeFlatButton(QStringLiteral("detailsButton"), this)),
      m_promotionButton(new QPushButton(QStringLiteral("Get Thornsweep"), this)) {
    setObjectName(QStringLiteral("sectionCard"));
    m_imageIcon->setObjectName(QStringLiteral("imageIcon"));
    m_checkBox->setObjectName(QStringLiteral("checkBox"));
    m_checkBox->installEventFilter(this);
    m_nameText->setObjectName(QStringLiteral("nameText"));
    m_detailsText->setObjectName(QStringLiteral("detailsText"));
    m_sizeText->setObjectName(QStringLiteral("sizeText"));
    m_promotionButton->setObjectName(QStringLiteral("promotionButton"));

    m_imageIcon->setFixedSize(kIconSize, kIconSize);
    m_infoButton->setIcon(namedImage(QStringLiteral("info_button")));
    m_infoButton->setIconSize(QSize(15, 15));
    m_infoButton->setFixedSize(20, 20);
    m_infoButton->setToolTip(QStringLiteral("About Adult History"));
    m_detailsButton->setIcon(namedImage(QStringLiteral("details_button")));
    m_detailsButton->setIconSize(QSize(kDetailsIconSize, kDetailsIconSize));
    m_detailsButton->setFixedSize(30, 30);
    m_detailsButton->setToolTip(QStringLiteral("Details"));
    m_sizeText->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_sizeText->setMinimumWidth(76);
    m_promotionButton->setCursor(Qt::PointingHandCursor);

    auto* nameLine = new QHBoxLayout;
    nameLine->setSpacing(4);
    nameLine->addWidget(m_nameText);
    nameLine->addWidget(m_infoButton);
    nameLine->addStretch(1);

    auto* texts = new QVBoxLayout;
    texts->setSpacing(3);
    texts->addStretch(1);
    texts->addLayout(nameLine);
    texts->addWidget(m_detailsText);
    texts->addStretch(1);

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(14, 0, 10, 0);
    row->setSpacing(0);
    row->addWidget(m_imageIcon);
    row->addSpacing(12);
    row->addWidget(m_checkBox);
    row->addSpacing(8);
    row->addLayout(texts, 1);
    row->addSpacing(12);
    row->addWidget(m_sizeText);
    row->addSpacing(6);
    row->addWidget(m_detailsButton);
    row->addWidget(m_promotionButton);
    row->addSpacing(4);

    applyLook();
}

void SectionCard::applyLook() {
    QFont bold = m_nameText->font();
    bold.setBold(true);
    m_nameText->setFont(bold);
    setTextColour(*m_nameText, kTextColor);
    QFont size = m_sizeText->font();
    size.setWeight(QFont::DemiBold);
    m_sizeText->setFont(size);
    setTextColour(*m_sizeText, QColor(64, 64, 64));
    m_detailsText->setTextColor(kMutedTextColor);
    styleSecondaryButton(*m_promotionButton);
    m_promotionButton->hide();
    m_infoButton->hide();
}

void SectionCard::setImageName(const QString& name) {
    m_imageName = name;
    m_imageIcon->setPixmap(imagePixmap(name, kIconSize, devicePixelRatioF()));
}

void SectionCard::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(kBackgroundColor);
    painter.drawRoundedRect(QRectF(rect()), kCardRadius, kCardRadius);
    if (m_checkBox->hasFocus()) {
        painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), kCardRadius, kCardRadius);
    }
}

void SectionCard::mousePressEvent(QMouseEvent* event) {
    // Taken, so that the release comes here too.
    event->accept();
}

void SectionCard::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint()) &&
        m_checkBox->isVisible() && m_checkBox->isEnabled()) {
        m_checkBox->click();
    }
}

bool SectionCard::eventFilter(QObject* watched, QEvent* event) {
    // The outline follows the tick box's focus.
    if (watched == m_checkBox && (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut)) {
        update();
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace tidewell
