#include "app/placeholder_main_window.hpp"

#include <QLabel>
#include <QVBoxLayout>

#include "app/app_delegate.hpp"

namespace tidewell {

PlaceholderMainWindow::PlaceholderMainWindow(AppDelegate& delegate, QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("mainWindowID"));
    setWindowTitle(QStringLiteral("Tidewell"));
    auto* layout = new QVBoxLayout(this);
    auto* label = new QLabel(QString::fromStdString(delegate.disk().homePath()), this);
    label->setAlignment(Qt::AlignCenter);
    layout->addWidget(label);
    resize(560, 400);
    delegate.makeAppChanges();
}

} // namespace tidewell
