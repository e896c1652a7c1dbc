#pragma once

#include <QList>
#include <QPointer>
#include <QWidget>

#include "app/app_delegate.hpp"
#include "app/browser_panel_window.hpp"
#include "catalogue/records.hpp"

class QLabel;
class QPropertyAnimation;
class QPushButton;
class QVBoxLayout;

namespace tidewell {

/// `BrowserView`: the content of the browser panel: a sentence asking for the browsers to be closed, one row per
/// running browser (its icon and its "NameBrowser"), and the buttons Close (`closeWindow`) and Retry (`retry`).
class BrowserView : public QWidget {
    Q_OBJECT
public:
    explicit BrowserView(QWidget* parent = nullptr);

    [[nodiscard]] QPushButton* closeWindow() const { return m_closeWindow; }
    [[nodiscard]] QPushButton* retry() const { return m_retry; }

    /// `browserList`: the entries shown, in order.
    [[nodiscard]] const RecordList& browserList() const { return m_browserList; }
    /// Sets the content to nothing, then adds entries, one row each.
    void setBrowserList(const RecordList& entries);
    /// The rows' name labels, in order.
    [[nodiscard]] QList<QLabel*> rowNames() const;
    /// The rows' image names, in order.
    [[nodiscard]] QStringList rowImages() const;

    /// `fromReport` (unused by the cleaning) and `appDel`.
    [[nodiscard]] bool fromReport() const { return m_fromReport; }
    void setFromReport(bool fromReport) { m_fromReport = fromReport; }
    [[nodiscard]] AppDelegate* appDel() const { return m_appDel; }
    void setAppDel(AppDelegate* appDel) { m_appDel = appDel; }

    /// `closeWindow:`: posts "DismissPanel" and takes the panel off the window (orderedOut).
    void closeWindowAction();
    /// `retryAction:`: posts "RefreshBrowser".
    void retryAction();

signals:
    /// The panel is to go off the window.
    void orderedOut();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QLabel* m_sentence;
    QWidget* m_rows;
    QVBoxLayout* m_rowsLayout;
    QPushButton* m_closeWindow;
    QPushButton* m_retry;
    RecordList m_browserList;
    QStringList m_rowImages;
    bool m_fromReport = false;
    QPointer<AppDelegate> m_appDel;
};

/// `BrowserWindow`: the browser panel as a sheet of the main window. It lies over the window's content under the
/// title bar, dims it and takes every click, so the window waits for an answer while the rest of Tidewell goes on;
/// its BrowserView slides down from under the title bar when the sheet begins. The main window owns it.
class BrowserWindow : public BrowserPanelWindow {
    Q_OBJECT
public:
    /// A panel for mainWindow (a CustomWindow's content is covered below its title bar; any other window whole).
    BrowserWindow(AppDelegate* appDel, QWidget& mainWindow);

    /// `browserView`.
    [[nodiscard]] BrowserView* browserView() const { return m_view; }

    void setBrowserList(const RecordList& entries) override;
    void beginSheet() override;
    void endSheet() override;
    [[nodiscard]] bool isSheetShown() const override { return m_shown; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void placeOverWindow();
    [[nodiscard]] QPoint restingPlace() const;

    BrowserView* m_view;
    QPropertyAnimation* m_slide;
    bool m_shown = false;
};

} // namespace tidewell
