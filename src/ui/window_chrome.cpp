#include "ui/window_chrome.hpp"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QVBoxLayout>
#include <QWindow>

#include "ui/compositing.hpp"
#include "ui/icons.hpp"
#include "ui/widgets.hpp"

namespace tidewell {

namespace {

// The outline drawn just inside the window's edge: a frameless window has no shadow of its own on many desktops,
// so a fine line keeps it apart from what lies behind.
const QColor kWindowOutline{200, 200, 200};
const QColor kWindowBackground{Qt::white};

constexpr int kWindowButtonSize = 14;

// A rectangle with only its top corners rounded.
QPainterPath topRoundedRect(const QRectF& rect, qreal radius) {
    QPainterPath path;
    path.moveTo(rect.bottomLeft());
    path.lineTo(rect.left(), rect.top() + radius);
    path.quadTo(rect.topLeft(), QPointF(rect.left() + radius, rect.top()));
    path.lineTo(rect.right() - radius, rect.top());
    path.quadTo(rect.topRight(), QPointF(rect.right(), rect.top() + radius));
    path.lineTo(rect.bottomRight());
    path.closeSubpath();
    return path;
}

} // namespace

// --- WindowButton ---

WindowButton::WindowButton(Kind kind, QWidget* parent) : QAbstractButton(parent), m_kind(kind) {
    setObjectName(kind == Kind::Quit ? QStringLiteral("quitButton") : QStringLiteral("minimiseButton"));
    setToolTip(kind == Kind::Quit ? QStringLiteral("Quit Tidewell") : QStringLiteral("Minimise"));
    setCursor(Qt::ArrowCursor);
    setFocusPolicy(Qt::NoFocus);
    setFixedSize(sizeHint());
}

QSize WindowButton::sizeHint() const {
    return {kWindowButtonSize, kWindowButtonSize};
}

void WindowButton::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QString image = m_kind == Kind::Quit ? QStringLiteral("window_quit") : QStringLiteral("window_minimise");
    painter.drawPixmap(rect(), imagePixmap(image, kWindowButtonSize, devicePixelRatioF()));
    if (m_hovered || isDown()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(0, 0, 0, isDown() ? 60 : 28));
        painter.drawEllipse(QRectF(rect()));
    }
}

void WindowButton::enterEvent(QEnterEvent* event) {
    m_hovered = true;
    update();
    QAbstractButton::enterEvent(event);
}

void WindowButton::leaveEvent(QEvent* event) {
    m_hovered = false;
    update();
    QAbstractButton::leaveEvent(event);
}

// --- TitleBar ---

TitleBar::TitleBar(QWidget* parent)
    : QWidget(parent), m_title(new QLabel(this)), m_quit(new WindowButton(WindowButton::Kind::Quit, this)),
      m_minimise(new WindowButton(WindowButton::Kind::Minimise, this)) {
    setObjectName(QStringLiteral("TitleBar"));
    setFixedHeight(kHeight);
    m_title->setObjectName(QStringLiteral("windowTitle"));
    m_title->setAlignment(Qt::AlignCenter);
    QFont font = m_title->font();
    font.setWeight(QFont::DemiBold);
    m_title->setFont(font);
    setTextColour(*m_title, QColor(70, 70, 70));
    // The title sits in the middle of the whole bar, whatever the buttons take on the left: it is laid over them
    // rather than beside them, and lets the pointer through to the bar.
    m_title->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_title->lower();

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(13, 0, 13, 0);
    layout->setSpacing(8);
    layout->addWidget(m_quit);
    layout->addWidget(m_minimise);
    layout->addStretch(1);
}

void TitleBar::setTitle(const QString& title) {
    m_title->setText(title);
}

QString TitleBar::title() const {
    return m_title->text();
}

void TitleBar::resizeEvent(QResizeEvent* event) {
    m_title->setGeometry(rect());
    QWidget::resizeEvent(event);
}

void TitleBar::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient light(0, 0, 0, height());
    light.setColorAt(0, QColor(252, 252, 252));
    light.setColorAt(1, QColor(243, 244, 245));
    const qreal radius = window()->testAttribute(Qt::WA_TranslucentBackground) ? FramelessWindow::kCornerRadius - 1 : 0;
    painter.fillPath(topRoundedRect(QRectF(rect()), radius), light);
    painter.setPen(QColor(224, 224, 224));
    painter.drawLine(QPointF(0, height() - 0.5), QPointF(width(), height() - 0.5));
}

void TitleBar::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    event->accept();
    QWindow* handle = window()->windowHandle();
    if (handle != nullptr && handle->startSystemMove()) {
        return;
    }
    m_grab = event->globalPosition().toPoint() - window()->pos();
}

void TitleBar::mouseMoveEvent(QMouseEvent* event) {
    if (!m_grab || (event->buttons() & Qt::LeftButton) == 0) {
        QWidget::mouseMoveEvent(event);
        return;
    }
    event->accept();
    window()->move(event->globalPosition().toPoint() - *m_grab);
}

void TitleBar::mouseReleaseEvent(QMouseEvent* event) {
    m_grab.reset();
    QWidget::mouseReleaseEvent(event);
}

// --- FramelessWindow ---

FramelessWindow::FramelessWindow(QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::FramelessWindowHint), m_titleBar(new TitleBar(this)),
      m_layout(new QVBoxLayout(this)) {
    setObjectName(QStringLiteral("mainWindow"));
    setWindowTitle(QApplication::applicationDisplayName());
    // The corners outside the rounded outline stay see-through where a compositor can show through them; without
    // one they would be black, so the window is square and opaque.
    setAttribute(Qt::WA_TranslucentBackground, desktopComposites());
    m_titleBar->setTitle(QApplication::applicationDisplayName());
    // One pixel of margin keeps the outline visible around the bar and the content.
    m_layout->setContentsMargins(1, 1, 1, 1);
    m_layout->setSpacing(0);
    m_layout->setSizeConstraint(QLayout::SetFixedSize);
    m_layout->addWidget(m_titleBar);
    connect(m_titleBar->quitButton(), &QAbstractButton::clicked, this, &FramelessWindow::quitRequested);
    connect(m_titleBar->minimiseButton(), &QAbstractButton::clicked, this, &FramelessWindow::minimiseRequested);
}

void FramelessWindow::setContentView(QWidget* view) {
    delete m_content.data();
    m_content = view;
    if (view != nullptr) {
        m_layout->addWidget(view);
    }
}

QRect FramelessWindow::contentRect() const {
    const QMargins margins = m_layout->contentsMargins();
    return rect().marginsRemoved(margins).adjusted(0, m_titleBar->height(), 0, 0);
}

void FramelessWindow::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF outline = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setPen(QPen(kWindowOutline, 1));
    painter.setBrush(kWindowBackground);
    const qreal radius = isRounded() ? kCornerRadius : 0;
    painter.drawRoundedRect(outline, radius, radius);
}

} // namespace tidewell
