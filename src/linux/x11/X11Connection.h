#pragma once

#include "base/Observable.h"
#include "base/async/Executor.h"
#include "linux/loop/FdWatcher.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

namespace dorix {

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
};

/// What xcb allocates and leaves to the caller: replies, errors, events. Null for a request that failed.
template <typename T>
using XcbPtr = std::unique_ptr<T, FreeMemory>;

/// Atoms and their names, each asked of the server once. The connection's thread only; a name not met before
/// costs a round trip. After the connection is lost new names give XCB_ATOM_NONE.
class X11Atoms {
 public:
    explicit X11Atoms(xcb_connection_t* connection) : connection_(connection) {}

    xcb_atom_t atom(std::string_view name);

    /// Empty for an atom that does not exist.
    const std::string& name(xcb_atom_t atom);

 private:
    xcb_connection_t* const connection_;
    std::map<std::string, xcb_atom_t, std::less<>> atoms_;
    std::unordered_map<xcb_atom_t, std::string> names_;
};

/// A connection to one X display, and the events that come over it. Its executor's thread only; nothing here
/// waits for another application, but what needs an answer waits for the X server.
///
/// When the server goes away, onLost is called once and from then on every request does nothing and every
/// reply is null. Errors of requests that nobody waits for (a window that was destroyed meanwhile) are
/// dropped.
class X11Connection {
 public:
    using EventHandler = std::function<void(const xcb_generic_event_t&)>;

    /// Connects to `display`, or to $DISPLAY if that is empty. Null, with a log line, when there is no such
    /// display or it lacks an extension that the adapters need.
    static std::unique_ptr<X11Connection> open(Executor& executor, FdWatcher& watcher,
                                               const std::string& display = {});

    ~X11Connection();
    X11Connection(const X11Connection&) = delete;
    X11Connection& operator=(const X11Connection&) = delete;

    /// For requests; goes with this object. Whoever waits for a reply does it through reply().
    xcb_connection_t* get() const { return connection_.get(); }
    /// The display's name, as it was given to open.
    const std::string& display() const { return display_; }
    Executor& executor() const { return executor_; }
    xcb_window_t root() const { return root_; }

    bool isLost() const;
    void onLost(std::function<void()> callback) { onLost_ = std::move(callback); }

    /// Waits for the answer to a request: reply(xcb_get_geometry_reply, xcb_get_geometry(...)). Null when the
    /// request failed. Events that came in meanwhile are delivered on the next turn of the loop.
    template <typename R, typename Cookie>
    XcbPtr<R> reply(R* (*wait)(xcb_connection_t*, Cookie, xcb_generic_error_t**), Cookie cookie) {
        xcb_generic_error_t* error = nullptr;
        XcbPtr<R> answer(wait(connection_.get(), cookie, &error));
        const XcbPtr<xcb_generic_error_t> dropped(error);
        takeQueuedEvents();
        return answer;
    }

    /// Waits until the server has carried out a checked request; its error code, 0 for success.
    std::uint8_t check(xcb_void_cookie_t cookie);

    xcb_atom_t atom(std::string_view name) { return atoms_.atom(name); }
    const std::string& atomName(xcb_atom_t atom) { return atoms_.name(atom); }

    /// The handler sees every event of this type (extension events: first event plus number).
    Subscription listen(std::uint8_t type, EventHandler handler);

    /// The same for generic events of an extension.
    Subscription listenGeneric(std::uint8_t opcode, std::uint16_t type, EventHandler handler);

    /// Adds to the events that this connection gets for the root window.
    void selectRootEvents(std::uint32_t mask);

    /// A window that is never shown, for properties and selections. The caller destroys it.
    xcb_window_t createHiddenWindow(std::uint32_t eventMask) const;

    /// How many events of this type have come in and are yet to be delivered, of those that `isMeant`.
    std::int64_t countUnheard(std::uint8_t type,
                              const std::function<bool(const xcb_generic_event_t&)>& isMeant) const;

    /// Sends what requests left in the buffer. Whoever makes requests that need no reply calls it afterwards;
    /// event handlers need not.
    void flush();

 private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };
    using Connection = std::unique_ptr<xcb_connection_t, Disconnect>;

    X11Connection(Connection connection, int screen, Executor& executor, FdWatcher& watcher);

    bool startExtensions();
    void takeQueuedEvents();
    void deliverEvents();
    XcbPtr<xcb_generic_event_t> nextEvent();
    void dispatch(const xcb_generic_event_t& event);
    void noteLoss();

    Connection connection_;
    Executor& executor_;
    std::string display_;
    X11Atoms atoms_;
    xcb_window_t root_ = XCB_WINDOW_NONE;
    std::uint32_t rootEventMask_ = 0;
    std::function<void()> onLost_;
    std::unordered_map<std::uint32_t, Observers<xcb_generic_event_t>> listeners_;
    std::deque<XcbPtr<xcb_generic_event_t>> queued_;
    bool delivering_ = false;
    bool lossNoted_ = false;
    Subscription watch_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace dorix
