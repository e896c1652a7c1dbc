#pragma once

#include <QWidget>

#include "catalogue/records.hpp"

namespace tidewell {

/// What the delegate needs of the browser panel (`BrowserWindow`): the window side makes it (the delegate only
/// knows it through this surface) and the delegate fills, shows and ends it (`displayPanel:`, `reloadPanel:`,
/// `disMissPanel`).
class BrowserPanelWindow : public QWidget {
    Q_OBJECT
public:
    using QWidget::QWidget;

    /// `browserList`: the content set to nothing, then the entries ("NameBrowser", "iconBrowser") added in order.
    virtual void setBrowserList(const RecordList& entries) = 0;
    /// Begins the panel as a sheet on the window it was made for; a sheet already up stays up.
    virtual void beginSheet() = 0;
    /// Ends the sheet; nothing when it is not up.
    virtual void endSheet() = 0;
    /// Whether the sheet is up.
    [[nodiscard]] virtual bool isSheetShown() const = 0;
};

} // namespace tidewell
