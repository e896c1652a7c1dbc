#pragma once

#include <QList>
#include <QStringList>
#include <QWidget>

#include "catalogue/records.hpp"

class QLabel;
class QPropertyAnimation;
class QPushButton;
class QVBoxLayout;

namespace tidewell {

/// The card of the browser sheet: a sentence asking for the browsers to be closed, one row per running browser (its
/// icon and its "NameBrowser"), and the buttons Close and Retry.
class BrowserSheetCard : public QWidget {
    Q_OBJECT
public:
    explicit BrowserSheetCard(QWidget* parent = nullptr);

    [[nodiscard]] QPushButton* closeButton() const { return m_close; }
    [[nodiscard]] QPushButton* retryButton() const { return m_retry; }

    /// Replaces the rows by one per entry ("NameBrowser", "iconBrowser"), in order.
    void setBrowsers(const RecordList& entries);
    /// The rows' names and image names, in order.
    [[nodiscard]] QStringList rowNames() const;
    [[nodiscard]] QStringList rowImages() const { return m_rowImages; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QLabel* m_sentence;
    QWidget* m_rows;
    QVBoxLayout* m_rowsLayout;
    QPushButton* m_close;
    QPushButton* m_retry;
    QStringList m_rowImages;
};

/// The browser sheet: the browsers that hold a clean back, listed over the main window. It lies over the whole of
/// its parent (the main window's content, under the title bar), dims it and takes every click, so the window waits
/// for an answer while the rest of Tidewell goes on; its card slides down from under the title bar when the sheet
/// begins. Close ends the sheet, which abandons the clean; Retry asks for the check again (retryRequested).
class BrowserSheet : public QWidget {
    Q_OBJECT
public:
    /// A sheet over parent, not begun.
    explicit BrowserSheet(QWidget& parent);

    [[nodiscard]] BrowserSheetCard* card() const { return m_card; }

    /// Sets the rows; a sheet already up stays up and shows the new rows.
    void setBrowsers(const RecordList& entries);
    /// Begins the sheet; a sheet already up stays up.
    void begin();
    /// Ends the sheet; nothing when it is not up.
    void end();
    [[nodiscard]] bool isUp() const { return m_up; }

signals:
    /// Retry was pressed.
    void retryRequested();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void coverParent();
    [[nodiscard]] QPoint restingPlace() const;

    BrowserSheetCard* m_card;
    QPropertyAnimation* m_slide;
    bool m_up = false;
};

} // namespace tidewell
