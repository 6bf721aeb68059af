#pragma once

#include "linux/x11/X11Windows.h"
#include "platform/WindowSystem.h"

namespace dorix {

/// What the bars at the edges of the root window leave of `screen`, in pixels: the space that they reserve
/// with _NET_WM_STRUT_PARTIAL or _NET_WM_STRUT. Some window managers do not sum it up as a work area, and a
/// toolkit may not tell that of several screens. `screen` itself if they leave nothing. Main executor; a
/// round trip to the X server for each top-level window or two.
WindowSystem::Rectangle freeOfBars(X11Connection& connection, X11Windows& windows,
                                   const WindowSystem::Rectangle& screen);

}  // namespace dorix
