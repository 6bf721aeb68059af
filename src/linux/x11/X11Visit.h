#pragma once

#include "linux/x11/X11Connection.h"

#include <stdexcept>
#include <string>

namespace dorix {

/// A connection to the display for one piece of work, which is done without events: what the server made for
/// it goes with the connection, however the work ends. Any thread; waits for the server.
class X11Visit {
 public:
    /// What keeps the work from being done.
    class Failure : public std::runtime_error {
     public:
        using std::runtime_error::runtime_error;
    };

    /// Connects to `display`, or to $DISPLAY if that is empty. Throws Failure.
    explicit X11Visit(const std::string& display);

    xcb_connection_t* get() const { return connection_.get(); }
    const xcb_screen_t& screen() const { return *screen_; }
    xcb_window_t root() const { return screen_->root; }

    /// Null when the request failed.
    template <typename R, typename Cookie>
    XcbPtr<R> ask(R* (*wait)(xcb_connection_t*, Cookie, xcb_generic_error_t**), Cookie cookie) const {
        xcb_generic_error_t* error = nullptr;
        XcbPtr<R> answer(wait(get(), cookie, &error));
        const XcbPtr<xcb_generic_error_t> dropped(error);
        return answer;
    }

    /// The same, but throws Failure in place of null.
    template <typename R, typename Cookie>
    XcbPtr<R> demand(R* (*wait)(xcb_connection_t*, Cookie, xcb_generic_error_t**), Cookie cookie) const {
        auto answer = ask(wait, cookie);
        if (!answer) throw Failure("the display refuses a request");
        return answer;
    }

    /// Throws Failure where a checked request failed.
    void demand(xcb_void_cookie_t cookie) const;

    /// Whether the server has an extension.
    bool has(xcb_extension_t& extension) const;

 private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };

    std::unique_ptr<xcb_connection_t, Disconnect> connection_;
    const xcb_screen_t* screen_ = nullptr;
};

}  // namespace dorix
