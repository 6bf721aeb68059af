#pragma once

#include "linux/x11/X11Connection.h"
#include "linux/x11/X11Keyboard.h"

#include <cstdint>

namespace dorix {

/// While it lives, the keys with this virtual code go to nobody but this connection, whatever modifiers are
/// held with them. Follows changes of layout. Where other programs have the key, they keep it, and the log
/// says so. Main executor; taking a key waits for the server.
class X11WithheldKey {
 public:
    X11WithheldKey(X11Connection& connection, X11Keyboard& keyboard, std::uint16_t virtualKeyCode);
    ~X11WithheldKey();
    X11WithheldKey(const X11WithheldKey&) = delete;
    X11WithheldKey& operator=(const X11WithheldKey&) = delete;

    bool isEmpty() const { return taken_.none(); }

 private:
    void follow();
    bool take(xcb_keycode_t key);
    void letGo(xcb_keycode_t key);

    X11Connection& connection_;
    X11Keyboard& keyboard_;
    const std::uint16_t virtualKeyCode_;
    X11Keyboard::KeySet taken_;
    Subscription layout_;
};

}  // namespace dorix
