#pragma once

#include "linux/x11/AreaAverage.h"
#include "linux/x11/X11PixelFormat.h"
#include "linux/x11/X11Visit.h"
#include "platform/ScreenContent.h"

#include <xcb/xcb.h>

namespace dorix {

/// A picture that is put together in the server, and brought here once. Any thread; the visit outlives it.
class X11Canvas {
 public:
    enum class Ground { grey, clear };
    enum class Inferiors { shown, left };

    /// As large as `area`, all of one colour, for windows with that visual. Throws X11Visit::Failure.
    X11Canvas(const X11Visit& visit, xcb_visualid_t visual, const xcb_rectangle_t& area,
              Ground ground = Ground::grey);

    ~X11Canvas();
    X11Canvas(const X11Canvas&) = delete;
    X11Canvas& operator=(const X11Canvas&) = delete;

    xcb_pixmap_t pixmap() const { return pixmap_; }
    std::uint8_t depth() const { return format_.depth(); }

    /// Puts there what the server has of a drawable of the same depth: of a window what is its own, with the
    /// windows within it or without. Of one that a compositor keeps apart that is everything, of others what
    /// can be seen. `from` is the drawable's, and goes to `x` and `y` of the canvas.
    xcb_void_cookie_t copy(xcb_drawable_t drawable, const xcb_rectangle_t& from, int x, int y,
                           Inferiors inferiors = Inferiors::shown) const;

    /// The picture scaled to `size`, no side of which is longer than the canvas's. Throws X11Visit::Failure.
    ScreenImage image(ScreenContent::Pixels size) const;

 private:
    class Bytes;

    const X11Visit& visit_;
    const X11PixelFormat format_;
    const AreaAverage::Size size_;
    const xcb_pixmap_t pixmap_;
    const xcb_gcontext_t context_;
};

}  // namespace dorix
