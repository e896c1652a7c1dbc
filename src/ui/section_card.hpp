#pragma once

#include <QColor>
#include <QString>
#include <QWidget>

class QLabel;
class QPushButton;
class QToolButton;

namespace tidewell {

class ElidedLabel;
class TickBox;

/// The view of one row of the item table, a light grey card: the section's icon, its tick box, its name in bold
/// over a one-line summary, its size on the right and the details button at the far right. The "Adult History"
/// card shows an info button beside its name; the promotion card a button to the promoted product instead of the
/// tick box, size and details button. The card holds nothing of its own but the row it shows: the item table's data
/// source sets every part from the section on each reload.
class SectionCard : public QWidget {
    Q_OBJECT
public:
    explicit SectionCard(QWidget* parent = nullptr);

    static constexpr int kHeight = 65;
    /// The card's grey: 236/255 in each channel, opaque.
    static const QColor kBackgroundColor;

    /// The catalogue row the card shows.
    void setRow(int row) { m_row = row; }
    [[nodiscard]] int row() const { return m_row; }

    [[nodiscard]] QLabel* imageIcon() const { return m_imageIcon; }
    [[nodiscard]] TickBox* checkBox() const { return m_checkBox; }
    [[nodiscard]] QLabel* nameText() const { return m_nameText; }
    [[nodiscard]] QLabel* sizeText() const { return m_sizeText; }
    [[nodiscard]] ElidedLabel* detailsText() const { return m_detailsText; }
    [[nodiscard]] QToolButton* detailsButton() const { return m_detailsButton; }
    [[nodiscard]] QPushButton* promotionButton() const { return m_promotionButton; }
    [[nodiscard]] QToolButton* infoButton() const { return m_infoButton; }

    /// Shows the image of that name as the row's icon.
    void setImageName(const QString& name);
    [[nodiscard]] const QString& imageName() const { return m_imageName; }

    [[nodiscard]] QColor backgroundColor() const { return kBackgroundColor; }

protected:
    /// The grey card, outlined while its tick box has the keyboard's focus.
    void paintEvent(QPaintEvent* event) override;
    /// A click anywhere on the card but its buttons (its icon, name, summary, size) clicks its tick box.
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void applyLook();

    QLabel* m_imageIcon;
    TickBox* m_checkBox;
    QLabel* m_nameText;
    QToolButton* m_infoButton;
    ElidedLabel* m_detailsText;
    QLabel* m_sizeText;
    QToolButton* m_detailsButton;
    QPushButton* m_promotionButton;
    int m_row = -1;
    QString m_imageName;
};

} // namespace tidewell
