#pragma once

#include <memory>

#include "ui/tools_view_controller.hpp"
#include "ui/window_chrome.hpp"

namespace tidewell {

class AppDelegate;

/// The main window ("mainWindowID"): a CustomWindow whose content is a ToolsViewController on the delegate's disk.
/// Its quit button ends Tidewell through the delegate (terminateSelf) and its minimise button minimises through it
/// (minimizeTo). Made, it has asked the delegate to restore the settings and started the first scan; it is not
/// shown.
[[nodiscard]] std::unique_ptr<CustomWindow> makeMainWindow(AppDelegate& delegate, ToolsViewOptions options = {});

/// The controller of a window made by makeMainWindow; null for any other window.
[[nodiscard]] ToolsViewController* toolsViewControllerOf(const QWidget* window);

/// Gives the delegate the window side it makes on demand: the main window (makeMainWindow with options) and the
/// browser panel (a BrowserWindow over the main window).
void installWindowFactories(AppDelegate& delegate, ToolsViewOptions options = {});

} // namespace tidewell
