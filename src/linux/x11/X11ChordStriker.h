#pragma once

#include "linux/x11/X11KeyInput.h"
#include "linux/x11/X11Keyboard.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <vector>

namespace dorix {

/// Strikes chords as if on a keyboard at rest, whatever the user holds, has latched or locked, and whatever
/// help with typing is switched on, and leaves all of that as it was. CapsLock and NumLock stay on: no
/// application's copy and paste chords mind them. Main executor.
///
/// The server gets a chord and all that goes with it in one piece, so that no end of the program can come in
/// between. What stays behind, modifiers that the user holds and that had to be pressed again, is written
/// down at the server and let go of by the next program's striker if this one's cannot.
class X11ChordStriker {
 public:
    /// Lets go of what an earlier program left pressed.
    X11ChordStriker(X11Connection& connection, X11Keyboard& keyboard, X11KeyInput& input);
    ~X11ChordStriker();
    X11ChordStriker(const X11ChordStriker&) = delete;
    X11ChordStriker& operator=(const X11ChordStriker&) = delete;

    /// Presses the keys in this order and lets go of them in the other. One round trip; it does not wait for
    /// the strokes to arrive.
    void strike(const std::vector<xcb_keycode_t>& keys);

 private:
    struct Resting;

    Resting ask();
    void letGo(const Resting& state);
    void pressAgain(const Resting& state);
    void spoilMenus(const Resting& state);
    void writeDown();
    void releaseLeftovers();
    void handleStroke(const KeyStroke& stroke);

    X11Connection& connection_;
    X11Keyboard& keyboard_;
    X11KeyInput& input_;
    /// Modifiers that the test keyboard holds because the user does.
    X11Keyboard::KeySet pressedAgain_;
    Subscription strokes_;
};

}  // namespace dorix
