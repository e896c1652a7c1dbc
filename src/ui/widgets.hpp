#pragma once

#include <QCheckBox>
#include <QScrollArea>
#include <QString>
#include <QWidget>
#include <vector>

#include "catalogue/records.hpp"

class QVBoxLayout;

namespace tidewell {

/// A record's "isChecked" as a tick box shows it: 1 on, -1 mixed, anything else (absent too) off.
[[nodiscard]] Tick tickOf(const Record& record);

/// A check box that shows three states (on, off, mixed) but is clicked between two: a click on a mixed or an
/// unticked box ticks it, a click on a ticked box unticks it.
class TickBox : public QCheckBox {
    Q_OBJECT
public:
    explicit TickBox(QWidget* parent = nullptr);

    /// Shows a record's tick: 1 on, -1 mixed, anything else off.
    void setTick(Tick tick);
    [[nodiscard]] Tick tick() const;

protected:
    void nextCheckState() override;
    /// The box, and a ring around it while it has the keyboard's focus, whatever the style draws.
    void paintEvent(QPaintEvent* event) override;
};

/// A one-line text that ends in "…" when it does not fit; text() is the whole text.
class ElidedLabel : public QWidget {
    Q_OBJECT
public:
    explicit ElidedLabel(QWidget* parent = nullptr);

    void setText(const QString& text);
    [[nodiscard]] const QString& text() const { return m_text; }
    /// The text as drawn at the current width.
    [[nodiscard]] QString shownText() const;
    void setTextColor(const QColor& color);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_text;
    QColor m_color;
};

class CellTable;

/// What fills one CellTable: its row count and the view of each row.
class TableDataSource {
public:
    virtual ~TableDataSource() = default;
    [[nodiscard]] virtual int rowCount() const = 0;
    /// The view of row, set up from the records. reusable is the view the row had before (or null); returning it
    /// keeps it in place. Null leaves the row empty.
    virtual QWidget* viewForRow(int row, QWidget* reusable) = 0;
};

/// A one-column table of row views in a scrolling area. Every row is rowHeight tall, rows are spacing apart, and
/// with alternating row colours every second row is tinted. The views are made and set up by the data source on
/// each reload; the table keeps no state of its own.
class CellTable : public QScrollArea {
    Q_OBJECT
public:
    explicit CellTable(QWidget* parent = nullptr);

    void setDataSource(TableDataSource* source) { m_source = source; }

    /// Asks the data source for the rows again and lays them out.
    void reload();
    /// How many times reload ran.
    [[nodiscard]] int reloadCount() const { return m_reloads; }

    [[nodiscard]] int numberOfRows() const { return static_cast<int>(m_rows.size()); }
    /// The view of row, or null.
    [[nodiscard]] QWidget* viewAtRow(int row) const;

    void setRowHeight(int height);
    [[nodiscard]] int rowHeight() const { return m_rowHeight; }
    void setAlternatingRows(bool alternate);
    [[nodiscard]] bool alternatesRows() const { return m_alternate; }
    /// The space around and between rows.
    void setRowSpacing(int spacing, QMargins margins);

    /// The vertical scroll position (the document view's visible top).
    void scrollTo(int y);
    [[nodiscard]] int scrollPosition() const;

private:
    void paintRowBackground(QWidget& view, int row) const;
    void fitMarginsToScrollBar();

    TableDataSource* m_source = nullptr;
    QWidget* m_document;
    QVBoxLayout* m_layout;
    std::vector<QWidget*> m_rows;
    QMargins m_margins;
    int m_rowHeight = 50;
    bool m_alternate = false;
    int m_reloads = 0;
};

/// The look shared by the window's buttons: the one prominent action is filled with Tidewell's colour, the others
/// are plain.
void stylePrimaryButton(QWidget& button);
void styleSecondaryButton(QWidget& button);

/// Gives a label (or any widget drawing text) the colour of its text.
void setTextColour(QWidget& widget, const QColor& colour);

/// Tidewell's colour, and the greys of its texts.
inline const QColor kAccentColor{46, 110, 142};
inline const QColor kTextColor{38, 38, 38};
inline const QColor kMutedTextColor{118, 118, 118};

} // namespace tidewell
