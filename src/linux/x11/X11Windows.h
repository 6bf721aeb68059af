#pragma once

#include "linux/x11/X11Connection.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

/// A window's WM_CLASS, as it stands.
struct WindowClass {
    std::string instance;
    std::string className;

    bool operator==(const WindowClass&) const = default;
};

/// What windows tell of themselves. Main executor; each call is a round trip or a few to the X server. A
/// window that has gone gives nothing.
class X11Windows {
 public:
    explicit X11Windows(X11Connection& connection) : connection_(connection) {}

    /// The top-level window that gets the keyboard: the window manager's active window or, without one, the
    /// client window around the input focus. XCB_WINDOW_NONE when there is none.
    xcb_window_t frontWindow();

    /// Calls `callback` when the window manager has made another window the active one, or none. Without a
    /// window manager nobody tells.
    Subscription observeFrontWindow(std::function<void()> callback);

    /// The window that has the keyboard: the window manager's active one, or else the input focus itself.
    xcb_window_t keyboardWindow();

    bool hasWindowManager();

    /// Of the window's application, as the X server knows it or, for one that is not on this computer, as the
    /// window tells.
    std::optional<std::int32_t> processIdentifier(xcb_window_t window);
    /// Whether both were made over one connection to the server, whether they still stand or not.
    bool ofOneClient(xcb_window_t one, xcb_window_t other) const;
    WindowClass windowClass(xcb_window_t window);
    std::string title(xcb_window_t window);

    /// Whether it says that it is the desktop itself or a bar at its edge.
    bool isPartOfDesktop(xcb_window_t window);

    /// Whether it fills a screen, by what its window manager says.
    bool isFullScreen(xcb_window_t window);
    /// Whether it is on the screen, not minimised or on another desktop.
    bool isViewable(xcb_window_t window);
    /// Its contents, from the top left of the root window.
    std::optional<xcb_rectangle_t> frame(xcb_window_t window);

    /// The numbers of _NET_WM_STRUT_PARTIAL (12) or _NET_WM_STRUT (4); none where it has neither.
    std::vector<std::uint32_t> reservedAtEdges(xcb_window_t window);

    /// Asks for the window to come to the front with the focus.
    void activate(xcb_window_t window);
    /// The same, but that without a window manager it stays where it is in the stack.
    void giveKeyboard(xcb_window_t window);

 private:
    XcbPtr<xcb_get_property_reply_t> property(xcb_window_t window, xcb_atom_t name, xcb_atom_t type);
    std::optional<std::uint32_t> number(xcb_window_t window, xcb_atom_t name, xcb_atom_t type);
    std::string string(xcb_window_t window, xcb_atom_t name, xcb_atom_t type);
    void stampTime(xcb_window_t window);
    xcb_window_t inputFocus();
    xcb_window_t windowAtPointer();
    xcb_window_t focusedClient();
    std::optional<std::int32_t> processOfConnection(xcb_window_t window);

    X11Connection& connection_;
};

}  // namespace dorix
