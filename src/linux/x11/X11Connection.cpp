#include "linux/x11/X11Connection.h"

#include "base/Log.h"
#include "linux/x11/XcbXkb.h"

#include <xcb/res.h>
#include <xcb/xcbext.h>
#include <xcb/xfixes.h>
#include <xcb/xinput.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <array>
#include <utility>

namespace dorix {

namespace {

constexpr std::uint32_t genericKey(std::uint8_t opcode, std::uint16_t type) {
    return 0x8000'0000U | std::uint32_t{opcode} << 16U | type;
}

std::uint32_t keyOf(const xcb_generic_event_t& event) {
    const auto type = static_cast<std::uint8_t>(event.response_type & 0x7FU);
    if (type != XCB_GE_GENERIC) return type;
    const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(event);
    return genericKey(generic.extension, generic.event_type);
}

xcb_screen_t* screenOf(xcb_connection_t* connection, int number) {
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; number > 0 && screens.rem > 1; --number) xcb_screen_next(&screens);
    return screens.data;
}

}  // namespace

xcb_atom_t X11Atoms::atom(std::string_view name) {
    if (const auto known = atoms_.find(name); known != atoms_.end()) return known->second;
    const auto cookie = xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const XcbPtr<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection_, cookie, nullptr));
    if (!reply) return XCB_ATOM_NONE;
    atoms_.emplace(name, reply->atom);
    names_.emplace(reply->atom, name);
    return reply->atom;
}

const std::string& X11Atoms::name(xcb_atom_t atom) {
    if (const auto known = names_.find(atom); known != names_.end()) return known->second;
    static const std::string none;
    const XcbPtr<xcb_get_atom_name_reply_t> reply(
        xcb_get_atom_name_reply(connection_, xcb_get_atom_name(connection_, atom), nullptr));
    if (!reply) return none;
    std::string name(xcb_get_atom_name_name(reply.get()),
                     static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get())));
    atoms_.emplace(name, atom);
    return names_.emplace(atom, std::move(name)).first->second;
}

std::unique_ptr<X11Connection> X11Connection::open(Executor& executor, FdWatcher& watcher,
                                                   const std::string& display) {
    int screen = 0;
    Connection connection(xcb_connect(display.empty() ? nullptr : display.c_str(), &screen));
    if (xcb_connection_has_error(connection.get()) != 0) {
        logLine("the X display could not be opened");
        return nullptr;
    }
    std::unique_ptr<X11Connection> opened(
        new X11Connection(std::move(connection), screen, executor, watcher));
    opened->display_ = display;
    if (!opened->startExtensions()) {
        logLine("the X display lacks extensions");
        return nullptr;
    }
    return opened;
}

X11Connection::X11Connection(Connection connection, int screen, Executor& executor, FdWatcher& watcher)
    : connection_(std::move(connection)),
      executor_(executor),
      atoms_(connection_.get()),
      root_(screenOf(connection_.get(), screen)->root),
      watch_(watcher.watchReadable(xcb_get_file_descriptor(connection_.get()), [this] { deliverEvents(); })) {
}

X11Connection::~X11Connection() = default;

bool X11Connection::startExtensions() {
    for (auto* extension : {&xcb_xkb_id, &xcb_input_id, &xcb_test_id, &xcb_xfixes_id}) {
        const auto* data = xcb_get_extension_data(get(), extension);
        if (data == nullptr || data->present == 0) return false;
    }
    // Servers answer an extension's other requests only to clients that asked for its version first.
    const auto xkb = reply(xcb_xkb_use_extension_reply, xcb_xkb_use_extension(get(), 1, 0));
    const auto fixes = reply(xcb_xfixes_query_version_reply, xcb_xfixes_query_version(get(), 5, 0));
    const auto input = reply(xcb_input_xi_query_version_reply, xcb_input_xi_query_version(get(), 2, 2));
    if (!xkb || !fixes || !input) return false;
    // Before 2.1 another client's grab hides the raw events.
    const bool rawEventsDuringGrabs =
        input->major_version > 2 || (input->major_version == 2 && input->minor_version >= 1);
    return xkb->supported != 0 && rawEventsDuringGrabs;
}

bool X11Connection::isLost() const { return xcb_connection_has_error(get()) != 0; }

std::uint8_t X11Connection::check(xcb_void_cookie_t cookie) {
    const XcbPtr<xcb_generic_error_t> error(xcb_request_check(get(), cookie));
    takeQueuedEvents();
    return error ? error->error_code : std::uint8_t{0};
}

Subscription X11Connection::listen(std::uint8_t type, EventHandler handler) {
    return listeners_[type].add(std::move(handler));
}

Subscription X11Connection::listenGeneric(std::uint8_t opcode, std::uint16_t type, EventHandler handler) {
    return listeners_[genericKey(opcode, type)].add(std::move(handler));
}

void X11Connection::selectRootEvents(std::uint32_t mask) {
    rootEventMask_ |= mask;
    xcb_change_window_attributes(get(), root_, XCB_CW_EVENT_MASK, &rootEventMask_);
}

xcb_window_t X11Connection::createHiddenWindow(std::uint32_t eventMask) const {
    const xcb_window_t window = xcb_generate_id(get());
    xcb_create_window(get(), XCB_COPY_FROM_PARENT, window, root_, -10, -10, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &eventMask);
    return window;
}

void X11Connection::flush() {
    xcb_flush(get());
    // Where the server's side is full, flushing reads events as well.
    takeQueuedEvents();
}

// Events that xcb read while it waited for something else leave nothing to be read on the descriptor, which
// would then stay silent about them.
void X11Connection::takeQueuedEvents() {
    while (auto* event = xcb_poll_for_queued_event(get())) queued_.emplace_back(event);
    const bool lossUntold = isLost() && !lossNoted_;
    if ((queued_.empty() && !lossUntold) || delivering_) return;
    executor_.post([this, alive = std::weak_ptr(alive_)] {
        if (!alive.expired()) deliverEvents();
    });
}

std::int64_t X11Connection::countUnheard(
    std::uint8_t type, const std::function<bool(const xcb_generic_event_t&)>& isMeant) const {
    return std::ranges::count_if(queued_,
                                 [&](const auto& event) { return keyOf(*event) == type && isMeant(*event); });
}

XcbPtr<xcb_generic_event_t> X11Connection::nextEvent() {
    if (queued_.empty()) return XcbPtr<xcb_generic_event_t>(xcb_poll_for_event(get()));
    auto event = std::move(queued_.front());
    queued_.pop_front();
    return event;
}

void X11Connection::deliverEvents() {
    if (std::exchange(delivering_, true)) return;
    const std::weak_ptr alive(alive_);
    while (const auto event = nextEvent()) {
        dispatch(*event);
        if (alive.expired()) return;
    }
    delivering_ = false;
    if (isLost()) return noteLoss();
    flush();
}

void X11Connection::dispatch(const xcb_generic_event_t& event) {
    const auto found = listeners_.find(keyOf(event));
    if (found != listeners_.end()) found->second.notify(event);
}

void X11Connection::noteLoss() {
    if (std::exchange(lossNoted_, true)) return;
    watch_.reset();
    logLine("the connection to the X display is lost");
    if (onLost_) onLost_();
}

}  // namespace dorix
