#include "app/alerts.hpp"

#include <QApplication>
#include <QGridLayout>
#include <QMessageBox>
#include <QPushButton>
#include <algorithm>
#include <deque>
#include <memory>

namespace tidewell {

namespace {

std::deque<int>& queuedAnswers() {
    static std::deque<int> answers;
    return answers;
}

std::vector<AlertContent>& record() {
    static std::vector<AlertContent> alerts;
    return alerts;
}

// Narrower than this, a window manager's frame buttons crowd the alert's title bar.
constexpr int kAlertMinimumWidth = 420;

// A message box that opens centred on the window it is about, rather than wherever its first size put it.
class CentredMessageBox : public QMessageBox {
public:
    using QMessageBox::QMessageBox;

protected:
    void showEvent(QShowEvent* event) override {
        // The box takes its final size from its text here, before it reaches the screen; it is centred after that,
        // still before it is shown.
        QMessageBox::showEvent(event);
        if (const QWidget* over = parentWidget() != nullptr ? parentWidget()->window() : nullptr) {
            move(over->geometry().center() - QPoint(width() / 2, height() / 2));
        }
    }
};

// One QMessageBox shaped as the alert says: bold message, informative text, the application's icon, the buttons in
// order with the first as default.
QMessageBox* makeBox(const AlertContent& content, std::vector<QPushButton*>& buttons) {
    auto* box = new CentredMessageBox(content.parent);
    box->setWindowTitle(QApplication::applicationDisplayName());
    box->setText(content.messageText.isEmpty() ? QString()
                                               : QStringLiteral("<b>%1</b>").arg(content.messageText.toHtmlEscaped()));
    box->setInformativeText(content.informativeText);
    box->setIconPixmap(QApplication::windowIcon().pixmap(48, 48));
    const QStringList titles = content.buttons.isEmpty() ? QStringList{QStringLiteral("OK")} : content.buttons;
    for (int index = 0; index < titles.size(); ++index) {
        // Roles only place the buttons and tell Qt which one Escape presses: the first accepts, the escape button
        // rejects, and any other is an action, so that Escape presses nothing it was not given.
        const QMessageBox::ButtonRole role = index == 0                      ? QMessageBox::AcceptRole
                                             : index == content.escapeButton ? QMessageBox::RejectRole
                                                                             : QMessageBox::ActionRole;
        buttons.push_back(box->addButton(titles[index], role));
    }
    box->setDefaultButton(buttons.front());
    // The box is as large as its text asks, but never so narrow that its title bar is all frame buttons.
    if (auto* grid = qobject_cast<QGridLayout*>(box->layout())) {
        grid->addItem(new QSpacerItem(kAlertMinimumWidth, 0, QSizePolicy::Minimum, QSizePolicy::Fixed),
                      grid->rowCount(), 0, 1, grid->columnCount());
    }
    if (content.escapeButton && *content.escapeButton >= 0 && *content.escapeButton < titles.size()) {
        box->setEscapeButton(buttons[static_cast<std::size_t>(*content.escapeButton)]);
    }
    return box;
}

// The queued test answer, if any; the alert is recorded either way.
std::optional<int> takeQueuedAnswer(const AlertContent& content) {
    record().push_back(content);
    if (queuedAnswers().empty()) {
        return std::nullopt;
    }
    const int answer = queuedAnswers().front();
    queuedAnswers().pop_front();
    return answer;
}

} // namespace

int Alerts::runModal(const AlertContent& content) {
    if (const std::optional<int> answer = takeQueuedAnswer(content)) {
        return *answer;
    }
    std::vector<QPushButton*> buttons;
    const std::unique_ptr<QMessageBox> box(makeBox(content, buttons));
    box->setWindowModality(Qt::ApplicationModal);
    box->exec();
    const auto pressed = std::find(buttons.begin(), buttons.end(), box->clickedButton());
    // Closing the box from its title bar presses nothing; it counts as the last button, the one that declines.
    const auto index =
        pressed == buttons.end() ? buttons.size() - 1 : static_cast<std::size_t>(pressed - buttons.begin());
    return kAlertFirstButton + static_cast<int>(index);
}

bool Alerts::confirm(const QString& messageText, const QString& informativeText, QWidget* parent) {
    return runModal({messageText, informativeText, {QStringLiteral("Yes"), QStringLiteral("No")}, 1, parent}) ==
           kAlertFirstButton;
}

QWidget* Alerts::showSheet(const AlertContent& content) {
    if (takeQueuedAnswer(content)) {
        return nullptr;
    }
    std::vector<QPushButton*> buttons;
    QMessageBox* box = makeBox(content, buttons);
    box->setObjectName(QStringLiteral("alertSheet"));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(content.parent != nullptr ? Qt::WindowModal : Qt::NonModal);
    box->open();
    return box;
}

void Alerts::answerNextAlert(int answer) {
    queuedAnswers().push_back(answer);
}

const std::vector<AlertContent>& Alerts::shownAlerts() {
    return record();
}

void Alerts::clearShownAlerts() {
    record().clear();
}

void Alerts::resetSeam() {
    queuedAnswers().clear();
    record().clear();
}

} // namespace tidewell
