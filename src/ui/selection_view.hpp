#pragma once

#include <QColor>
#include <QWidget>

class QLabel;
class QPushButton;

namespace tidewell {

class CellTable;
class TickBox;

/// `ToolsSelectionCell`: the view of one row of the details panel: its tick box, its name and its size. A caption
/// row shows a tinted band behind it (`backBox`) and its name in bold; an item row shows neither. The data source
/// sets every part on each reload.
class ToolsSelectionCell : public QWidget {
    Q_OBJECT
public:
    explicit ToolsSelectionCell(QWidget* parent = nullptr);

    /// The band's tint.
    static const QColor kBandColor;

    [[nodiscard]] QWidget* backBox() const { return m_backBox; }
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
    QWidget* m_backBox;
    TickBox* m_checkBox;
    QLabel* m_nameText;
    QLabel* m_sizeText;
    QWidget* m_indent;
};

/// `SelectionView`: the details panel, laid over the whole of the main window's content: a dark veil (white 0.2 at
/// alpha 0.8) that swallows clicks and scrolling, so nothing beneath it reacts while it is open, and a white card
/// holding the section's name, the panel's table (tag 2) and the Done button.
class SelectionView : public QWidget {
    Q_OBJECT
public:
    explicit SelectionView(QWidget* parent = nullptr);

    /// The veil's colour.
    static const QColor kVeilColor;

    /// `table`: the panel's table, tag 2.
    [[nodiscard]] CellTable* table() const { return m_table; }
    [[nodiscard]] QPushButton* doneButton() const { return m_done; }
    [[nodiscard]] QLabel* titleText() const { return m_title; }
    [[nodiscard]] QWidget* card() const { return m_card; }

    /// `heightSelectionTable`: the height of the table, its outline included.
    void setTableHeight(int height);
    [[nodiscard]] int tableHeight() const { return m_tableHeight; }
    /// The height the view needs to show the whole card.
    [[nodiscard]] int neededHeight() const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void awakeFromNib();
    void placeCard();

    QWidget* m_card;
    QLabel* m_title;
    QWidget* m_tableFrame;
    CellTable* m_table;
    QPushButton* m_done;
    int m_tableHeight = 0;
};

} // namespace tidewell
