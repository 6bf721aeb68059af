#pragma once

#include "linux/x11/X11Canvas.h"

#include <xcb/render.h>

#include <optional>
#include <vector>

namespace dorix {

/// Puts the picture of a part of the root window together from what stands on it. Any thread; what it is
/// given outlives it.
class X11Composition {
 public:
    /// On a canvas of the root window's visual, as large as `area`.
    X11Composition(const X11Visit& visit, const X11Canvas& canvas, const xcb_rectangle_t& area)
        : visit_(visit), canvas_(canvas), area_(area) {}

    /// The desktop's ground, and those of the windows that show something above it, from the lowest up.
    void addAll(const std::vector<xcb_window_t>& windows);

 private:
    struct Window;

    void addGround();
    bool isComposited();
    xcb_pixmap_t wallpaper();
    void add(const Window& window);
    void blend(const Window& window, int x, int y);
    xcb_render_pictformat_t formatOf(xcb_visualid_t visual);

    const X11Visit& visit_;
    const X11Canvas& canvas_;
    const xcb_rectangle_t area_;
    std::optional<XcbPtr<xcb_render_query_pict_formats_reply_t>> formats_;  // once they are asked for
};

}  // namespace dorix
