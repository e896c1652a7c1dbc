#include "ui/main_window.hpp"

#include "app/app_delegate.hpp"
#include "ui/browser_window.hpp"

namespace tidewell {

std::unique_ptr<CustomWindow> makeMainWindow(AppDelegate& delegate, ToolsViewOptions options) {
    auto window = std::make_unique<CustomWindow>();
    window->setContentView(new ToolsViewController(&delegate, delegate.disk(), std::move(options)));
    QObject::connect(window.get(), &CustomWindow::quitRequested, &delegate, &AppDelegate::terminateSelf);
    QObject::connect(window.get(), &CustomWindow::minimizeRequested, &delegate, &AppDelegate::minimizeTo);
    return window;
}

ToolsViewController* toolsViewControllerOf(const QWidget* window) {
    const auto* custom = qobject_cast<const CustomWindow*>(window);
    return custom != nullptr ? qobject_cast<ToolsViewController*>(custom->contentView()) : nullptr;
}

void installWindowFactories(AppDelegate& delegate, ToolsViewOptions options) {
    delegate.setMainWindowFactory(
        [options](AppDelegate& owner) -> std::unique_ptr<QWidget> { return makeMainWindow(owner, options); });
    delegate.setBrowserWindowFactory([](AppDelegate& owner, QWidget& mainWindow) -> BrowserPanelWindow* {
        return new BrowserWindow(&owner, mainWindow);
    });
}

} // namespace tidewell
