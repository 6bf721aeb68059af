#pragma once

#include "linux/x11/X11Visit.h"
#include "platform/ScreenContent.h"

#include <optional>
#include <vector>

namespace dorix {

/// The windows and displays of an X display, asked all at once: a few round trips, however many there are.
/// Any thread. What has gone by then is left out.
///
/// Windows are those that the window manager has under its care, without its frames around them; where there
/// is none, those of the root window, of which the ones that want no window manager float. A window's shadow
/// that it draws itself is no part of it. Points are what the display's resolution for text makes of them.
ScreenContent::Contents screenContents(const X11Visit& visit);

/// The part of the window that people see as the window, within it; none when it is not on the screen.
std::optional<xcb_rectangle_t> visiblePart(const X11Visit& visit, xcb_window_t window);

/// Where the display of that number is on the root window, as screenContents calls it; none when it has gone.
std::optional<xcb_rectangle_t> placeOfDisplay(const X11Visit& visit, std::uint64_t display);

/// What stands right on the root window, from the lowest up, but for the windows of that process and those
/// that are minimised or on another workspace, also where a window manager has put a frame around them.
std::vector<xcb_window_t> windowsWithout(const X11Visit& visit, std::int32_t process);

}  // namespace dorix
