#include "ui/item_table_source.hpp"

#include <QDesktopServices>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>

#include "catalogue/record_keys.hpp"
#include "catalogue/ticks.hpp"
#include "ui/icons.hpp"
#include "ui/section_card.hpp"

namespace tidewell {

namespace {

const QString kChromeSummary = QStringLiteral(
    "Cookies, Visited Links, History, Login Data, LastSession, User preferences, Favicons, Top Sites, Local Storage");
const QString kExtensionsSummary = QStringLiteral("Browser extensions, Preferences");
const QString kAdultHistorySummary = QStringLiteral("All Adult Browser history");
const QString kPromotionName = QStringLiteral("Thornsweep");
const QString kPromotionSummary = QStringLiteral("Detects and Removes Adware");

// The summary of an ordinary section: its items' names, in order.
QString itemNames(const Record& section) {
    QStringList names;
    if (const RecordList* items = section.list(keys::kItems)) {
        for (const RecordPtr& item : *items) {
            names.push_back(QString::fromStdString(item->text(keys::kItemName)));
        }
    }
    return names.join(QStringLiteral(", "));
}

void showPromotion(SectionCard& card) {
    card.checkBox()->hide();
    card.setImageName(QStringLiteral("promotion"));
    card.detailsText()->setText(kPromotionSummary);
    card.sizeText()->hide();
    card.nameText()->setText(kPromotionName);
    card.detailsButton()->hide();
    card.promotionButton()->show();
    // A reused card must not keep another section's tool tip.
    card.setToolTip(QString());
}

void showSection(SectionCard& card, const Record& section) {
    card.checkBox()->show();
    card.detailsButton()->show();
    card.sizeText()->show();
    card.promotionButton()->hide();
    const std::string& name = section.text(keys::kName);
    card.nameText()->setText(QString::fromStdString(name));
    QString summary;
    QString size = QString::fromStdString(section.text(keys::kSize));
    if (name == "Chrome") {
        summary = kChromeSummary;
    } else if (name == "Browser Extensions") {
        summary = kExtensionsSummary;
    } else if (name == "Adult History") {
        size.clear();
        summary = kAdultHistorySummary;
        card.infoButton()->show();
    } else {
        summary = itemNames(section);
    }
    card.sizeText()->setText(size);
    card.detailsText()->setText(summary);
    card.setToolTip(summary);
    card.setImageName(sectionImageName(section.text(keys::kImage)));
    card.checkBox()->setTick(tickOf(section));
    const bool enabled = section.flag(keys::kEnabled);
    card.detailsButton()->setEnabled(enabled);
    card.checkBox()->setEnabled(enabled);
}

} // namespace

ItemTableSource::ItemTableSource(CellTable& table, const Catalogue& catalogue) : m_catalogue(catalogue) {
    table.setDataSource(this);
}

QUrl ItemTableSource::promotionPageUrl() {
    return QUrl(QStringLiteral("https://tidewell.app/thornsweep"));
}

int ItemTableSource::rowCount() const {
    return static_cast<int>(m_catalogue.size());
}

QWidget* ItemTableSource::viewForRow(int row, QWidget* reusable) {
    auto* card = qobject_cast<SectionCard*>(reusable);
    if (card == nullptr) {
        card = new SectionCard;
        connect(card->checkBox(), &QCheckBox::clicked, this, [this, card] { tickClicked(*card); });
        connect(card->detailsButton(), &QToolButton::clicked, this,
                [this, card] { emit detailsRequested(card->row()); });
        connect(card->infoButton(), &QToolButton::clicked, this,
                [this, card] { emit infoRequested(*card->infoButton()); });
        connect(card->promotionButton(), &QPushButton::clicked, this,
                [] { QDesktopServices::openUrl(promotionPageUrl()); });
    }
    card->setRow(row);
    card->infoButton()->hide();
    const RecordPtr section = row >= 0 ? m_catalogue.at(static_cast<std::size_t>(row)) : nullptr;
    if (!section) {
        return card;
    }
    if (section->has(keys::kType)) {
        showPromotion(*card);
    } else {
        showSection(*card, *section);
    }
    return card;
}

void ItemTableSource::tickClicked(SectionCard& card) {
    if (card.row() < 0) {
        return;
    }
    TickBox& box = *card.checkBox();
    box.setTick(tickSection(m_catalogue, static_cast<std::size_t>(card.row()), box.tick()));
    if (box.tick() == Tick::On) {
        // The card ticks every row, those a person keeps on purpose too: say what they take with them.
        QStringList what;
        if (const RecordPtr section = m_catalogue.at(static_cast<std::size_t>(card.row()))) {
            for (const Item& item : Section(section).items()) {
                const std::string_view warning = item.record()->role().tickWarning;
                const QString text = QString::fromUtf8(warning.data(), static_cast<qsizetype>(warning.size()));
                if (item.isTicked() && !text.isEmpty() && !what.contains(text)) {
                    what.append(text);
                }
            }
        }
        if (!what.isEmpty()) {
            const QString last = what.takeLast();
            emit warned(QStringLiteral("Cleaning will remove %1.")
                            .arg(what.isEmpty() ? last
                                                : QStringLiteral("%1 and %2").arg(what.join(QStringLiteral(", ")), last)));
        }
    }
    emit ticked();
}

} // namespace tidewell
