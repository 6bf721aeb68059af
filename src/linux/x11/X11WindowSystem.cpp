#include "linux/x11/X11WindowSystem.h"

#include <xcb/shape.h>
#include <xcb/xfixes.h>

#include <algorithm>
#include <span>
#include <utility>

namespace dorix {

namespace {

const char* windowType(WindowSystem::Kind kind) {
    switch (kind) {
        case WindowSystem::Kind::utility:
        case WindowSystem::Kind::panel:
            return "_NET_WM_WINDOW_TYPE_UTILITY";
        case WindowSystem::Kind::notification:
            return "_NET_WM_WINDOW_TYPE_NOTIFICATION";
        case WindowSystem::Kind::menu:
            return "_NET_WM_WINDOW_TYPE_POPUP_MENU";
        case WindowSystem::Kind::tooltip:
            break;
    }
    return "_NET_WM_WINDOW_TYPE_TOOLTIP";
}

xcb_window_t xcbWindow(WindowSystem::Window window) { return static_cast<xcb_window_t>(window); }

}  // namespace

X11WindowSystem::X11WindowSystem(X11Connection& connection, X11Windows& windows,
                                 std::function<void()> finishToolkitRequests)
    : connection_(connection), windows_(windows), finishToolkitRequests_(std::move(finishToolkitRequests)) {
    watchCompositor();
    watchStacking();
    watchFullScreen();
}

void X11WindowSystem::watchCompositor() {
    // The toolkit is on the first screen; displays with several have gone out of use.
    const xcb_atom_t selection = connection_.atom("_NET_WM_CM_S0");
    const auto first = xcb_get_extension_data(connection_.get(), &xcb_xfixes_id)->first_event;
    compositorChanges_ = connection_.listen(
        static_cast<std::uint8_t>(first + XCB_XFIXES_SELECTION_NOTIFY), [this, selection](const auto& event) {
            const auto& change = reinterpret_cast<const xcb_xfixes_selection_notify_event_t&>(event);
            if (change.selection == selection) composited.set(change.owner != XCB_NONE);
        });
    xcb_xfixes_select_selection_input(connection_.get(), connection_.root(), selection,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    const auto owner = connection_.reply(xcb_get_selection_owner_reply,
                                         xcb_get_selection_owner(connection_.get(), selection));
    composited.set(owner && owner->owner != XCB_NONE);
}

void X11WindowSystem::watchStacking() {
    const xcb_atom_t stacking = connection_.atom("_NET_CLIENT_LIST_STACKING");
    stackingChanges_ = connection_.listen(XCB_PROPERTY_NOTIFY, [this, stacking](const auto& event) {
        const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (change.window == connection_.root() && change.atom == stacking) onRestacked();
    });
    connection_.selectRootEvents(XCB_EVENT_MASK_PROPERTY_CHANGE);
    connection_.flush();
}

void X11WindowSystem::watchFullScreen() {
    const xcb_atom_t active = connection_.atom("_NET_ACTIVE_WINDOW");
    const xcb_atom_t state = connection_.atom("_NET_WM_STATE");
    fullScreenChanges_.push_back(connection_.listen(XCB_PROPERTY_NOTIFY, [=, this](const auto& event) {
        const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        const bool isFront = change.window == connection_.root() && change.atom == active;
        const bool isState = change.window == front_ || change.window == fullScreen_;
        if (isFront || (isState && change.atom == state)) updateFullScreen();
    }));
    fullScreenChanges_.push_back(connection_.listen(XCB_UNMAP_NOTIFY, [this](const auto& event) {
        const auto& change = reinterpret_cast<const xcb_unmap_notify_event_t&>(event);
        if (change.window == fullScreen_) updateFullScreen();
    }));
    fullScreenChanges_.push_back(connection_.listen(XCB_DESTROY_NOTIFY, [this](const auto& event) {
        const auto& change = reinterpret_cast<const xcb_destroy_notify_event_t&>(event);
        if (change.window == fullScreen_) updateFullScreen();
    }));
    updateFullScreen();
}

void X11WindowSystem::updateFullScreen() {
    front_ = windows_.frontWindow();
    if (front_ != XCB_WINDOW_NONE) {
        const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_change_window_attributes(connection_.get(), front_, XCB_CW_EVENT_MASK, &mask);
    }
    const auto before = fullScreen_;
    if (windows_.isFullScreen(front_)) {
        fullScreen_ = front_;
    } else if (!stillFillsScreen(fullScreen_)) {
        fullScreen_ = XCB_WINDOW_NONE;
    }
    if (fullScreen_ != before) onFullScreenChanged();
}

/// With the keyboard elsewhere it still does, as long as that is on another screen.
bool X11WindowSystem::stillFillsScreen(xcb_window_t window) {
    return windows_.isFullScreen(window) && windows_.isViewable(window) && !overlap(window, front_);
}

bool X11WindowSystem::overlap(xcb_window_t one, xcb_window_t other) {
    const auto a = windows_.frame(one);
    const auto b = windows_.frame(other);
    return a && b && a->x < b->x + b->width && b->x < a->x + a->width && a->y < b->y + b->height &&
           b->y < a->y + a->height;
}

bool X11WindowSystem::isOverFullScreen(Window window) {
    if (fullScreen_ == XCB_WINDOW_NONE) return false;
    finishToolkitRequests_();
    return overlap(xcbWindow(window), fullScreen_);
}

/// Window managers put a window that fills the screen above those that are to stay above, but not above its
/// own dialogs.
void X11WindowSystem::raiseOverFullScreen(Window window) {
    if (isOverFullScreen(window)) {
        setProperty(window, "WM_TRANSIENT_FOR", XCB_ATOM_WINDOW, {fullScreen_});
    } else {
        xcb_delete_property(connection_.get(), xcbWindow(window), XCB_ATOM_WM_TRANSIENT_FOR);
    }
    connection_.flush();
}

void X11WindowSystem::setProperty(Window window, const char* name, xcb_atom_t type,
                                  const std::vector<std::uint32_t>& values) {
    finishToolkitRequests_();
    connection_.check(xcb_change_property_checked(connection_.get(), XCB_PROP_MODE_REPLACE, xcbWindow(window),
                                                  connection_.atom(name), type, 32,
                                                  static_cast<std::uint32_t>(values.size()), values.data()));
}

void X11WindowSystem::dress(Window window, Kind kind) {
    setProperty(window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, {connection_.atom(windowType(kind))});
    if (kind != Kind::panel) return;
    setProperty(
        window, "_NET_WM_STATE", XCB_ATOM_ATOM,
        {connection_.atom("_NET_WM_STATE_SKIP_TASKBAR"), connection_.atom("_NET_WM_STATE_SKIP_PAGER")});
}

void X11WindowSystem::setFrameExtents(Window window, const Margins& extents) {
    const auto cardinal = [](int pixels) { return static_cast<std::uint32_t>(pixels); };
    setProperty(
        window, "_GTK_FRAME_EXTENTS", XCB_ATOM_CARDINAL,
        {cardinal(extents.left), cardinal(extents.right), cardinal(extents.top), cardinal(extents.bottom)});
}

void X11WindowSystem::setShape(Window window, const std::optional<Region>& region) {
    applyShape(window, XCB_SHAPE_SK_BOUNDING, region);
}

void X11WindowSystem::setInputShape(Window window, const Region& region) {
    applyShape(window, XCB_SHAPE_SK_INPUT, region);
}

void X11WindowSystem::applyShape(Window window, std::uint8_t kind, const std::optional<Region>& region) {
    finishToolkitRequests_();
    if (!region) {
        connection_.check(xcb_shape_mask_checked(connection_.get(), XCB_SHAPE_SO_SET, kind, xcbWindow(window),
                                                 0, 0, XCB_PIXMAP_NONE));
        return;
    }
    std::vector<xcb_rectangle_t> parts;
    for (const Rectangle& part : *region) {
        parts.push_back({.x = static_cast<std::int16_t>(part.x),
                         .y = static_cast<std::int16_t>(part.y),
                         .width = static_cast<std::uint16_t>(part.width),
                         .height = static_cast<std::uint16_t>(part.height)});
    }
    connection_.check(xcb_shape_rectangles_checked(connection_.get(), XCB_SHAPE_SO_SET, kind,
                                                   XCB_CLIP_ORDERING_UNSORTED, xcbWindow(window), 0, 0,
                                                   static_cast<std::uint32_t>(parts.size()), parts.data()));
}

/// The hints of the window but for this one stay the toolkit's.
void X11WindowSystem::setTakesKeyboard(Window window, bool takes) {
    constexpr std::uint32_t inputHint = 1;
    constexpr std::uint32_t hintWords = 9;
    finishToolkitRequests_();
    const auto reply = connection_.reply(
        xcb_get_property_reply, xcb_get_property(connection_.get(), 0, xcbWindow(window), XCB_ATOM_WM_HINTS,
                                                 XCB_ATOM_WM_HINTS, 0, hintWords));
    std::vector<std::uint32_t> hints(hintWords);
    if (reply && reply->format == 32) {
        const std::span was(static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get())),
                            std::min(reply->value_len, hintWords));
        std::ranges::copy(was, hints.begin());
    }
    hints[0] |= inputHint;
    hints[1] = takes ? 1 : 0;
    setProperty(window, "WM_HINTS", XCB_ATOM_WM_HINTS, hints);
}

void X11WindowSystem::bringToFront(Window window) {
    if (window == XCB_WINDOW_NONE) return;
    finishToolkitRequests_();
    windows_.giveKeyboard(xcbWindow(window));
}

}  // namespace dorix
