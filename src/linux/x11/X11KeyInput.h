#pragma once

#include "linux/x11/X11Connection.h"
#include "linux/x11/X11Keyboard.h"
#include "linux/x11/X11ServerClock.h"

#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <vector>

namespace dorix {

/// A key that went down or up.
struct KeyStroke {
    enum class Direction { down, up };

    xcb_keycode_t key = 0;
    Direction direction = Direction::down;
    /// When it happened, on the executor's clock.
    double time = 0;
};

/// What the user does on the keyboard, whoever has the focus or grabbed it, and the way to fake keys. Main
/// executor; events come as the server sends them, without auto-repeat.
///
/// Keys faked here are hidden from the listeners and do not count as held; those that other programs fake
/// (an on-screen keyboard, a remote desktop) are the user's.
class X11KeyInput {
 public:
    X11KeyInput(X11Connection& connection, X11Keyboard& keyboard);

    /// Listeners are called after the held keys took the stroke in.
    Subscription listen(std::function<void(const KeyStroke&)> listener) {
        return strokes_.add(std::move(listener));
    }

    /// The keys that the user holds.
    const X11Keyboard::KeySet& held() const { return held_; }

    /// The modifier flags of the keys that the user holds, and of CapsLock.
    std::uint64_t modifierFlags() const;

    /// When a key event happened, as the strokes tell it.
    double timeOf(const xcb_key_press_event_t& event) {
        return clock_.at(event.time, connection_.executor().now());
    }

    /// Sends a stroke as if typed; the caller flushes the connection.
    void fake(KeyStroke stroke);

    /// Where the application in front saw Alt or Super go down and would see it go up with nothing in
    /// between, many open their menu on that. This puts a key without a meaning in between.
    void spoilMenuActivation();

    /// Asks the server which keys are down, a round trip: keys that went up unseen are told to the listeners
    /// now. Keys that went down unseen are taken in silently if `adopt` says so.
    enum class Adopt { nothing, heldKeys };
    void repair(Adopt adopt);

 private:
    struct Faked {
        KeyStroke stroke;
        double expires = 0;
    };

    void selectEvents();
    void listenToDevices();
    void handleDevice(const xcb_generic_event_t& event, KeyStroke::Direction direction);
    void handleGrabbed(const xcb_generic_event_t& event);
    void handle(xcb_keycode_t key, KeyStroke::Direction direction, std::uint32_t time);
    bool awaitsFaked();
    bool wasFaked(const KeyStroke& stroke);
    bool isRepeat(const KeyStroke& stroke, std::uint32_t time);
    void take(const KeyStroke& stroke);

    X11Connection& connection_;
    X11Keyboard& keyboard_;
    X11ServerClock clock_;
    X11Keyboard::KeySet held_;
    std::array<std::uint32_t, 256> lastDown_{};
    std::deque<Faked> faked_;
    /// A repair was put off until the faked keys have come back.
    bool repairOwed_ = false;
    Observers<KeyStroke> strokes_;
    std::vector<Subscription> tokens_;
};

}  // namespace dorix
