#include "app/not_access_vc.hpp"

#include <QApplication>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include "app/app_delegate.hpp"
#include "app/open_panel.hpp"

namespace tidewell {

namespace {

QLabel* makeLabel(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignHCenter);
    return label;
}

} // namespace

NotAccessVC::NotAccessVC(AppDelegate* delegate, QWidget* parent) : QWidget(parent), m_delegate(delegate) {
    setObjectName(QStringLiteral("NotAccessWindowID"));
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

    const QString home = m_delegate ? QString::fromStdString(m_delegate->disk().homePath()) : QString();
    auto* path = makeLabel(home, this);
    path->setObjectName(QStringLiteral("homePath"));
    path->setTextInteractionFlags(Qt::TextSelectableByMouse);

    m_closeApp = new QPushButton(QStringLiteral("Quit"), this);
    m_closeApp->setObjectName(QStringLiteral("closeApp"));
    m_confirmAccess = new QPushButton(QStringLiteral("Confirm Access"), this);
    m_confirmAccess->setObjectName(QStringLiteral("confirmAccess"));
    connect(m_closeApp, &QPushButton::clicked, this, &NotAccessVC::closeAppAction);
    connect(m_confirmAccess, &QPushButton::clicked, this, &NotAccessVC::confirmAccessAction);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_closeApp);
    buttons->addStretch();
    buttons->addWidget(m_confirmAccess);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(36, 28, 36, 24);
    layout->setSpacing(12);
    layout->addWidget(icon);
    layout->addWidget(heading);
    layout->addWidget(body);
    layout->addWidget(path);
    layout->addSpacing(14);
    layout->addLayout(buttons);

    awakeFromNib();
    // As tall as the texts need at this width, no more.
    constexpr int kWidth = 480;
    setFixedSize(kWidth, layout->totalHeightForWidth(kWidth));
}

void NotAccessVC::awakeFromNib() {
    // A calm white page; the buttons only push in when pressed and keep no on or off state.
    setAutoFillBackground(true);
    QPalette page = palette();
    page.setColor(QPalette::Window, Qt::white);
    page.setColor(QPalette::WindowText, QColor(40, 40, 40));
    setPalette(page);
    for (QPushButton* button : {m_closeApp, m_confirmAccess}) {
        button->setCheckable(false);
        button->setAutoDefault(false);
        button->setMinimumSize(128, 30);
    }
    m_confirmAccess->setDefault(true);
    // Confirm Access is the one thing to do here, so it alone is filled.
    m_closeApp->setStyleSheet(QStringLiteral("QPushButton { background: white; color: #333; border: 1px solid #c8c8c8; "
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
}

void NotAccessVC::closeAppAction() {
    if (m_delegate) {
        m_delegate->terminateSelf();
    }
}

void NotAccessVC::confirmAccessAction() {
    if (!m_delegate) {
        return;
    }
    const OpenPanelRequest request{QStringLiteral("Confirm Access"),
                                   QStringLiteral("Give access for scanning in your Home Directory"),
                                   QString::fromStdString(m_delegate->disk().homePath()),
                                   [this](const QString& folder) { return panelShouldEnableURL(folder); },
                                   [this](const QString& folder) { return panelValidateURL(folder); }};
    const std::optional<QString> chosen = OpenPanel::run(request, this);
    if (!chosen || !m_delegate->storeFolderGrant(*chosen, {keys::kSaveDirectory})) {
        return;
    }
    QTimer::singleShot(std::chrono::milliseconds(300), m_delegate.data(), &AppDelegate::openMainWindow);
}

bool NotAccessVC::panelShouldEnableURL(const QString& folder) const {
    if (!m_delegate) {
        return false;
    }
    const QString root = QString::fromStdString(m_delegate->diskRootPath());
    const QString chosen = comparablePath(folder);
    return chosen == comparablePath(QString::fromStdString(m_delegate->disk().homePath())) ||
           chosen == comparablePath(root + QStringLiteral("/Users")) || chosen == comparablePath(root);
}

bool NotAccessVC::panelValidateURL(const QString& folder) const {
    return panelShouldEnableURL(folder);
}

} // namespace tidewell
