#include "app/access_window.hpp"

#include <QApplication>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QTimer>
#include <QVBoxLayout>

#include "app/folder_access.hpp"
#include "app/folder_panel.hpp"

namespace tidewell {

namespace {

QLabel* makeLabel(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignHCenter);
    return label;
}

} // namespace

AccessWindow::AccessWindow(FolderAccess& access, QWidget* parent) : QWidget(parent), m_access(access) {
    setObjectName(QStringLiteral("accessWindow"));
    setWindowTitle(QStringLiteral("Tidewell"));

    auto* icon = new QLabel(this);
    icon->setPixmap(QIcon(QStringLiteral(":/icons/tidewell.svg")).pixmap(72, 72));
    icon->setAlignment(Qt::AlignHCenter);

    auto* heading = makeLabel(QStringLiteral("Allow Tidewell into your Home folder"), this);
    QFont headingFont = heading->font();
    headingFont.setPointSizeF(headingFont.pointSizeF() * 1.35);
    headingFont.setBold(true);
    heading->setFont(headingFont);

    auto* body = makeLabel(
        QStringLiteral("Tidewell finds the traces that browsers, Mail and the system leave in your Home folder, "
                       "and removes only what you tick. It may look there once you allow it: choose Confirm "
                       "Access, then confirm your Home folder in the panel that opens. You are asked only once."),
        this);

    auto* path = makeLabel(QString::fromStdString(m_access.disk().homePath()), this);
    path->setObjectName(QStringLiteral("homePath"));
    path->setTextInteractionFlags(Qt::TextSelectableByMouse);

    m_wrongFolder = makeLabel(QString(), this);
    m_wrongFolder->setObjectName(QStringLiteral("wrongFolder"));
    m_wrongFolder->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_wrongFolder->hide();

    m_quit = new QPushButton(QStringLiteral("Quit"), this);
    m_quit->setObjectName(QStringLiteral("quitButton"));
    m_confirmAccess = new QPushButton(QStringLiteral("Confirm Access"), this);
    m_confirmAccess->setObjectName(QStringLiteral("confirmAccessButton"));
    connect(m_quit, &QPushButton::clicked, this, &AccessWindow::quitRequested);
    connect(m_confirmAccess, &QPushButton::clicked, this, &AccessWindow::confirmAccess);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_quit);
    buttons->addStretch();
    buttons->addWidget(m_confirmAccess);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(36, 28, 36, 24);
    layout->setSpacing(12);
    layout->addWidget(icon);
    layout->addWidget(heading);
    layout->addWidget(body);
    layout->addWidget(path);
    layout->addWidget(m_wrongFolder);
    layout->addSpacing(14);
    layout->addLayout(buttons);

    // Return confirms, as the filled button shows; Escape is the other way out, Quit.
    for (const QKeySequence& key : {QKeySequence(Qt::Key_Return), QKeySequence(Qt::Key_Enter)}) {
        connect(new QShortcut(key, this), &QShortcut::activated, m_confirmAccess, &QPushButton::click);
    }
    connect(new QShortcut(QKeySequence(Qt::Key_Escape), this), &QShortcut::activated, m_quit, &QPushButton::click);

    applyLook();
    fitHeight();
}

void AccessWindow::fitHeight() {
    // As tall as the texts need at this width, no more.
    constexpr int kWidth = 480;
    setFixedSize(kWidth, layout()->totalHeightForWidth(kWidth));
}

void AccessWindow::applyLook() {
    // A calm white page; the buttons only push in when pressed and keep no on or off state.
    setAutoFillBackground(true);
    QPalette page = palette();
    page.setColor(QPalette::Window, Qt::white);
    page.setColor(QPalette::WindowText, QColor(40, 40, 40));
    setPalette(page);
    for (QPushButton* button : {m_quit, m_confirmAccess}) {
        button->setCheckable(false);
        button->setAutoDefault(false);
        button->setMinimumSize(128, 30);
    }
    m_confirmAccess->setDefault(true);
    // Confirm Access is the one thing to do here, so it alone is filled.
    m_quit->setStyleSheet(QStringLiteral("QPushButton { background: white; color: #333; border: 1px solid #c8c8c8; "
                                         "border-radius: 6px; padding: 4px 14px; }"
                                         "QPushButton:pressed { background: #ececec; }"));
    m_confirmAccess->setStyleSheet(QStringLiteral("QPushButton { background: #2e6e8e; color: white; border: 1px solid "
                                                  "#285f7a; border-radius: 6px; padding: 4px 14px; }"
                                                  "QPushButton:pressed { background: #245a74; }"));
    if (QLabel* path = findChild<QLabel*>(QStringLiteral("homePath"))) {
        QPalette muted = path->palette();
        muted.setColor(QPalette::WindowText, QColor(120, 120, 120));
        path->setPalette(muted);
    }
    QPalette warning = m_wrongFolder->palette();
    warning.setColor(QPalette::WindowText, QColor(178, 34, 34));
    m_wrongFolder->setPalette(warning);
}

void AccessWindow::closeEvent(QCloseEvent* event) {
    QWidget::closeEvent(event);
    emit quitRequested();
}

void AccessWindow::confirmAccess() {
    const auto offered = [this](const QString& folder) { return m_access.offers(folder); };
    const QString home = QString::fromStdString(m_access.disk().homePath());
    // The panel takes any folder, so that a wrong one gets an answer here instead of a button that does nothing.
    const FolderPanelRequest request{QStringLiteral("Confirm Access"),
                                     QStringLiteral("Give access for scanning in your Home Directory"), home, offered,
                                     [](const QString&) { return true; }};
    const std::optional<QString> chosen = FolderPanel::choose(request, this);
    if (!chosen) {
        return;
    }
    if (!m_access.offers(*chosen)) {
        m_wrongFolder->setText(
            QStringLiteral("%1 is not the folder Tidewell needs. Choose your Home folder: %2").arg(*chosen, home));
        m_wrongFolder->show();
        fitHeight();
        return;
    }
    m_wrongFolder->hide();
    if (!m_access.grantChosenFolder(*chosen)) {
        return;
    }
    QTimer::singleShot(kHandOverDelay, this, &AccessWindow::granted);
}

} // namespace tidewell
