#include "ui/widgets.hpp"

#include <QPainter>
#include <QScrollBar>
#include <QVBoxLayout>

#include "catalogue/record_keys.hpp"

namespace tidewell {

namespace {

const QColor kAlternateRowColor{244, 247, 249};

} // namespace

Tick tickOf(const Record& record) {
    const std::int64_t value = record.number(keys::kTick).value_or(0);
    return value == 1 ? Tick::On : value == -1 ? Tick::Mixed : Tick::Off;
}

// --- TickBox ---

TickBox::TickBox(QWidget* parent) : QCheckBox(parent) {
    // Mixed is shown, never reached by a click: nextCheckState decides where a click goes.
    setTristate(true);
    setFocusPolicy(Qt::TabFocus);
}

void TickBox::setTick(Tick tick) {
    setCheckState(tick == Tick::On ? Qt::Checked : tick == Tick::Mixed ? Qt::PartiallyChecked : Qt::Unchecked);
}

Tick TickBox::tick() const {
    switch (checkState()) {
    case Qt::Checked:
        return Tick::On;
    case Qt::PartiallyChecked:
        return Tick::Mixed;
    default:
        return Tick::Off;
    }
}

void TickBox::nextCheckState() {
    setCheckState(checkState() == Qt::Checked ? Qt::Unchecked : Qt::Checked);
}

void TickBox::paintEvent(QPaintEvent* event) {
    QCheckBox::paintEvent(event);
    if (!hasFocus()) {
        return;
    }
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 3, 3);
}

// --- ElidedLabel ---

ElidedLabel::ElidedLabel(QWidget* parent) : QWidget(parent), m_color(kMutedTextColor) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void ElidedLabel::setText(const QString& text) {
    if (text == m_text) {
        return;
    }
    m_text = text;
    update();
}

QString ElidedLabel::shownText() const {
    return fontMetrics().elidedText(m_text, Qt::ElideRight, width());
}

void ElidedLabel::setTextColor(const QColor& color) {
    m_color = color;
    update();
}

QSize ElidedLabel::sizeHint() const {
    return {fontMetrics().horizontalAdvance(m_text), fontMetrics().height()};
}

QSize ElidedLabel::minimumSizeHint() const {
    return {0, fontMetrics().height()};
}

void ElidedLabel::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setPen(m_color);
    painter.drawText(rect(), Qt::AlignLeft | Qt::AlignVCenter, shownText());
}

// --- CellTable ---

CellTable::CellTable(QWidget* parent)
    : QScrollArea(parent), m_document(new QWidget), m_layout(new QVBoxLayout(m_document)) {
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setWidgetResizable(true);
    // The rows draw themselves on the table's own white page.
    m_document->setAutoFillBackground(false);
    QPalette page = viewport()->palette();
    page.setColor(QPalette::Window, Qt::white);
    viewport()->setPalette(page);
    viewport()->setAutoFillBackground(true);
    // A slim bar without arrows, quiet until it is needed.
    verticalScrollBar()->setStyleSheet(
        QStringLiteral("QScrollBar:vertical { background: transparent; width: 10px; margin: 3px 2px 3px 0; }"
                       "QScrollBar::handle:vertical { background: #c6cacd; border-radius: 4px; min-height: 28px; }"
                       "QScrollBar::handle:vertical:hover { background: #aab0b4; }"
                       "QScrollBar::add-line:vertical, QScrollBar::sub-line:vertical { height: 0; }"
                       "QScrollBar::add-page:vertical, QScrollBar::sub-page:vertical { background: none; }"));
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setSpacing(0);
    m_layout->addStretch(1);
    setWidget(m_document);
    connect(verticalScrollBar(), &QScrollBar::rangeChanged, this, &CellTable::fitMarginsToScrollBar);
}

void CellTable::reload() {
    ++m_reloads;
    const int count = m_source != nullptr ? std::max(0, m_source->rowCount()) : 0;
    const auto wanted = static_cast<std::size_t>(count);
    while (m_rows.size() > wanted) {
        delete m_rows.back();
        m_rows.pop_back();
    }
    m_rows.resize(wanted, nullptr);
    for (std::size_t row = 0; row < wanted; ++row) {
        QWidget* before = m_rows[row];
        QWidget* view = m_source->viewForRow(static_cast<int>(row), before);
        if (view != before) {
            delete before;
            m_rows[row] = view;
            if (view != nullptr) {
                m_layout->insertWidget(static_cast<int>(row), view);
            }
        }
        if (view != nullptr) {
            view->setFixedHeight(m_rowHeight);
            paintRowBackground(*view, static_cast<int>(row));
            view->show();
        }
    }
}

QWidget* CellTable::viewAtRow(int row) const {
    return row >= 0 && row < numberOfRows() ? m_rows[static_cast<std::size_t>(row)] : nullptr;
}

void CellTable::setRowHeight(int height) {
    m_rowHeight = height;
    for (QWidget* view : m_rows) {
        if (view != nullptr) {
            view->setFixedHeight(height);
        }
    }
}

void CellTable::setAlternatingRows(bool alternate) {
    m_alternate = alternate;
    for (int row = 0; row < numberOfRows(); ++row) {
        if (QWidget* view = viewAtRow(row)) {
            paintRowBackground(*view, row);
        }
    }
}

void CellTable::setRowSpacing(int spacing, QMargins margins) {
    m_layout->setSpacing(spacing);
    m_margins = margins;
    fitMarginsToScrollBar();
}

void CellTable::fitMarginsToScrollBar() {
    // The bar takes its width from the right margin, so the rows keep the same space on both sides whether the
    // table scrolls or not.
    QMargins margins = m_margins;
    if (verticalScrollBar()->maximum() > 0) {
        margins.setRight(std::max(0, margins.right() - verticalScrollBar()->sizeHint().width()));
    }
    m_layout->setContentsMargins(margins);
}

void CellTable::scrollTo(int y) {
    verticalScrollBar()->setValue(y);
}

int CellTable::scrollPosition() const {
    return verticalScrollBar()->value();
}

void CellTable::paintRowBackground(QWidget& view, int row) const {
    // Only tables that alternate fill their rows; the others leave the row views to draw themselves.
    if (!m_alternate) {
        view.setAutoFillBackground(false);
        return;
    }
    QPalette palette = view.palette();
    palette.setColor(QPalette::Window, row % 2 == 1 ? kAlternateRowColor : QColor(Qt::white));
    view.setPalette(palette);
    view.setAutoFillBackground(true);
}

void setTextColour(QWidget& widget, const QColor& colour) {
    QPalette palette = widget.palette();
    palette.setColor(QPalette::WindowText, colour);
    widget.setPalette(palette);
}

// --- Buttons ---

void stylePrimaryButton(QWidget& button) {
    button.setStyleSheet(
        QStringLiteral("QPushButton { background: #2e6e8e; color: white; border: 1px solid #285f7a; border-radius: 6px;"
                       " padding: 5px 18px; font-weight: 600; }"
                       "QPushButton:pressed { background: #245a74; }"
                       "QPushButton:disabled { background: #a9c0cc; border-color: #a9c0cc; color: #eef3f6; }"));
}

void styleSecondaryButton(QWidget& button) {
    button.setStyleSheet(
        QStringLiteral("QPushButton { background: white; color: #333; border: 1px solid #c8c8c8; border-radius: 6px;"
                       " padding: 5px 14px; }"
                       "QPushButton:pressed { background: #ececec; }"
                       "QPushButton:disabled { color: #aaa; border-color: #dddddd; }"));
}

} // namespace tidewell
