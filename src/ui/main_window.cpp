#include "ui/main_window.hpp"

#include "app/window_host.hpp"

namespace tidewell {

std::unique_ptr<FramelessWindow> makeMainWindow(WindowHost& host, CatalogueViewOptions options) {
    auto window = std::make_unique<FramelessWindow>();
    window->setContentView(new CatalogueView(host, std::move(options)));
    // Which disk the window shows: a window on another --root or --user looks the same otherwise.
    const QString home = QString::fromStdString(host.disk().homePath());
    window->titleBar()->setToolTip(QStringLiteral("Scanning %1").arg(home));
    // The system adds " — Tidewell" to a window title itself, so the taskbar reads "<home> — Tidewell".
    window->setWindowTitle(home);
    QObject::connect(window.get(), &FramelessWindow::quitRequested, &host, &WindowHost::quit);
    QObject::connect(window.get(), &FramelessWindow::minimiseRequested, &host, &WindowHost::minimiseWindow);
    return window;
}

std::function<std::unique_ptr<QWidget>(WindowHost&)> mainWindowFactory(CatalogueViewOptions options) {
    return [options](WindowHost& host) -> std::unique_ptr<QWidget> { return makeMainWindow(host, options); };
}

CatalogueView* catalogueViewOf(const QWidget* window) {
    const auto* frameless = qobject_cast<const FramelessWindow*>(window);
    return frameless != nullptr ? qobject_cast<CatalogueView*>(frameless->contentView()) : nullptr;
}

} // namespace tidewell
