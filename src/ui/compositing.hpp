#pragma once

#include <optional>

namespace tidewell {

/// Whether a compositing manager draws the desktop, so that the see-through parts of a window (rounded corners, a
/// popover's arrow) show what lies behind. Without one they show black, so windows are then drawn square and opaque.
///
/// On X11 a compositing manager owns the `_NET_WM_CM_S<screen>` selection; on Wayland the desktop always
/// composites; anywhere else (offscreen, no display) nothing does.
[[nodiscard]] bool desktopComposites();

/// Fixes the answer of desktopComposites, so that both looks can be rendered anywhere; nullopt asks the desktop again.
void setDesktopCompositesForTesting(std::optional<bool> composites);

} // namespace tidewell
