#pragma once

#include "linux/x11/X11Bars.h"
#include "linux/x11/X11Windows.h"
#include "platform/WindowSystem.h"

#include <functional>
#include <vector>

namespace dorix {

/// The windows that a toolkit makes over a connection of its own. Each call waits until the server has done
/// what the toolkit asked of it, and until it has done what is asked here: so the windows are there, and are
/// dressed before they show.
class X11WindowSystem final : public WindowSystem {
 public:
    /// `finishToolkitRequests` waits for the toolkit's part. The others must outlive this.
    X11WindowSystem(X11Connection& connection, X11Windows& windows,
                    std::function<void()> finishToolkitRequests);

    bool isOverFullScreen(Window window) override;
    void raiseOverFullScreen(Window window) override;
    void dress(Window window, Kind kind) override;
    void setFrameExtents(Window window, const Margins& extents) override;
    void setShape(Window window, const std::optional<Region>& region) override;
    void setInputShape(Window window, const Region& region) override;
    Rectangle freeOfBars(const Rectangle& screen) override {
        return dorix::freeOfBars(connection_, windows_, screen);
    }
    void setTakesKeyboard(Window window, bool takes) override;
    bool hasWindowManager() override { return windows_.hasWindowManager(); }
    Window frontWindow() override { return windows_.keyboardWindow(); }
    void bringToFront(Window window) override;

 private:
    void watchCompositor();
    void watchStacking();
    void watchFullScreen();
    void updateFullScreen();
    bool stillFillsScreen(xcb_window_t window);
    bool overlap(xcb_window_t one, xcb_window_t other);
    void setProperty(Window window, const char* name, xcb_atom_t type,
                     const std::vector<std::uint32_t>& values);
    void applyShape(Window window, std::uint8_t kind, const std::optional<Region>& region);

    X11Connection& connection_;
    X11Windows& windows_;
    const std::function<void()> finishToolkitRequests_;
    Subscription compositorChanges_;
    Subscription stackingChanges_;
    xcb_window_t front_ = XCB_WINDOW_NONE;
    xcb_window_t fullScreen_ = XCB_WINDOW_NONE;  // the last in front that filled a screen, as long as it does
    std::vector<Subscription> fullScreenChanges_;
};

}  // namespace dorix
