#pragma once

#include <functional>
#include <memory>

#include "ui/catalogue_view.hpp"
#include "ui/window_chrome.hpp"

namespace tidewell {

class WindowHost;

/// The main window: a FramelessWindow whose content is a CatalogueView on the host's disk. Its quit button ends
/// Tidewell and its minimise button minimises, through the host. Made, it has asked the host to restore the choices
/// and started the first scan; it is not shown.
[[nodiscard]] std::unique_ptr<FramelessWindow> makeMainWindow(WindowHost& host, CatalogueViewOptions options = {});

/// What the application is given to make its main window on demand: makeMainWindow with options.
[[nodiscard]] std::function<std::unique_ptr<QWidget>(WindowHost&)> mainWindowFactory(CatalogueViewOptions options = {});

/// The catalogue view of a window made by makeMainWindow; null for any other window.
[[nodiscard]] CatalogueView* catalogueViewOf(const QWidget* window);

} // namespace tidewell
