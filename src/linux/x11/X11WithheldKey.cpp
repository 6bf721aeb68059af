#include "linux/x11/X11WithheldKey.h"

#include "base/Log.h"

#include <xcb/xinput.h>

namespace dorix {

namespace {
constexpr std::uint32_t anyModifier = XCB_INPUT_MODIFIER_MASK_ANY;
}

X11WithheldKey::X11WithheldKey(X11Connection& connection, X11Keyboard& keyboard, std::uint16_t virtualKeyCode)
    : connection_(connection),
      keyboard_(keyboard),
      virtualKeyCode_(virtualKeyCode),
      layout_(keyboard.onChange([this] { follow(); })) {
    follow();
}

X11WithheldKey::~X11WithheldKey() {
    for (unsigned key = 0; key < taken_.size(); ++key) {
        if (taken_[key]) letGo(static_cast<xcb_keycode_t>(key));
    }
    connection_.flush();
}

void X11WithheldKey::follow() {
    if (connection_.isLost()) return;
    for (unsigned key = 0; key < taken_.size(); ++key) {
        const auto code = static_cast<xcb_keycode_t>(key);
        const bool wanted = keyboard_.virtualKeyCode(code) == virtualKeyCode_;
        if (wanted == taken_[key]) continue;
        if (!wanted) letGo(code);
        taken_[key] = wanted && take(code);
    }
}

/// Of the two kinds of grabs neither keeps the other from being made, and of several that a stroke fits the
/// newest has it: so the window manager's own chords with the key are no hindrance.
bool X11WithheldKey::take(xcb_keycode_t key) {
    constexpr std::uint32_t events = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_KEY_RELEASE;
    const auto asked = xcb_input_xi_passive_grab_device(
        connection_.get(), XCB_CURRENT_TIME, connection_.root(), XCB_CURSOR_NONE, key,
        XCB_INPUT_DEVICE_ALL_MASTER, 1, 1, XCB_INPUT_GRAB_TYPE_KEYCODE, XCB_INPUT_GRAB_MODE_22_ASYNC,
        XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_INPUT_GRAB_OWNER_NO_OWNER, &events, &anyModifier);
    const auto refused = connection_.reply(xcb_input_xi_passive_grab_device_reply, asked);
    if (refused && refused->num_modifiers == 0) return true;
    const auto error =
        connection_.check(xcb_grab_key_checked(connection_.get(), 0, connection_.root(), XCB_MOD_MASK_ANY,
                                               key, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    if (error != 0) logLine("another program has the key that cancels, and will get it as well");
    return error == 0;
}

void X11WithheldKey::letGo(xcb_keycode_t key) {
    xcb_input_xi_passive_ungrab_device(connection_.get(), connection_.root(), key,
                                       XCB_INPUT_DEVICE_ALL_MASTER, 1, XCB_INPUT_GRAB_TYPE_KEYCODE,
                                       &anyModifier);
    xcb_ungrab_key(connection_.get(), key, connection_.root(), XCB_MOD_MASK_ANY);
}

}  // namespace dorix
