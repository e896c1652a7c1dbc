#pragma once

#include <QObject>
#include <QUrl>

#include "catalogue/scan_driver.hpp"
#include "ui/widgets.hpp"

namespace tidewell {

class SectionCard;

/// The rows of the item table: one SectionCard per section of the catalogue, in order. What a card shows:
/// - the promotion row (a section with a "Type"): the promoted product, "Thornsweep", "Detects and Removes Adware",
///   and its button, which opens the product's page; no tick box, size or details button;
/// - any other section: its icon, name and size, its tick box (-1 shows mixed) and details button, both enabled as
///   its "isEnabled" says, and a summary (also the card's tool tip): fixed texts for "Chrome", "Browser
///   Extensions" and "Adult History" (which shows no size, but an info button), else its items' names joined with
///   ", ".
/// A tick box passes its tick to the section's items through the catalogue's tick rules.
class ItemTableSource : public QObject, public TableDataSource {
    Q_OBJECT
public:
    /// The source of table, showing catalogue, which it fills from now on.
    ItemTableSource(CellTable& table, const Catalogue& catalogue);

    /// The promoted product's page (an address of Tidewell's makers, like the help page).
    [[nodiscard]] static QUrl promotionPageUrl();

    [[nodiscard]] int rowCount() const override;
    QWidget* viewForRow(int row, QWidget* reusable) override;

signals:
    /// A section's tick box was clicked; the section and its items took the tick.
    void ticked();
    /// A tick turned on rows whose clean removes something a person would miss; text says what, in one line. It
    /// comes before the ticked() of that click.
    void warned(const QString& text);
    /// A section's details button was clicked.
    void detailsRequested(int row);
    /// The "Adult History" card's info button was clicked.
    void infoRequested(QWidget& button);

private:
    void tickClicked(SectionCard& card);

    const Catalogue& m_catalogue;
};

} // namespace tidewell
