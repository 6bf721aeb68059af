#include "linux/x11/X11Visit.h"

namespace dorix {

X11Visit::X11Visit(const std::string& display) {
    int number = 0;
    connection_.reset(xcb_connect(display.empty() ? nullptr : display.c_str(), &number));
    if (xcb_connection_has_error(get()) != 0) throw Failure("the X display could not be opened");
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(get()));
    for (; number > 0 && screens.rem > 1; --number) xcb_screen_next(&screens);
    screen_ = screens.data;
}

void X11Visit::demand(xcb_void_cookie_t cookie) const {
    const XcbPtr<xcb_generic_error_t> error(xcb_request_check(get(), cookie));
    if (error || xcb_connection_has_error(get()) != 0) throw Failure("the display refuses a request");
}

bool X11Visit::has(xcb_extension_t& extension) const {
    const auto* data = xcb_get_extension_data(get(), &extension);
    return data != nullptr && data->present != 0;
}

}  // namespace dorix
