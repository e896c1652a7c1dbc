#include "ui/adult_history_info_view.hpp"

#include <QLabel>
#include <QVBoxLayout>

#include "ui/widgets.hpp"

namespace tidewell {

namespace {

QLabel* paragraph(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    setTextColour(*label, kTextColor);
    return label;
}

} // namespace

AdultHistoryInfoView::AdultHistoryInfoView(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("AdultHistoryInfoView"));
    auto* heading = paragraph(QStringLiteral("Adult History"), this);
    QFont bold = heading->font();
    bold.setBold(true);
    heading->setFont(bold);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(8);
    layout->addWidget(heading);
    layout->addWidget(paragraph(
        QStringLiteral("Tidewell removes visits to adult sites from the history of Safari, Chrome and Firefox. A "
                       "visit goes when its address holds a word of Tidewell's word list; the rest of your history "
                       "stays as it is."),
        this));
    layout->addWidget(
        paragraph(QStringLiteral("A browser keeps its history open while it runs, so Tidewell cleans it only once the "
                                 "browsers are closed. With real-time scan on, it does so every hour by itself."),
                  this));
    setFixedSize(sizeHint());
}

QSize AdultHistoryInfoView::sizeHint() const {
    return {kWidth, layout()->totalHeightForWidth(kWidth)};
}

} // namespace tidewell
