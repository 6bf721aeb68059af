#include "views/X11Desktop.h"

#include <xcb/shape.h>
#include <xcb/xcb.h>
#include <xcb/xfixes.h>

#include <QGuiApplication>
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
