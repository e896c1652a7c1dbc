#include "app/status_menu.hpp"

#include <QAction>
#include <QApplication>
#include <QCursor>
#include <QIcon>
#include <QMenu>
#include <QPainter>
#include <QSystemTrayIcon>

namespace tidewell {

namespace {

// The status image is a template, a shape whose colour does not count: it is painted in the desktop's text colour,
// which suits the status area of a light theme as well as a dark one.
QIcon templateIcon(const QString& file) {
    const QIcon shape(file);
    const QColor colour = QApplication::palette().color(QPalette::WindowText);
    QIcon tinted;
    for (const int size : {16, 22, 24, 32, 48, 64}) {
        QPixmap pixmap = shape.pixmap(size, size);
        QPainter painter(&pixmap);
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(pixmap.rect(), colour);
        painter.end();
        tinted.addPixmap(pixmap);
    }
    tinted.setIsMask(true);
    return tinted;
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
        m_icon = std::make_unique<QSystemTrayIcon>(templateIcon(QStringLiteral(":/icons/status_icon.svg")));
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
