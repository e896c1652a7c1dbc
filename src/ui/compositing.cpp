#include "ui/compositing.hpp"

#include <xcb/xcb.h>

#include <QByteArray>
#include <QGuiApplication>
#include <cstdlib>
#include <memory>

namespace tidewell {

namespace {

std::optional<bool>& fixedAnswer() {
    static std::optional<bool> answer;
    return answer;
}

// Whether the X screen Tidewell runs on has a compositing manager: one owns the screen's _NET_WM_CM_S selection.
bool x11Composites() {
    auto* x11 = qGuiApp != nullptr ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    xcb_connection_t* connection = x11 != nullptr ? x11->connection() : nullptr;
    if (connection == nullptr) {
        return false;
    }
    // xcb_parse_display writes every out-parameter it is given, and needs all of them (a null one crashes it).
    char* host = nullptr;
    int display = 0;
    int screen = 0;
    if (xcb_parse_display(nullptr, &host, &display, &screen) == 0) {
        screen = 0;
    }
    std::free(host);
    const QByteArray name = "_NET_WM_CM_S" + QByteArray::number(screen);
    const xcb_intern_atom_cookie_t atomCookie =
        xcb_intern_atom(connection, 1, static_cast<std::uint16_t>(name.size()), name.constData());
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> atom(
        xcb_intern_atom_reply(connection, atomCookie, nullptr), &std::free);
    // only_if_exists: no atom means no program ever claimed the selection.
    if (!atom || atom->atom == XCB_ATOM_NONE) {
        return false;
    }
    const std::unique_ptr<xcb_get_selection_owner_reply_t, decltype(&std::free)> owner(
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, atom->atom), nullptr),
        &std::free);
    return owner && owner->owner != XCB_WINDOW_NONE;
}

} // namespace

bool desktopComposites() {
    if (fixedAnswer()) {
        return *fixedAnswer();
    }
    const QString platform = QGuiApplication::platformName();
    if (platform == QLatin1String("xcb")) {
        return x11Composites();
    }
    return platform.startsWith(QLatin1String("wayland"));
}

void setDesktopCompositesForTesting(std::optional<bool> composites) {
    fixedAnswer() = composites;
}

} // namespace tidewell
