#pragma once

#include <QWidget>

class QAction;
class QCheckBox;
class QLabel;
class QPushButton;
class QToolButton;

namespace tidewell {

class SpinningIndicator;
class WindowHost;

/// The bar at the bottom of the main window: the three settings boxes (real-time scan, run at start, hide dock
/// icon) with the help button on one line, and the spinning indicator, Refresh and Clean, the one prominent action,
/// on the next. The boxes show the host's choices and follow them; only a person's click changes a choice.
class BottomBar : public QWidget {
    Q_OBJECT
public:
    /// The bar for host, which outlives it.
    explicit BottomBar(WindowHost& host, QWidget* parent = nullptr);

    [[nodiscard]] QCheckBox* realTimeScanBox() const { return m_realTimeScanBox; }
    [[nodiscard]] QCheckBox* runAtStartBox() const { return m_runAtStartBox; }
    [[nodiscard]] QCheckBox* hideTaskbarEntryBox() const { return m_hideTaskbarEntryBox; }
    /// The help button opens a menu: "Tidewell Help" (the help page) and "Restore Default Selection".
    [[nodiscard]] QToolButton* helpButton() const { return m_helpButton; }
    [[nodiscard]] QAction* restoreDefaultsAction() const { return m_restoreDefaults; }
    [[nodiscard]] SpinningIndicator* indicator() const { return m_indicator; }
    [[nodiscard]] QPushButton* refreshButton() const { return m_refreshButton; }
    /// Beside the indicator: the total of what is ticked ("2.7 MB selected"), or while a clean runs how far it has
    /// come ("3 of 12").
    [[nodiscard]] QLabel* statusText() const { return m_statusText; }
    [[nodiscard]] QPushButton* cleanButton() const { return m_cleanButton; }

signals:
    /// "Restore Default Selection" was chosen in the help menu.
    void restoreDefaultSelectionRequested();

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void showChoices();

    WindowHost& m_host;
    QCheckBox* m_realTimeScanBox;
    QCheckBox* m_runAtStartBox;
    QCheckBox* m_hideTaskbarEntryBox;
    QToolButton* m_helpButton;
    QAction* m_restoreDefaults = nullptr;
    SpinningIndicator* m_indicator;
    QLabel* m_statusText;
    QPushButton* m_refreshButton;
    QPushButton* m_cleanButton;
};

} // namespace tidewell
