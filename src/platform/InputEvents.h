#pragma once

#include "base/Observable.h"
#include "base/async/Task.h"

#include <cstdint>
#include <functional>

namespace dorix {

struct KeyEvent {
    std::uint16_t keyCode = 0;
    /// The modifiers as they are after the event.
    std::uint64_t modifierFlags = 0;
    /// When it happened, on the main executor's clock; it may have waited to be told.
    double time = 0;

    bool operator==(const KeyEvent&) const = default;
};

enum class KeyEventMask : std::uint64_t { keyDown = 1U << 10U, flagsChanged = 1U << 12U };

/// Sees the keyboard whatever application has the focus. Key-downs come without auto-repeat. Everything on
/// the main executor; nothing blocks.
class KeyEventMonitors {
 public:
    using GlobalHandler = std::function<void(const KeyEvent&)>;
    /// True swallows the event.
    using LocalHandler = std::function<bool(const KeyEvent&)>;

    virtual ~KeyEventMonitors() = default;

    /// Sees the events that go to other applications, and cannot change them. Empty where the system does
    /// not let us see them.
    virtual Subscription addGlobalMonitor(KeyEventMask mask, GlobalHandler handler) = 0;

    /// Sees the events that come to this application's own windows, before they do. Empty likewise.
    virtual Subscription addLocalMonitor(KeyEventMask mask, LocalHandler handler) = 0;

    /// Whether the keyboard reports the modifier key with this code at all; fn often is not.
    virtual bool reportsKey(std::uint16_t keyCode) const = 0;

    /// Whether the modifier key is held to type characters in the layout in force, as AltGr is.
    virtual bool typesCharacters(std::uint16_t keyCode) const = 0;

    /// Called after the keyboard or its layout has changed.
    virtual Subscription onKeyboardChange(std::function<void()> callback) = 0;

    /// The modifier key that is being reported down is held for this application: where the system opens a
    /// menu when such a key goes up with nothing in between, it will not for this press, if that is more
    /// than a tap.
    virtual void keepMenuShut() = 0;

    /// While the token lives, presses of the key, with whatever modifiers, go to no application; the monitors
    /// see them all the same. Empty, and the key goes where it always did, where another program has it or
    /// the system gives it to nobody.
    virtual Subscription withhold(std::uint16_t keyCode) = 0;
};

/// Where there is no keyboard to see.
class UnavailableKeyEventMonitors final : public KeyEventMonitors {
 public:
    Subscription addGlobalMonitor(KeyEventMask, GlobalHandler) override { return {}; }
    Subscription addLocalMonitor(KeyEventMask, LocalHandler) override { return {}; }
    bool reportsKey(std::uint16_t) const override { return false; }
    bool typesCharacters(std::uint16_t) const override { return false; }
    Subscription onKeyboardChange(std::function<void()>) override { return {}; }
    void keepMenuShut() override {}
    Subscription withhold(std::uint16_t) override { return {}; }
};

/// Sees the mouse whatever application it is used in. Everything on the main executor; nothing blocks.
class MouseEventMonitors {
 public:
    using GlobalHandler = std::function<void()>;

    virtual ~MouseEventMonitors() = default;

    /// Sees the presses of buttons that go to other applications, and cannot change them; a turn of the wheel
    /// is no press, nor is one in what pops up over the windows, such as an input method's candidates. Empty
    /// where the system does not let us see them.
    virtual Subscription addGlobalMonitor(GlobalHandler handler) = 0;
};

/// Where there is no mouse to see.
class UnavailableMouseEventMonitors final : public MouseEventMonitors {
 public:
    Subscription addGlobalMonitor(GlobalHandler) override { return {}; }
};

/// Strikes keys as if typed, in whatever has the focus. Main executor.
class EventPoster {
 public:
    /// What must hold for a stroke to be sent. It is asked at the last moment: nothing that other
    /// applications do comes between the answer and the stroke. It asks the system only, and at once.
    using Condition = std::function<bool()>;

    virtual ~EventPoster() = default;

    /// Presses and lets go of the key with what the application in front takes for its command chord (Ctrl,
    /// or Ctrl and Shift in a terminal). Modifiers that the user holds at that moment do not mix into it.
    /// Does not wait for anything to come of it. False when nothing was struck: `still` was false, or the
    /// application has no such chord.
    virtual Task<bool> postCommandKey(std::uint16_t keyCode, Condition still) = 0;
};

/// Strokes go nowhere.
class UnavailableEventPoster final : public EventPoster {
 public:
    Task<bool> postCommandKey(std::uint16_t, Condition) override { co_return false; }
};

}  // namespace dorix
