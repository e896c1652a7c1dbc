#pragma once

#include <QColor>
#include <QWidget>
#include <memory>

#include "catalogue/records.hpp"

class QLabel;
class QPushButton;

namespace tidewell {

class CellTable;
class DetailsTableSource;
class TickBox;

/// The view of one row of the details panel: its tick box, its name and its size. A caption row shows a tinted
/// band behind it and its name in bold; an item row shows neither. The details table's data source sets every part
/// on each reload.
class DetailsRow : public QWidget {
    Q_OBJECT
public:
    explicit DetailsRow(QWidget* parent = nullptr);

    /// The band's tint.
    static const QColor kBandColor;

    [[nodiscard]] QWidget* band() const { return m_band; }
    [[nodiscard]] TickBox* checkBox() const { return m_checkBox; }
    [[nodiscard]] QLabel* nameText() const { return m_nameText; }
    [[nodiscard]] QLabel* sizeText() const { return m_sizeText; }

    /// A caption row: the band shown and the name in bold; otherwise neither.
    void setCaption(bool caption);
    /// Moves the row's tick box and name in by one step, for an item that belongs to a caption above it.
    void setIndented(bool indented);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    QWidget* m_band;
    TickBox* m_checkBox;
    QLabel* m_nameText;
    QLabel* m_sizeText;
    QWidget* m_indent;
};

/// The details panel, in which a person ticks the items of one section one by one. It lies over the whole of the
/// main window's content: a dark veil (white 0.2 at alpha 0.8) that swallows clicks and scrolling, so nothing
/// beneath reacts while it is open, and a white card holding the section's name, the details table and Done.
/// Its ticks edit the catalogue's own records, so a clean sees them.
class DetailsPanel : public QWidget {
    Q_OBJECT
public:
    /// The panel, closed, over parent.
    explicit DetailsPanel(QWidget* parent = nullptr);
    ~DetailsPanel() override;
    DetailsPanel(const DetailsPanel&) = delete;
    DetailsPanel& operator=(const DetailsPanel&) = delete;

    /// The veil's colour.
    static const QColor kVeilColor;
    /// The rows: a grouped section's ("isFromThornsweep", such as "Browser Extensions") are denser and more of them
    /// show before the table scrolls.
    static constexpr int kGroupedRowHeight = 36;
    static constexpr int kPlainRowHeight = 50;
    static constexpr int kGroupedMostRows = 6;
    static constexpr int kPlainMostRows = 4;

    /// Opens the panel on section, the catalogue's own record: its name as the title, its items as rows, the table
    /// as tall as its rows (row height × rows + 2 for the outline, at most kPlainMostRows or kGroupedMostRows rows),
    /// scrolled to its top.
    void open(RecordPtr section);
    /// Done: closes the panel and folds the rows' ticks into the section's own: 1 when every row is ticked, -1 when
    /// some are, 0 when none is (a caption at -1 does not count as ticked). Then closed is emitted.
    void finish();

    /// The section shown, or last shown; null before the first open.
    [[nodiscard]] const RecordPtr& section() const;
    [[nodiscard]] CellTable* table() const { return m_table; }
    /// The view of a row of the table, or null.
    [[nodiscard]] DetailsRow* rowAt(int row) const;
    [[nodiscard]] QPushButton* doneButton() const { return m_done; }
    [[nodiscard]] QLabel* titleText() const { return m_title; }
    /// The one-line warning beside Done, shown once a row is ticked whose clean removes something a person would
    /// miss (saved passwords, an extension, the browsers' settings); hidden at each open.
    [[nodiscard]] QLabel* tickWarning() const { return m_warning; }
    [[nodiscard]] QWidget* card() const { return m_card; }
    /// The height of the table, its outline included.
    [[nodiscard]] int tableHeight() const { return m_tableHeight; }
    /// The height the panel needs to show the whole card.
    [[nodiscard]] int neededHeight() const;

signals:
    /// Done was pressed and the section's tick updated.
    void closed();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void applyLook();
    void placeCard();

    QWidget* m_card;
    QLabel* m_title;
    QLabel* m_warning = nullptr;
    QWidget* m_tableFrame;
    CellTable* m_table;
    QPushButton* m_done;
    std::unique_ptr<DetailsTableSource> m_source;
    int m_tableHeight = 0;
};

} // namespace tidewell
