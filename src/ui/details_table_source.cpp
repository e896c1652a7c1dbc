#include "ui/details_table_source.hpp"

#include <QLabel>
#include <algorithm>

#include "catalogue/record_keys.hpp"
#include "catalogue/ticks.hpp"
#include "ui/details_panel.hpp"

namespace tidewell {

DetailsTableSource::DetailsTableSource(CellTable& table) : m_table(table) {
    m_table.setDataSource(this);
}

int DetailsTableSource::rowCount() const {
    const RecordList* items = m_section ? m_section->list(keys::kItems) : nullptr;
    return items != nullptr ? static_cast<int>(items->size()) : 0;
}

QWidget* DetailsTableSource::viewForRow(int row, QWidget* reusable) {
    auto* view = qobject_cast<DetailsRow*>(reusable);
    if (view == nullptr) {
        view = new DetailsRow;
        connect(view->checkBox(), &QCheckBox::clicked, this, [this, view] { tickClicked(*view->checkBox()); });
    }
    const RecordList* items = m_section ? m_section->list(keys::kItems) : nullptr;
    if (items == nullptr || row < 0 || static_cast<std::size_t>(row) >= items->size()) {
        return view;
    }
    const Record& item = *(*items)[static_cast<std::size_t>(row)];
    const bool caption = !item.flag(keys::kNotCaption);
    const QString name = QString::fromStdString(item.text(keys::kItemName));
    view->setCaption(caption);
    view->setIndented(!caption && m_section->flag(keys::kGrouped));
    view->checkBox()->setEnabled(item.flag(keys::kEnabled));
    view->checkBox()->setTick(tickOf(item));
    view->checkBox()->setToolTip(name);
    view->nameText()->setText(name);
    view->nameText()->setToolTip(name);
    // An empty size text still counts as one and shows empty; only a row without one hides it.
    view->sizeText()->setVisible(item.has(keys::kSizeText));
    view->sizeText()->setText(QString::fromStdString(item.text(keys::kSizeText)));
    return view;
}

void DetailsTableSource::tickClicked(TickBox& box) {
    if (!m_section) {
        return;
    }
    Tick state = box.tick();
    const bool reload = tickItemNamed(Section(m_section), box.toolTip().toStdString(), state);
    box.setTick(state);
    if (state == Tick::On) {
        // Rows of equal names act on the first, so the first says what goes.
        const std::string name = box.toolTip().toStdString();
        if (const RecordList* items = m_section->list(keys::kItems)) {
            const auto item = std::ranges::find_if(
                *items, [&](const RecordPtr& row) { return row->text(keys::kItemName) == name; });
            if (item != items->end() && !(*item)->role().tickWarning.empty()) {
                const std::string_view what = (*item)->role().tickWarning;
                emit warned(QStringLiteral("Cleaning will remove %1.")
                                .arg(QString::fromUtf8(what.data(), static_cast<qsizetype>(what.size()))));
            }
        }
    }
    if (reload) {
        m_table.reload();
    }
}

} // namespace tidewell
