#pragma once

#include "linux/loop/PollLoop.h"
#include "linux/x11/SelectionContents.h"
#include "linux/x11/X11Connection.h"
#include "linux/x11/X11SelectionServer.h"

#include <memory>
#include <optional>
#include <string>

namespace dorix {

/// Owns selections from a thread and over a connection of its own. The toolkit that draws our windows waits
/// for the clipboard's owner on the main thread: if that owner were served there too, pasting into a window
/// of ours would stall for its whole time-out. Main executor; every call waits for the X server, and for
/// nothing else.
class X11SelectionOwner {
 public:
    using Delivered = X11SelectionServer::Delivered;

    /// `delivered` is called on the owner's thread.
    X11SelectionOwner(const std::string& display, Delivered delivered);
    ~X11SelectionOwner();
    X11SelectionOwner(const X11SelectionOwner&) = delete;
    X11SelectionOwner& operator=(const X11SelectionOwner&) = delete;

    /// The window that owns what is taken; XCB_WINDOW_NONE when the display could not be opened.
    xcb_window_t window() const { return window_; }

    /// As X11SelectionServer says; 0 where there is no display.
    std::uint64_t take(xcb_atom_t selection, SelectionContents contents);
    void giveUp(xcb_atom_t selection);
    void replaceIfOwned(xcb_atom_t selection, SelectionContents contents);

 private:
    template <typename Function>
    void runOnThread(Function function);

    PollLoop loop_;
    std::unique_ptr<X11Connection> connection_;
    std::unique_ptr<X11SelectionServer> server_;
    xcb_window_t window_ = XCB_WINDOW_NONE;
};

}  // namespace dorix
