#include "views/X11Desktop.h"

#include <xcb/shape.h>
#include <xcb/xcb.h>
#include <xcb/xfixes.h>

#include <QGuiApplication>
#include <QMargins>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace dorix {

namespace {

template <typename T>
using Reply = std::unique_ptr<T, decltype([](T* reply) { std::free(reply); })>;

const char* windowType(X11Desktop::Kind kind) {
    switch (kind) {
        case X11Desktop::Kind::utility:
        case X11Desktop::Kind::panel:
            return "_NET_WM_WINDOW_TYPE_UTILITY";
        case X11Desktop::Kind::notification:
            return "_NET_WM_WINDOW_TYPE_NOTIFICATION";
        case X11Desktop::Kind::menu:
            return "_NET_WM_WINDOW_TYPE_POPUP_MENU";
        case X11Desktop::Kind::tooltip:
            break;
    }
    return "_NET_WM_WINDOW_TYPE_TOOLTIP";
}

std::vector<xcb_rectangle_t> rectangles(const QRegion& region) {
    std::vector<xcb_rectangle_t> found;
    for (const QRect& rect : region) {
        found.push_back({.x = static_cast<std::int16_t>(rect.x()),
                         .y = static_cast<std::int16_t>(rect.y()),
                         .width = static_cast<std::uint16_t>(rect.width()),
                         .height = static_cast<std::uint16_t>(rect.height())});
    }
    return found;
}

}  // namespace

std::unique_ptr<X11Desktop> X11Desktop::find() {
    auto* application = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (application == nullptr) return nullptr;
    return std::unique_ptr<X11Desktop>(new X11Desktop(application->connection()));
}

X11Desktop::X11Desktop(xcb_connection_t* connection) : connection_(connection) {
    root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    stacking_ = atom("_NET_CLIENT_LIST_STACKING");
    watchCompositor();
    composited.set(hasCompositor());
    qGuiApp->installNativeEventFilter(this);
}

X11Desktop::~X11Desktop() { qGuiApp->removeNativeEventFilter(this); }

std::uint32_t X11Desktop::atom(const char* name) const {
    const auto cookie = xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection_, cookie, nullptr));
    return reply ? reply->atom : XCB_ATOM_NONE;
}

void X11Desktop::watchCompositor() {
    // The toolkit is on the first screen; displays with several have gone out of use.
    compositorSelection_ = atom("_NET_WM_CM_S0");
    const auto* extension = xcb_get_extension_data(connection_, &xcb_xfixes_id);
    if (extension == nullptr || extension->present == 0) return;
    const Reply<xcb_xfixes_query_version_reply_t> version(xcb_xfixes_query_version_reply(
        connection_,
        xcb_xfixes_query_version(connection_, XCB_XFIXES_MAJOR_VERSION, XCB_XFIXES_MINOR_VERSION), nullptr));
    selectionEvent_ = static_cast<std::uint8_t>(extension->first_event + XCB_XFIXES_SELECTION_NOTIFY);
    xcb_xfixes_select_selection_input(connection_, root_, compositorSelection_,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
}

bool X11Desktop::hasCompositor() const {
    const Reply<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
        connection_, xcb_get_selection_owner(connection_, compositorSelection_), nullptr));
    return owner && owner->owner != XCB_NONE;
}

void X11Desktop::dress(QWindow& window, Kind kind) {
    const xcb_atom_t type = atom(windowType(kind));
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window.winId()),
                        atom("_NET_WM_WINDOW_TYPE"), XCB_ATOM_ATOM, 32, 1, &type);
    if (kind != Kind::panel) return;
    const std::array<xcb_atom_t, 2> states{atom("_NET_WM_STATE_SKIP_TASKBAR"),
                                           atom("_NET_WM_STATE_SKIP_PAGER")};
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window.winId()),
                        atom("_NET_WM_STATE"), XCB_ATOM_ATOM, 32, states.size(), states.data());
}

void X11Desktop::setFrameExtents(QWindow& window, const QMargins& extents) {
    const auto pixels = [&](int points) {
        return static_cast<std::uint32_t>(std::lround(points * window.devicePixelRatio()));
    };
    const std::array<std::uint32_t, 4> sides{pixels(extents.left()), pixels(extents.right()),
                                             pixels(extents.top()), pixels(extents.bottom())};
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window.winId()),
                        atom("_GTK_FRAME_EXTENTS"), XCB_ATOM_CARDINAL, 32, sides.size(), sides.data());
}

/// 0 when there is no such property.
std::uint32_t X11Desktop::windowNamedBy(std::uint32_t window, const char* property) const {
    const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        connection_, xcb_get_property(connection_, 0, window, atom(property), XCB_ATOM_WINDOW, 0, 1),
        nullptr));
    if (!reply || reply->format != 32 || xcb_get_property_value_length(reply.get()) < 4) return XCB_NONE;
    return *static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
}

bool X11Desktop::hasWindowManager() const {
    constexpr const char* check = "_NET_SUPPORTING_WM_CHECK";
    // The property outlives a window manager that crashed; the window it names does not.
    const auto window = windowNamedBy(root_, check);
    return window != XCB_NONE && windowNamedBy(window, check) == window;
}

std::uint32_t X11Desktop::frontWindow() const {
    if (hasWindowManager()) return windowNamedBy(root_, "_NET_ACTIVE_WINDOW");
    const Reply<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
    return reply ? reply->focus : XCB_NONE;
}

void X11Desktop::bringToFront(std::uint32_t window) {
    if (window == XCB_NONE) return;
    if (!hasWindowManager()) {
        xcb_set_input_focus(connection_, XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
        xcb_flush(connection_);
        return;
    }
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = atom("_NET_ACTIVE_WINDOW");
    // Source 2: the user asked for it, so that nobody takes it for a window that wants to come in between.
    message.data.data32[0] = 2;
    xcb_send_event(connection_, 0, root_,
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&message));
    xcb_flush(connection_);
}

void X11Desktop::setShape(QWindow& window, const std::optional<QRegion>& region) {
    applyShape(window, XCB_SHAPE_SK_BOUNDING, region);
}

void X11Desktop::setInputShape(QWindow& window, const QRegion& region) {
    applyShape(window, XCB_SHAPE_SK_INPUT, region);
}

void X11Desktop::applyShape(QWindow& window, std::uint8_t kind, const std::optional<QRegion>& region) {
    const auto id = static_cast<xcb_window_t>(window.winId());
    if (!region) {
        xcb_shape_mask(connection_, XCB_SHAPE_SO_SET, kind, id, 0, 0, XCB_PIXMAP_NONE);
        return;
    }
    const auto parts = rectangles(*region);
    xcb_shape_rectangles(connection_, XCB_SHAPE_SO_SET, kind, XCB_CLIP_ORDERING_UNSORTED, id, 0, 0,
                         static_cast<std::uint32_t>(parts.size()), parts.data());
    xcb_flush(connection_);
}

bool X11Desktop::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
    if (eventType != "xcb_generic_event_t") return false;
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    const auto type = static_cast<std::uint8_t>(event->response_type & 0x7FU);
    if (type == XCB_PROPERTY_NOTIFY) {
        const auto* change = reinterpret_cast<const xcb_property_notify_event_t*>(event);
        if (change->window == root_ && change->atom == stacking_) onRestacked();
    } else if (selectionEvent_ != 0 && type == selectionEvent_) {
        const auto* change = reinterpret_cast<const xcb_xfixes_selection_notify_event_t*>(event);
        if (change->selection == compositorSelection_) composited.set(change->owner != XCB_NONE);
    }
    return false;
}

}  // namespace dorix
