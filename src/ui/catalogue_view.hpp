#pragma once

#include <QWidget>
#include <memory>
#include <optional>
#include <vector>

#include "catalogue/scan_driver.hpp"
#include "platform/running_apps.hpp"
#include "ui/qt_main_thread.hpp"

class QLabel;

namespace tidewell {

class BottomBar;
class BrowserSheet;
class CellTable;
class DetailsPanel;
class ItemTableSource;
class Popover;
class SectionCard;
class WindowClean;
class WindowHost;

/// What a CatalogueView is made with besides its host.
struct CatalogueViewOptions {
    /// The section builders, in order; none given: those of the disk's layout (sectionBuilders).
    std::optional<std::vector<SectionBuilder>> builders;
    /// Which applications run, for the browser check before a clean; none given: this machine's processes.
    std::shared_ptr<const RunningApplications> running;
};

/// The content of the main window: the catalogue, scanned on a thread of its own, shown in the item table (one
/// SectionCard per section, filled by ItemTableSource), the details panel for one section, the bottom bar, and the
/// clean (WindowClean) with its browser sheet. The view holds no tick or cleaning logic of its own: the cards and
/// the panel call the catalogue's tick rules, and the clean the cleaning engine.
///
/// Made, it asks the host to restore the choices and starts the first scan.
class CatalogueView : public QWidget, public ScanObserver {
    Q_OBJECT
public:
    /// A view on host's disk; host outlives it.
    explicit CatalogueView(WindowHost& host, CatalogueViewOptions options = {}, QWidget* parent = nullptr);
    /// Ends the scan first: its thread is stopped and joined before anything it could hand over to goes.
    ~CatalogueView() override;
    CatalogueView(const CatalogueView&) = delete;
    CatalogueView& operator=(const CatalogueView&) = delete;

    /// The width of the view.
    static constexpr int kWidth = 558;
    /// The table area's heights: empty, per section (a 65-point card and 10 of space), the extra, and the most.
    static constexpr int kEmptyTableHeight = 91;
    static constexpr int kRowStep = 75;
    static constexpr int kTableExtra = 15;
    static constexpr int kMostTableHeight = 389;
    /// The sections shown before the table scrolls.
    static constexpr int kMostRowsUnscrolled = 5;
    /// Where the item table is scrolled to while the details panel is open.
    static constexpr int kScrollUnderPanel = 8;

    [[nodiscard]] Catalogue& catalogue() { return m_driver->catalogue(); }
    [[nodiscard]] ScanDriver& scanDriver() { return *m_driver; }

    // ScanObserver: the hand-overs of the scan, on the main thread.
    void startIndicator() override;
    void stopIndicator() override;
    /// Sizes the table area for the sections there are (hidden and 91 with none, 75 x n + 15 for 1 to 5, 389 for
    /// 6 or more, which scrolls), then refreshTable.
    void sectionsChanged() override;
    void scanFinished() override;

    /// Reloads the item table; Clean is enabled exactly while some section's "isChecked" is not false and no clean
    /// is under way.
    void refreshTable();

    /// The bottom bar's total: the bytes of every ticked item's locations, each place counted once, as
    /// "<size> selected".
    [[nodiscard]] QString selectedText() const;
    /// The names of the sections with something ticked, as "A, B and C".
    [[nodiscard]] QString tickedSectionNames() const;

    /// The table area's height.
    [[nodiscard]] int tableHeight() const { return m_height; }
    [[nodiscard]] CellTable* itemTable() const { return m_itemTable; }
    /// The card of an item-table row, or null.
    [[nodiscard]] SectionCard* cardAt(int row) const;

    /// Opens the details panel for the section of row, with the item table scrolled under it; the view grows
    /// while the panel needs the room. A row outside the catalogue opens nothing.
    void showDetails(int row);
    [[nodiscard]] DetailsPanel* detailsPanel() const { return m_detailsPanel; }

    /// The "Adult History" card's info: AdultHistoryInfoView in a white popover pointing at button.
    void showAdultHistoryInfo(QWidget& button);
    /// The popover of showAdultHistoryInfo; null before the first.
    [[nodiscard]] Popover* adultHistoryPopover() const { return m_adultHistoryPopover.get(); }

    [[nodiscard]] BottomBar* bottomBar() const { return m_bottomBar; }
    [[nodiscard]] BrowserSheet* browserSheet() const { return m_browserSheet; }
    [[nodiscard]] WindowClean& clean() const { return *m_clean; }

protected:
    void resizeEvent(QResizeEvent* event) override;

    /// Stores the ticks of every section now shown (see ui/selection_memory); done after every change of a tick.
    void rememberSelection();
    /// The help menu's "Restore Default Selection": the stored ticks are forgotten and the disk scanned afresh, so
    /// every item shows its default tick. Nothing while a clean is under way.
    void restoreDefaultSelection();

private:
    void rescan();
    // Lays the stored ticks over the sections the scan appended since the last call.
    void restoreNewSections();

    WindowHost& m_host;
    QtMainThread m_mainThread;
    std::unique_ptr<ScanDriver> m_driver;
    int m_height = kEmptyTableHeight;
    std::size_t m_sectionsRestored = 0;

    QWidget* m_tableArea = nullptr;
    CellTable* m_itemTable = nullptr;
    std::unique_ptr<ItemTableSource> m_itemSource;
    QLabel* m_emptyText = nullptr;
    BottomBar* m_bottomBar = nullptr;
    DetailsPanel* m_detailsPanel = nullptr;
    BrowserSheet* m_browserSheet = nullptr;
    std::unique_ptr<Popover> m_adultHistoryPopover;
    std::unique_ptr<WindowClean> m_clean;
    // What the last click on a card's tick box turned on that a person would miss, until its ticked() shows it.
    QString m_tickWarning;
};

} // namespace tidewell
