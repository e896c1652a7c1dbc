#pragma once

#include <QPointer>
#include <QUrl>
#include <QWidget>
#include <memory>
#include <optional>
#include <vector>

#include "app/app_delegate.hpp"
#include "catalogue/scan_driver.hpp"
#include "cleaning/adult_words.hpp"
#include "layout/disk_root.hpp"
#include "platform/running_apps.hpp"
#include "ui/qt_main_thread.hpp"
#include "ui/widgets.hpp"

class QAbstractButton;
class QCheckBox;
class QLabel;
class QPushButton;
class QToolButton;

namespace tidewell {

class INPopoverController;
class ITProgressIndicator;
class SelectionView;
class ToolsCell;
class ToolsSelectionCell;

/// What a ToolsViewController is made with besides its delegate and disk.
struct ToolsViewOptions {
    /// The section builders, in order; none given: those of the disk's layout (sectionBuilders).
    std::optional<std::vector<SectionBuilder>> builders;
    /// Which applications run, for the browser check before a clean; none given: this machine's processes.
    std::shared_ptr<const RunningApplications> running;
};

/// `ToolsViewController`: the content of the main window. It owns the catalogue (through its scan
/// driver), shows it in the item table (tag 1) with one ToolsCell per section, opens the details panel
/// (SelectionView, whose table is tag 2) for one section, runs the Clean and Retry paths, and holds the settings
/// check boxes, the help button, the spinning indicator (`scannignIndicator`), Refresh and Clean (`removeButton`).
///
/// It keeps no tick logic of its own: ticking calls the catalogue's operations (tickSection, tickItemNamed,
/// settleSectionTick, anythingToClean) and cleaning the cleaning engine's.
/// The scan runs on its own thread and hands over here after each section; nothing else reaches the file system
/// from the window but the clean, which runs on the main thread as the Clean and Retry paths do.
///
/// Made, it loads: it reads the adult word list, hides the details panel, observes "RefreshBrowser", asks the
/// delegate to restore the settings (its check boxes follow the delegate from then on) and starts the first scan.
class ToolsViewController : public QWidget, public ScanObserver, public TableDataSource {
    Q_OBJECT
public:
    /// appDel may be null (no settings, no help, no panel, and a clean that removes nothing).
    ToolsViewController(AppDelegate* appDel, DiskRoot disk, ToolsViewOptions options = {}, QWidget* parent = nullptr);
    /// Ends the scan first: its thread is stopped and joined before anything it could hand over to goes.
    ~ToolsViewController() override;
    ToolsViewController(const ToolsViewController&) = delete;
    ToolsViewController& operator=(const ToolsViewController&) = delete;

    /// The width of the main window's content.
    static constexpr int kWidth = 558;
    /// The table area's heights: empty, per section (a 65-point card and 10 of space), the extra, and the most.
    static constexpr int kEmptyTableHeight = 91;
    static constexpr int kRowStep = 75;
    static constexpr int kTableExtra = 15;
    static constexpr int kMostTableHeight = 389;
    /// The sections shown before the table scrolls.
    static constexpr int kMostRowsUnscrolled = 5;
    /// The store page of the promoted product (an address of Tidewell's makers, like the help page).
    [[nodiscard]] static QUrl thornsweepStoreUrl();

    // --- Catalogue and scan ---

    [[nodiscard]] Catalogue& catalogue() { return m_driver->catalogue(); }
    [[nodiscard]] ScanDriver& scanDriver() { return *m_driver; }
    [[nodiscard]] const AdultWords& adultWords() const { return m_adultWords; }

    /// Starts a scan unless one runs or is done (ScanDriver::startScan).
    void startScan();
    /// Refresh: a fresh scan even after a finished one.
    void refresh();

    // ScanObserver: the hand-overs of the scan, on the main thread.
    void startIndicator() override;
    void stopIndicator() override;
    /// Sizes the table area for the sections there are (hidden and 91 with none, 75 x n + 15 for 1 to 5, 389 for
    /// 6 or more, which scrolls), then reloadTableAndUI.
    void sectionsChanged() override;
    void scanFinished() override;

    /// Reloads the item table and enables Clean exactly when removeButtonEnabled says.
    void reloadTableAndUI();

    // --- The item table (tag 1) and the details panel (tag 2) ---

    /// The sections for tag 1, the shown section's items for tag 2, none for any other table.
    [[nodiscard]] int numberOfRowsInTableView(const CellTable& table) override;
    /// The row views; a table of another tag logs "ERROR" and gets none.
    QWidget* tableViewForRow(CellTable& table, int row, QWidget* reusable) override;

    /// The table area's height (the "height" constraint).
    [[nodiscard]] int tableHeight() const { return m_height; }
    [[nodiscard]] CellTable* itemTable() const { return m_itemTable; }
    /// The view of an item-table row, or null.
    [[nodiscard]] ToolsCell* cellAt(int row) const;

    /// A section row's tick box was clicked: the catalogue's checkBoxAction for the box's row, then a reload.
    void checkBoxAction(TickBox& sender);
    /// Opens the details panel for the section of row (the details button's tag).
    void showDetailsFor(int row);
    /// A panel row's tick box was clicked: the catalogue's selectionCheckBoxAction for the name the box carries as
    /// its tool tip; the panel's table is reloaded unless the catalogue says not to.
    void selectionCheckBoxAction(TickBox& sender);
    /// Done: closes the panel, folds its ticks into the section's own, reloads.
    void doneActionFromselectionView();
    [[nodiscard]] SelectionView* selectionView() const { return m_selectionView; }
    /// The view of a panel row, or null.
    [[nodiscard]] ToolsSelectionCell* selectionCellAt(int row) const;
    /// `toolsSelectedDic`: the section the panel shows, or last showed (the catalogue's own record).
    [[nodiscard]] const RecordPtr& toolsSelectedDic() const { return m_toolsSelectedDic; }
    /// `heightSelectionTable`.
    [[nodiscard]] int heightSelectionTable() const;

    /// The "Adult History" row's info: AdultHistoryInfoView in a white popover pointing at sender.
    void adultHistoryInfoClick(QWidget& sender);
    /// The popover of adultHistoryInfoClick; null before the first click.
    [[nodiscard]] INPopoverController* adultHistoryPopover() const { return m_adultHistoryPopover.get(); }
    /// The promotion row's button: opens the promoted product's store page in the browser.
    void RedirectToThornsweepPath();

    // --- Cleaning ---

    /// Clean: the confirmation and the browser check; with no browser in the way, the indicator, and a second
    /// later the clean, both scan flags cleared, the indicator stopped and a fresh scan. With browsers in the way
    /// the panel shows them and Retry takes over.
    void cleanAndReloadData();
    /// "RefreshBrowser" (the panel's Retry): checks the browsers again without asking; when none is in the way
    /// any more, cleans, clears both flags, rescans and ends the panel.
    void refreshBrowser();
    /// Removes every ticked item of the catalogue, inside the delegate's granted folder only (with none, nothing).
    void cleanSelected();

    // --- Bottom bar ---

    /// The settings check boxes' actions: the delegate stores and applies each.
    void realTimeScanChange(bool on);
    void runAtStartupChange(bool on);
    void hideDockChange(bool hide);
    /// The check boxes show the delegate's current settings.
    void restoreSettingsBoxes();
    /// Help: the delegate's help page.
    void getHelp();

    [[nodiscard]] QPushButton* removeButton() const { return m_removeButton; }
    [[nodiscard]] QPushButton* refreshButton() const { return m_refreshButton; }
    [[nodiscard]] QToolButton* helpButton() const { return m_helpButton; }
    [[nodiscard]] QCheckBox* realTimeScanBox() const { return m_realTimeScanBox; }
    [[nodiscard]] QCheckBox* runAtStartBox() const { return m_runAtStartBox; }
    [[nodiscard]] QCheckBox* hideDockBox() const { return m_hideDockBox; }
    [[nodiscard]] ITProgressIndicator* scannignIndicator() const { return m_scannignIndicator; }

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void viewDidLoad();
    QWidget* makeBottomBar();
    QWidget* itemRow(int row, QWidget* reusable);
    QWidget* selectionRow(int row, QWidget* reusable);
    [[nodiscard]] bool confirmClean();
    void rescanAfterClean();

    QPointer<AppDelegate> m_appDel;
    DiskRoot m_disk;
    std::shared_ptr<const RunningApplications> m_running;
    AdultWords m_adultWords;
    QtMainThread m_mainThread;
    std::unique_ptr<ScanDriver> m_driver;
    RecordPtr m_toolsSelectedDic;
    int m_height = kEmptyTableHeight;

    QWidget* m_tableArea = nullptr;
    CellTable* m_itemTable = nullptr;
    QLabel* m_emptyText = nullptr;
    SelectionView* m_selectionView = nullptr;
    QCheckBox* m_realTimeScanBox = nullptr;
    QCheckBox* m_runAtStartBox = nullptr;
    QCheckBox* m_hideDockBox = nullptr;
    QToolButton* m_helpButton = nullptr;
    ITProgressIndicator* m_scannignIndicator = nullptr;
    QPushButton* m_refreshButton = nullptr;
    QPushButton* m_removeButton = nullptr;
    std::unique_ptr<INPopoverController> m_adultHistoryPopover;
};

} // namespace tidewell
