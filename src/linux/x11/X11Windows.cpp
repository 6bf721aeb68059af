#include "linux/x11/X11Windows.h"

#include "linux/x11/SelectionContents.h"

#include <unistd.h>
#include <xcb/res.h>

#include <algorithm>
#include <cstring>
#include <span>
#include <utility>

namespace dorix {

namespace {
constexpr std::uint32_t maxPropertyWords = 16 * 1024;
constexpr int maxDepth = 64;
}  // namespace

XcbPtr<xcb_get_property_reply_t> X11Windows::property(xcb_window_t window, xcb_atom_t name, xcb_atom_t type) {
    return connection_.reply(xcb_get_property_reply,
                             xcb_get_property(connection_.get(), 0, window, name, type, 0, maxPropertyWords));
}

std::optional<std::uint32_t> X11Windows::number(xcb_window_t window, xcb_atom_t name, xcb_atom_t type) {
    const auto reply = property(window, name, type);
    std::uint32_t value = 0;
    if (!reply || reply->format != 32 || xcb_get_property_value_length(reply.get()) < 4) return std::nullopt;
    std::memcpy(&value, xcb_get_property_value(reply.get()), sizeof value);
    return value;
}

std::string X11Windows::string(xcb_window_t window, xcb_atom_t name, xcb_atom_t type) {
    const auto reply = property(window, name, type);
    if (!reply || reply->format != 8) return {};
    return {static_cast<const char*>(xcb_get_property_value(reply.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
}

bool X11Windows::hasWindowManager() {
    const xcb_atom_t check = connection_.atom("_NET_SUPPORTING_WM_CHECK");
    // The property outlives a window manager that crashed; the window it names does not.
    const auto window = number(connection_.root(), check, XCB_ATOM_WINDOW);
    return window && number(*window, check, XCB_ATOM_WINDOW) == window;
}

xcb_window_t X11Windows::frontWindow() {
    const auto active = number(connection_.root(), connection_.atom("_NET_ACTIVE_WINDOW"), XCB_ATOM_WINDOW);
    if (active && hasWindowManager()) return *active;
    return focusedClient();
}

Subscription X11Windows::observeFrontWindow(std::function<void()> callback) {
    connection_.selectRootEvents(XCB_EVENT_MASK_PROPERTY_CHANGE);
    connection_.flush();
    return connection_.listen(XCB_PROPERTY_NOTIFY, [this, callback = std::move(callback)](const auto& event) {
        const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        const bool isActiveWindow =
            change.window == connection_.root() && change.atom == connection_.atom("_NET_ACTIVE_WINDOW");
        if (isActiveWindow) callback();
    });
}

xcb_window_t X11Windows::keyboardWindow() {
    if (!hasWindowManager()) return inputFocus();
    return number(connection_.root(), connection_.atom("_NET_ACTIVE_WINDOW"), XCB_ATOM_WINDOW)
        .value_or(XCB_WINDOW_NONE);
}

xcb_window_t X11Windows::inputFocus() {
    const auto focus = connection_.reply(xcb_get_input_focus_reply, xcb_get_input_focus(connection_.get()));
    return focus ? focus->focus : XCB_WINDOW_NONE;
}

xcb_window_t X11Windows::windowAtPointer() {
    const auto pointer =
        connection_.reply(xcb_query_pointer_reply, xcb_query_pointer(connection_.get(), connection_.root()));
    return pointer ? pointer->child : XCB_WINDOW_NONE;
}

xcb_window_t X11Windows::focusedClient() {
    xcb_window_t window = inputFocus();
    if (window == XCB_INPUT_FOCUS_POINTER_ROOT) window = windowAtPointer();
    if (window <= XCB_INPUT_FOCUS_POINTER_ROOT) return XCB_WINDOW_NONE;
    xcb_window_t outermost = XCB_WINDOW_NONE;
    for (int depth = 0; depth < maxDepth && window != connection_.root(); ++depth) {
        if (!string(window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING).empty()) return window;
        const auto tree = connection_.reply(xcb_query_tree_reply, xcb_query_tree(connection_.get(), window));
        if (!tree) return XCB_WINDOW_NONE;
        outermost = window;
        window = tree->parent;
    }
    return outermost;
}

// What a window says of its process may be a number that means something only in a sandbox or on another
// computer. The server knows the process at the other end of a local connection.
std::optional<std::int32_t> X11Windows::processIdentifier(xcb_window_t window) {
    if (window == XCB_WINDOW_NONE) return std::nullopt;
    if (const auto pid = processOfConnection(window)) return pid;
    const auto told = number(window, connection_.atom("_NET_WM_PID"), XCB_ATOM_CARDINAL);
    return told ? std::optional(static_cast<std::int32_t>(*told)) : std::nullopt;
}

std::optional<std::int32_t> X11Windows::processOfConnection(xcb_window_t window) {
    const auto* res = xcb_get_extension_data(connection_.get(), &xcb_res_id);
    if (res == nullptr || res->present == 0) return std::nullopt;
    const xcb_res_client_id_spec_t spec{window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    const auto reply = connection_.reply(xcb_res_query_client_ids_reply,
                                         xcb_res_query_client_ids(connection_.get(), 1, &spec));
    if (!reply) return std::nullopt;
    for (auto ids = xcb_res_query_client_ids_ids_iterator(reply.get()); ids.rem > 0;
         xcb_res_client_id_value_next(&ids)) {
        const bool isPid = (ids.data->spec.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID) != 0;
        if (!isPid || xcb_res_client_id_value_value_length(ids.data) == 0) continue;
        // A process that the server's namespace does not hold is number 0.
        const auto pid = static_cast<std::int32_t>(*xcb_res_client_id_value_value(ids.data));
        if (pid > 0) return pid;
    }
    return std::nullopt;
}

bool X11Windows::ofOneClient(xcb_window_t one, xcb_window_t other) const {
    const auto numbersOfAClient = xcb_get_setup(connection_.get())->resource_id_mask;
    return ((one ^ other) & ~numbersOfAClient) == 0;
}

WindowClass X11Windows::windowClass(xcb_window_t window) {
    const std::string both = string(window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING);
    const auto end = both.find('\0');
    if (end == std::string::npos) return {both, {}};
    return {both.substr(0, end), both.substr(end + 1).c_str()};
}

std::string X11Windows::title(xcb_window_t window) {
    auto name = string(window, connection_.atom("_NET_WM_NAME"), connection_.atom("UTF8_STRING"));
    if (!name.empty()) return name;
    name = string(window, XCB_ATOM_WM_NAME, connection_.atom("UTF8_STRING"));
    return name.empty() ? utf8FromLatin1(string(window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING)) : name;
}

bool X11Windows::isPartOfDesktop(xcb_window_t window) {
    const auto type = number(window, connection_.atom("_NET_WM_WINDOW_TYPE"), XCB_ATOM_ATOM);
    return type == connection_.atom("_NET_WM_WINDOW_TYPE_DOCK") ||
           type == connection_.atom("_NET_WM_WINDOW_TYPE_DESKTOP");
}

bool X11Windows::isFullScreen(xcb_window_t window) {
    if (window == XCB_WINDOW_NONE) return false;
    const auto reply = property(window, connection_.atom("_NET_WM_STATE"), XCB_ATOM_ATOM);
    if (!reply || reply->format != 32) return false;
    const auto* states = static_cast<const xcb_atom_t*>(xcb_get_property_value(reply.get()));
    const std::span all(states, reply->value_len);
    return std::ranges::find(all, connection_.atom("_NET_WM_STATE_FULLSCREEN")) != all.end();
}

bool X11Windows::isViewable(xcb_window_t window) {
    const auto reply = connection_.reply(xcb_get_window_attributes_reply,
                                         xcb_get_window_attributes(connection_.get(), window));
    return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE;
}

std::optional<xcb_rectangle_t> X11Windows::frame(xcb_window_t window) {
    if (window == XCB_WINDOW_NONE) return std::nullopt;
    const auto size = connection_.reply(xcb_get_geometry_reply, xcb_get_geometry(connection_.get(), window));
    const auto place =
        connection_.reply(xcb_translate_coordinates_reply,
                          xcb_translate_coordinates(connection_.get(), window, connection_.root(), 0, 0));
    if (!size || !place) return std::nullopt;
    return xcb_rectangle_t{
        .x = place->dst_x, .y = place->dst_y, .width = size->width, .height = size->height};
}

std::vector<std::uint32_t> X11Windows::reservedAtEdges(xcb_window_t window) {
    for (const auto& [name, count] : {std::pair{"_NET_WM_STRUT_PARTIAL", 12U}, {"_NET_WM_STRUT", 4U}}) {
        const auto reply = property(window, connection_.atom(name), XCB_ATOM_CARDINAL);
        if (!reply || reply->format != 32 || reply->value_len < count) continue;
        const auto* numbers = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
        return {numbers, numbers + count};
    }
    return {};
}

void X11Windows::activate(xcb_window_t window) {
    if (!hasWindowManager()) {
        const std::uint32_t above = XCB_STACK_MODE_ABOVE;
        xcb_configure_window(connection_.get(), window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    }
    giveKeyboard(window);
}

/// A window manager that sets the focus with the time of the last event it saw (i3) fails when the focus is
/// newer. Adding nothing to a property tells it of this moment.
void X11Windows::stampTime(xcb_window_t window) {
    const auto userTime = connection_.atom("_NET_WM_USER_TIME");
    if (!number(window, userTime, XCB_ATOM_CARDINAL)) return;
    const std::uint32_t nothing = 0;
    xcb_change_property(connection_.get(), XCB_PROP_MODE_APPEND, window, userTime, XCB_ATOM_CARDINAL, 32, 0,
                        &nothing);
}

void X11Windows::giveKeyboard(xcb_window_t window) {
    if (!hasWindowManager()) {
        xcb_set_input_focus(connection_.get(), XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
        connection_.flush();
        return;
    }
    stampTime(window);
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = connection_.atom("_NET_ACTIVE_WINDOW");
    // Source 2: the user asked for it, so the window manager's focus stealing prevention does not apply.
    message.data.data32[0] = 2;
    xcb_send_event(connection_.get(), 0, connection_.root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&message));
    connection_.flush();
}

}  // namespace dorix
