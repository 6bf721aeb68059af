#pragma once

#include "base/Observable.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace dorix {

/// What the program's windows ask of the display beyond what a toolkit has. A window is known by its number,
/// and all measures are pixels. Main executor; a call waits for the display, never for another program.
class WindowSystem {
 public:
    using Window = std::uint64_t;

    enum class Kind { utility, panel, notification, menu, tooltip };

    struct Rectangle {
        int x = 0;
        int y = 0;
        int width = 0;
        int height = 0;

        bool operator==(const Rectangle&) const = default;
    };
    using Region = std::vector<Rectangle>;

    struct Margins {
        int left = 0;
        int right = 0;
        int top = 0;
        int bottom = 0;
    };

    virtual ~WindowSystem() = default;

    /// Whether somebody composites, so that windows may be translucent.
    Observable<bool> composited{true};

    /// Called when windows of other programs have been stacked anew, perhaps above ours.
    std::function<void()> onRestacked = [] {};

    /// Called when a window has begun to fill a screen, or ceased to.
    std::function<void()> onFullScreenChanged = [] {};

    /// Whether the window, shown or not, stands on a screen that one of another program fills.
    virtual bool isOverFullScreen(Window window) = 0;

    /// Has a window that shows stand above one of another program that fills its screen, if there is one,
    /// also without the keyboard.
    virtual void raiseOverFullScreen(Window window) = 0;

    /// Says what the window is, for compositors; before it is first shown.
    virtual void dress(Window window, Kind kind) = 0;

    /// Says how much of the window is its shadow, so that a window manager places what can be seen.
    virtual void setFrameExtents(Window window, const Margins& extents) = 0;

    /// Cuts the window to the region, or makes it a rectangle again.
    virtual void setShape(Window window, const std::optional<Region>& region) = 0;
    /// Where the window takes the pointer; elsewhere it goes to what lies below.
    virtual void setInputShape(Window window, const Region& region) = 0;

    /// What the bars at its edges leave of a screen.
    virtual Rectangle freeOfBars(const Rectangle& screen) = 0;

    /// Whether a window manager may give the window the keyboard; it may give it to any unless told.
    virtual void setTakesKeyboard(Window window, bool takes) = 0;

    virtual bool hasWindowManager() = 0;
    /// The window that has the keyboard; 0 for none.
    virtual Window frontWindow() = 0;
    /// Gives the keyboard to a window, ours or another's, which a window manager brings to the front for
    /// that; nothing happens if it has gone.
    virtual void bringToFront(Window window) = 0;
};

/// Where windows are drawn on nothing that we know: they are what the toolkit makes of them.
class UnavailableWindowSystem final : public WindowSystem {
 public:
    bool isOverFullScreen(Window) override { return false; }
    void raiseOverFullScreen(Window) override {}
    void dress(Window, Kind) override {}
    void setFrameExtents(Window, const Margins&) override {}
    void setShape(Window, const std::optional<Region>&) override {}
    void setInputShape(Window, const Region&) override {}
    Rectangle freeOfBars(const Rectangle& screen) override { return screen; }
    void setTakesKeyboard(Window, bool) override {}
    bool hasWindowManager() override { return false; }
    Window frontWindow() override { return 0; }
    void bringToFront(Window) override {}
};

}  // namespace dorix
