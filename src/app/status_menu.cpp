#include "app/status_menu.hpp"

#include <QAction>
#include <QApplication>
#include <QCursor>
#include <QIcon>
#include <QMenu>
#include <QPainter>
#include <QSystemTrayIcon>
#include <algorithm>

namespace tidewell {

namespace {

// The status image is a shape whose colour does not count. Tidewell cannot know the colour of the panel its status
// area sits on (a light theme may have a dark panel), so the shape is painted in the desktop's text colour inside a
// rim of its background colour: one of the two always stands out from the panel.
QPixmap tinted(const QPixmap& shape, const QColor& colour) {
    QPixmap pixmap = shape;
    QPainter painter(&pixmap);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(pixmap.rect(), colour);
    return pixmap;
}

QIcon outlinedIcon(const QString& file) {
    const QIcon shape(file);
    const QPalette palette = QApplication::palette();
    const QColor glyph = palette.color(QPalette::WindowText);
    const QColor rim = palette.color(QPalette::Window);
    QIcon icon;
    for (const int size : {16, 22, 24, 32, 48, 64}) {
        // The shape is drawn a little smaller than the icon so that the rim has room at the edges.
        const int rimWidth = std::max(1, size / 16);
        const QPixmap form = shape.pixmap(size - 2 * rimWidth, size - 2 * rimWidth);
        const QPixmap front = tinted(form, glyph);
        const QPixmap back = tinted(form, rim);
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        for (int dx = -rimWidth; dx <= rimWidth; ++dx) {
            for (int dy = -rimWidth; dy <= rimWidth; ++dy) {
                painter.drawPixmap(rimWidth + dx, rimWidth + dy, back);
            }
        }
        painter.drawPixmap(rimWidth, rimWidth, front);
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

} // namespace

StatusMenu::StatusMenu(QObject* parent)
    : QObject(parent), m_menu(std::make_unique<QMenu>(QStringLiteral("StatusMenu"))) {
    m_menu->setObjectName(QStringLiteral("StatusMenu"));
    const auto addEntry = [this](const QString& title, void (StatusMenu::*chosen)()) {
        QAction* entry = m_menu->addAction(title);
        entry->setProperty("keyEquivalent", title);
        connect(entry, &QAction::triggered, this, chosen);
    };
    addEntry(QStringLiteral("Real Time Scan"), &StatusMenu::realTimeScanChosen);
    addEntry(QStringLiteral("Open Main Console"), &StatusMenu::mainWindowChosen);
    addEntry(QStringLiteral("Quit"), &StatusMenu::quitChosen);
}

StatusMenu::~StatusMenu() = default;

void StatusMenu::refresh(bool realTimeScanOn) {
    // The icon is made even while the desktop has no status area: one that appears later then shows it.
    if (!m_icon) {
        m_icon = std::make_unique<QSystemTrayIcon>(outlinedIcon(QStringLiteral(":/icons/status_icon.svg")));
        m_icon->setToolTip(QApplication::applicationDisplayName());
        m_icon->setContextMenu(m_menu.get());
        connect(m_icon.get(), &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason why) {
            if (why == QSystemTrayIcon::Trigger) {
                m_menu->popup(QCursor::pos());
            }
        });
        m_icon->show();
    }
    QAction* first = m_menu->actions().front();
    first->setText(QStringLiteral("Real-time Scan %1")
                       .arg(realTimeScanOn ? QStringLiteral("Enabled") : QStringLiteral("Disabled")));
    first->setCheckable(true);
    first->setChecked(realTimeScanOn);
}

} // namespace tidewell
