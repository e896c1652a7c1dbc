#pragma once

#include <QObject>

#include "catalogue/records.hpp"
#include "ui/widgets.hpp"

namespace tidewell {

/// The rows of the details table: one DetailsRow per item of the section shown, in order. A row's tick box edits
/// the item's own "isChecked" through the catalogue's tick rules (by the name the box carries as its tool tip, so
/// rows of equal names all act on the first); in a grouped section a caption carries its group and an item its
/// caption's tri-state.
class DetailsTableSource : public QObject, public TableDataSource {
    Q_OBJECT
public:
    /// The source of table, which it fills from now on.
    explicit DetailsTableSource(CellTable& table);

    /// The section shown (the catalogue's own record); the table is not reloaded.
    void setSection(RecordPtr section) { m_section = std::move(section); }
    /// The section shown, or last shown.
    [[nodiscard]] const RecordPtr& section() const { return m_section; }

    [[nodiscard]] int rowCount() const override;
    QWidget* viewForRow(int row, QWidget* reusable) override;

signals:
    /// A row was ticked on whose clean removes something a person would miss; text says what, in one line.
    void warned(const QString& text);

private:
    void tickClicked(TickBox& box);

    CellTable& m_table;
    RecordPtr m_section;
};

} // namespace tidewell
