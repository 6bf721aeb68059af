#include "linux/x11/X11Composition.h"

#include <string>
#include <string_view>

namespace dorix {

/// As it was asked for, before its answers are waited for, and what they say.
struct X11Composition::Window {
    Window(const X11Visit& visit, xcb_window_t asked)
        : number(asked),
          askedAttributes(xcb_get_window_attributes(visit.get(), asked)),
          askedGeometry(xcb_get_geometry(visit.get(), asked)) {}

    void read(const X11Visit& visit) {
        attributes = visit.ask(xcb_get_window_attributes_reply, askedAttributes);
        geometry = visit.ask(xcb_get_geometry_reply, askedGeometry);
    }

    bool shows() const {
        return attributes && geometry && attributes->map_state == XCB_MAP_STATE_VIEWABLE &&
               attributes->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT;
    }

    xcb_rectangle_t inside() const {
        return {.x = 0, .y = 0, .width = geometry->width, .height = geometry->height};
    }

    xcb_window_t number;
    xcb_get_window_attributes_cookie_t askedAttributes;
    xcb_get_geometry_cookie_t askedGeometry;
    XcbPtr<xcb_get_window_attributes_reply_t> attributes;
    XcbPtr<xcb_get_geometry_reply_t> geometry;
};

namespace {

/// The server's own is what a compositor draws the whole screen on.
bool isOfServer(const X11Visit& visit, xcb_window_t window) {
    constexpr std::uint32_t numberBits = 0x1FFF'FFFF;
    const auto ownerBits = numberBits & ~xcb_get_setup(visit.get())->resource_id_mask;
    return ((window ^ visit.root()) & ownerBits) == 0;
}

xcb_atom_t atomOf(const X11Visit& visit, std::string_view name) {
    const auto answer =
        visit.ask(xcb_intern_atom_reply,
                  xcb_intern_atom(visit.get(), 1, static_cast<std::uint16_t>(name.size()), name.data()));
    return answer ? answer->atom : xcb_atom_t{XCB_ATOM_NONE};
}

}  // namespace

bool X11Composition::isComposited() {
    // The program is on the first screen; displays with several have gone out of use.
    const auto selection = atomOf(visit_, "_NET_WM_CM_S0");
    if (selection == XCB_ATOM_NONE) return false;
    const auto owner =
        visit_.ask(xcb_get_selection_owner_reply, xcb_get_selection_owner(visit_.get(), selection));
    return owner && owner->owner != XCB_NONE;
}

xcb_pixmap_t X11Composition::wallpaper() {
    const auto name = atomOf(visit_, "_XROOTPMAP_ID");
    const auto told = visit_.ask(xcb_get_property_reply, xcb_get_property(visit_.get(), 0, visit_.root(),
                                                                          name, XCB_ATOM_PIXMAP, 0, 1));
    if (!told || told->format != 32 || told->value_len != 1) return XCB_PIXMAP_NONE;
    return *static_cast<const xcb_pixmap_t*>(xcb_get_property_value(told.get()));
}

/// What is on the root window itself may be what a compositor has drawn of all windows.
void X11Composition::addGround() {
    const bool composited = isComposited();
    const xcb_drawable_t ground = composited ? wallpaper() : visit_.root();
    if (ground == XCB_NONE) return;
    canvas_.copy(ground, area_, 0, 0, X11Canvas::Inferiors::left);
}

void X11Composition::addAll(const std::vector<xcb_window_t>& numbers) {
    addGround();
    std::vector<Window> windows;
    for (const auto number : numbers) {
        if (!isOfServer(visit_, number)) windows.emplace_back(visit_, number);
    }
    for (auto& window : windows) {
        window.read(visit_);
        if (window.shows()) add(window);
    }
}

void X11Composition::add(const Window& window) {
    const int x = window.geometry->x + window.geometry->border_width - area_.x;
    const int y = window.geometry->y + window.geometry->border_width - area_.y;
    const bool isOutside = x >= area_.width || y >= area_.height || x + window.geometry->width <= 0 ||
                           y + window.geometry->height <= 0;
    if (isOutside) return;
    if (window.geometry->depth == canvas_.depth()) {
        canvas_.copy(window.number, window.inside(), x, y);
    } else {
        blend(window, x, y);
    }
}

/// Pixels of another depth are translucent, or written in another way.
void X11Composition::blend(const Window& window, int x, int y) {
    const auto from = formatOf(window.attributes->visual);
    const auto to = formatOf(visit_.screen().root_visual);
    if (from == XCB_NONE || to == XCB_NONE) return;
    const X11Canvas own(visit_, window.attributes->visual, window.inside(), X11Canvas::Ground::clear);
    own.copy(window.number, window.inside(), 0, 0);
    const auto source = xcb_generate_id(visit_.get());
    const auto target = xcb_generate_id(visit_.get());
    xcb_render_create_picture(visit_.get(), source, own.pixmap(), from, 0, nullptr);
    xcb_render_create_picture(visit_.get(), target, canvas_.pixmap(), to, 0, nullptr);
    xcb_render_composite(visit_.get(), XCB_RENDER_PICT_OP_OVER, source, XCB_NONE, target, 0, 0, 0, 0,
                         static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), window.geometry->width,
                         window.geometry->height);
    for (const auto picture : {source, target}) xcb_render_free_picture(visit_.get(), picture);
}

xcb_render_pictformat_t X11Composition::formatOf(xcb_visualid_t visual) {
    if (!formats_) {
        formats_.emplace();
        if (visit_.has(xcb_render_id))
            formats_ =
                visit_.ask(xcb_render_query_pict_formats_reply, xcb_render_query_pict_formats(visit_.get()));
    }
    if (!*formats_) return XCB_NONE;
    for (auto screen = xcb_render_query_pict_formats_screens_iterator(formats_->get()); screen.rem > 0;
         xcb_render_pictscreen_next(&screen)) {
        for (auto depth = xcb_render_pictscreen_depths_iterator(screen.data); depth.rem > 0;
             xcb_render_pictdepth_next(&depth)) {
            for (auto each = xcb_render_pictdepth_visuals_iterator(depth.data); each.rem > 0;
                 xcb_render_pictvisual_next(&each)) {
                if (each.data->visual == visual) return each.data->format;
            }
        }
    }
    return XCB_NONE;
}

}  // namespace dorix
