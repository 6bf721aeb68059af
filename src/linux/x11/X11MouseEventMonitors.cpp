#include "linux/x11/X11MouseEventMonitors.h"

#include <unistd.h>
#include <xcb/xinput.h>

#include <utility>

namespace dorix {

namespace {
constexpr std::uint32_t lastRealButton = 3;  // what follows is the wheel
constexpr std::uint32_t firstExtraButton = 8;
}  // namespace

X11MouseEventMonitors::X11MouseEventMonitors(X11Connection& connection, X11Windows& windows)
    : connection_(connection), windows_(windows) {
    // Asked for at the user's own pointer, not at all masters: what another adapter asks for there is one
    // choice for the whole connection.
    const auto pointer =
        connection_.reply(xcb_input_xi_get_client_pointer_reply,
                          xcb_input_xi_get_client_pointer(connection_.get(), XCB_WINDOW_NONE));
    if (pointer) pointer_ = pointer->deviceid;
    const auto opcode = xcb_get_extension_data(connection_.get(), &xcb_input_id)->major_opcode;
    token_ = connection_.listenGeneric(opcode, XCB_INPUT_RAW_BUTTON_PRESS,
                                       [this](const auto& event) { handle(event); });
}

Subscription X11MouseEventMonitors::addGlobalMonitor(GlobalHandler handler) {
    if (connection_.isLost() || pointer_ == 0) return {};
    select(Presses::all);
    return monitors_.add(std::move(handler));
}

void X11MouseEventMonitors::select(Presses presses) {
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } request{{pointer_, 1}, presses == Presses::all ? XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS : 0U};
    xcb_input_xi_select_events(connection_.get(), connection_.root(), 1, &request.head);
    connection_.flush();
}

void X11MouseEventMonitors::handle(const xcb_generic_event_t& event) {
    if (monitors_.isEmpty()) {
        select(Presses::none);
        return;
    }
    const auto button = reinterpret_cast<const xcb_input_raw_button_press_event_t&>(event).detail;
    if (button > lastRealButton && button < firstExtraButton) return;
    if (isOverOwnWindow() || isOverPopup()) return;
    monitors_.notify();
}

/// A window manager's frame is in between, so the innermost window tells.
bool X11MouseEventMonitors::isOverOwnWindow() {
    constexpr int maxDepth = 64;
    xcb_window_t window = connection_.root();
    for (int depth = 0; depth < maxDepth; ++depth) {
        const auto under =
            connection_.reply(xcb_query_pointer_reply, xcb_query_pointer(connection_.get(), window));
        if (!under || under->child == XCB_WINDOW_NONE) break;
        window = under->child;
    }
    return window != connection_.root() && windows_.processIdentifier(window) == ::getpid();
}

/// A window that no window manager knows, such as an input method's candidates. The bars of plain desktops
/// are made the same way, but say what they are.
bool X11MouseEventMonitors::isOverPopup() {
    const auto under =
        connection_.reply(xcb_query_pointer_reply, xcb_query_pointer(connection_.get(), connection_.root()));
    if (!under || under->child == XCB_WINDOW_NONE) return false;
    const auto attributes = connection_.reply(xcb_get_window_attributes_reply,
                                              xcb_get_window_attributes(connection_.get(), under->child));
    return attributes && attributes->override_redirect != 0 && !windows_.isPartOfDesktop(under->child);
}

}  // namespace dorix
