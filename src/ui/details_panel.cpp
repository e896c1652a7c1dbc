#include "ui/details_panel.hpp"

#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QShortcut>
#include <QVBoxLayout>
#include <QWheelEvent>

#include "catalogue/record_keys.hpp"
#include "catalogue/ticks.hpp"
#include "ui/details_table_source.hpp"
#include "ui/widgets.hpp"

namespace tidewell {

const QColor DetailsRow::kBandColor{226, 236, 241};
const QColor DetailsPanel::kVeilColor = QColor::fromRgbF(0.2F, 0.2F, 0.2F, 0.8F);

namespace {

constexpr int kCardSideMargin = 28;
constexpr int kCardVerticalMargin = 20;
constexpr int kCardPadding = 18;
constexpr int kIndentStep = 22;
// The table's outline adds one point above and one below.
constexpr int kTableOutline = 2;

// A white card with softly rounded corners; the table's outline is drawn around the frame that holds it.
class Card : public QWidget {
public:
    using QWidget::QWidget;
    QWidget* outlined = nullptr;

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(Qt::white);
        painter.drawRoundedRect(QRectF(rect()), 10, 10);
        if (outlined != nullptr) {
            painter.setRenderHint(QPainter::Antialiasing, false);
            painter.setPen(QColor(218, 218, 218));
            painter.setBrush(Qt::NoBrush);
            painter.drawRect(outlined->geometry().adjusted(0, 0, -1, -1));
        }
    }
};

// A band behind a caption row: a plain tinted rectangle.
class Band : public QWidget {
public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent* /*event*/) override { QPainter(this).fillRect(rect(), DetailsRow::kBandColor); }
};

} // namespace

// --- DetailsRow ---

DetailsRow::DetailsRow(QWidget* parent)
    : QWidget(parent), m_band(new Band(this)), m_checkBox(new TickBox(this)), m_nameText(new QLabel(this)),
      m_sizeText(new QLabel(this)), m_indent(new QWidget(this)) {
    setObjectName(QStringLiteral("detailsRow"));
    m_band->setObjectName(QStringLiteral("band"));
    m_checkBox->setObjectName(QStringLiteral("checkBox"));
    m_nameText->setObjectName(QStringLiteral("nameText"));
    m_sizeText->setObjectName(QStringLiteral("sizeText"));
    m_band->lower();
    m_indent->setFixedWidth(kIndentStep);
    m_indent->hide();
    m_sizeText->setAlignment(Qt::AlignRight | Qt::AlignVCenter);

    setTextColour(*m_nameText, kTextColor);
    setTextColour(*m_sizeText, kMutedTextColor);

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(14, 0, 16, 0);
    row->setSpacing(0);
    row->addWidget(m_indent);
    row->addWidget(m_checkBox);
    row->addSpacing(8);
    row->addWidget(m_nameText, 1);
    row->addSpacing(10);
    row->addWidget(m_sizeText);
}

void DetailsRow::setCaption(bool caption) {
    m_band->setVisible(caption);
    QFont font = m_nameText->font();
    font.setBold(caption);
    m_nameText->setFont(font);
}

void DetailsRow::setIndented(bool indented) {
    m_indent->setVisible(indented);
}

void DetailsRow::resizeEvent(QResizeEvent* event) {
    m_band->setGeometry(rect());
    QWidget::resizeEvent(event);
}

// --- DetailsPanel ---

DetailsPanel::DetailsPanel(QWidget* parent)
    : QWidget(parent), m_card(new Card(this)), m_title(new QLabel(m_card)), m_tableFrame(new QWidget(m_card)),
      m_table(new CellTable(m_tableFrame)), m_done(new QPushButton(QStringLiteral("Done"), m_card)),
      m_source(std::make_unique<DetailsTableSource>(*m_table)) {
    setObjectName(QStringLiteral("detailsPanel"));
    m_card->setObjectName(QStringLiteral("detailsCard"));
    m_table->setObjectName(QStringLiteral("detailsTable"));
    m_done->setObjectName(QStringLiteral("doneButton"));
    static_cast<Card*>(m_card)->outlined = m_tableFrame;

    auto* frame = new QVBoxLayout(m_tableFrame);
    frame->setContentsMargins(1, 1, 1, 1);
    frame->addWidget(m_table);

    m_warning = new QLabel(m_card);
    m_warning->setObjectName(QStringLiteral("tickWarning"));
    m_warning->hide();
    QPalette warningLook = m_warning->palette();
    warningLook.setColor(QPalette::WindowText, QColor(178, 34, 34));
    m_warning->setPalette(warningLook);
    connect(m_source.get(), &DetailsTableSource::warned, this, [this](const QString& text) {
        m_warning->setText(text);
        m_warning->show();
        placeCard();
    });

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_warning, 1);
    buttons->addWidget(m_done);

    auto* layout = new QVBoxLayout(m_card);
    layout->setContentsMargins(kCardPadding, 14, kCardPadding, 14);
    layout->setSpacing(12);
    layout->addWidget(m_title);
    layout->addWidget(m_tableFrame);
    layout->addLayout(buttons);
    applyLook();
    connect(m_done, &QPushButton::clicked, this, &DetailsPanel::finish);
    // Done is the panel's only way out: Return and Escape both take it while the panel is up.
    for (const QKeySequence& key :
         {QKeySequence(Qt::Key_Return), QKeySequence(Qt::Key_Enter), QKeySequence(Qt::Key_Escape)}) {
        connect(new QShortcut(key, this), &QShortcut::activated, m_done, &QPushButton::click);
    }
    hide();
}

DetailsPanel::~DetailsPanel() = default;

void DetailsPanel::applyLook() {
    QFont heading = m_title->font();
    heading.setBold(true);
    heading.setPointSizeF(heading.pointSizeF() * 1.15);
    m_title->setFont(heading);
    setTextColour(*m_title, kTextColor);
    stylePrimaryButton(*m_done);
    m_done->setMinimumWidth(96);
    m_done->setAutoDefault(false);
}

void DetailsPanel::open(RecordPtr section) {
    const bool grouped = section->flag(keys::kGrouped);
    m_title->setText(QString::fromStdString(section->text(keys::kName)));
    m_source->setSection(std::move(section));
    m_warning->hide();
    show();
    raise();
    m_table->setRowHeight(grouped ? kGroupedRowHeight : kPlainRowHeight);
    m_table->setAlternatingRows(!grouped);
    m_table->reload();
    const int shown = std::min(m_table->numberOfRows(), grouped ? kGroupedMostRows : kPlainMostRows);
    m_tableHeight = m_table->rowHeight() * shown + kTableOutline;
    m_tableFrame->setFixedHeight(m_tableHeight);
    placeCard();
    m_table->scrollTo(0);
}

void DetailsPanel::finish() {
    hide();
    if (const RecordPtr& shown = m_source->section()) {
        settleSectionTick(Section(shown));
    }
    emit closed();
}

const RecordPtr& DetailsPanel::section() const {
    return m_source->section();
}

DetailsRow* DetailsPanel::rowAt(int row) const {
    return qobject_cast<DetailsRow*>(m_table->viewAtRow(row));
}

int DetailsPanel::neededHeight() const {
    return m_card->layout()->sizeHint().height() + 2 * kCardVerticalMargin;
}

void DetailsPanel::placeCard() {
    const int cardHeight = m_card->layout()->sizeHint().height();
    const int cardWidth = std::max(0, width() - 2 * kCardSideMargin);
    m_card->setGeometry(kCardSideMargin, std::max(0, (height() - cardHeight) / 2), cardWidth, cardHeight);
}

void DetailsPanel::paintEvent(QPaintEvent* /*event*/) {
    QPainter(this).fillRect(rect(), kVeilColor);
}

void DetailsPanel::resizeEvent(QResizeEvent* event) {
    placeCard();
    QWidget::resizeEvent(event);
}

// The veil keeps every click and scroll to itself, so the item table beneath stays as it is while the panel is
// open.
void DetailsPanel::mousePressEvent(QMouseEvent* event) {
    event->accept();
}

void DetailsPanel::mouseReleaseEvent(QMouseEvent* event) {
    event->accept();
}

void DetailsPanel::mouseDoubleClickEvent(QMouseEvent* event) {
    event->accept();
}

void DetailsPanel::wheelEvent(QWheelEvent* event) {
    event->accept();
}

} // namespace tidewell
