#pragma once

#include "adapters/harness/EventLoop.h"
#include "adapters/harness/OtherProgram.h"
#include "linux/x11/SelectionContents.h"
#include "linux/x11/X11Connection.h"
#include "linux/x11/X11KeyInput.h"
#include "linux/x11/X11Keyboard.h"
#include "linux/x11/X11Windows.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace dorix {

/// Connects to $DISPLAY, or to `display`; throws where there is none.
std::unique_ptr<X11Connection> connectTo(EventLoop& loop, const std::string& display = {});

/// Runs the function in a process of its own that shares everything with this one, which waits. The X server
/// takes what connects there for another program, with the process id that is given back.
pid_t inAnotherProcess(const std::function<void()>& function);

/// A window on the connection's display, mapped.
xcb_window_t openWindow(X11Connection& connection, xcb_window_t parent, bool popsUp = false);

void setProperty(X11Connection& connection, xcb_window_t window, const char* name, const char* type,
                 const std::string& value);

/// Makes a hidden window the selection's owner.
xcb_window_t takeSelection(X11Connection& connection, const char* name);
/// XCB_WINDOW_NONE when it has none.
xcb_window_t selectionOwner(X11Connection& connection, const char* name);

/// What the connection's program is given for a selection.
std::optional<SelectionData> readSelection(EventLoop& loop, X11Connection& connection, const char* selection,
                                           std::string_view target);

/// A window of another application: its own connection, class and, unless it is to be ours, process.
class OtherApplication {
 public:
    enum class Belongs { toAnother, toUs };

    OtherApplication(EventLoop& loop, const std::string& instance, const std::string& className,
                     Belongs belongs);
    ~OtherApplication();

    pid_t pid() const { return pid_; }
    xcb_window_t window() const { return window_; }
    X11Connection& connection() { return *connection_; }

    /// The keys that reached the window, as "+NAME/STATE" and "-NAME/STATE" with the modifier bits in
    /// hexadecimal, auto-repeat included.
    const std::vector<std::string>& keys() const { return keys_; }
    std::size_t count(const std::string& key) const;
    void forgetKeys() { keys_.clear(); }

 private:
    void handleKey(const xcb_generic_event_t& event, char sign);

    pid_t pid_;
    std::unique_ptr<X11Connection> connection_;
    std::unique_ptr<X11Keyboard> keyboard_;
    xcb_window_t window_ = XCB_WINDOW_NONE;
    std::vector<std::string> keys_;
    std::vector<Subscription> tokens_;
};

/// A test on the X display in $DISPLAY, with a window manager.
class XDesktopTest : public testing::Test {
 protected:
    XDesktopTest() { settle(); }
    ~XDesktopTest() override;

    bool waitFor(const std::function<bool()>& condition, double seconds = 15) {
        return loop_.runUntil(condition, seconds);
    }

    /// Waits until everything that was sent on either connection has been carried out and heard of.
    void settle();

    template <typename T>
    T result(Task<T> task) {
        return loop_.result(std::move(task));
    }

    /// As the user's keyboard: through the connection of another program.
    void userKey(xcb_keycode_t key, KeyStroke::Direction direction);
    void userDown(std::uint16_t code) { userKey(keyboard_.keyFor(code).value(), KeyStroke::Direction::down); }
    void userUp(std::uint16_t code) { userKey(keyboard_.keyFor(code).value(), KeyStroke::Direction::up); }
    void tapKey(xcb_keycode_t key);
    void tap(std::uint16_t code) { tapKey(keyboard_.keyFor(code).value()); }

    /// The keyboard that the user types on, and the server's test keyboard, which is what fakes keys. Where
    /// the difference is of no matter, userKey() fakes the user's as well.
    std::uint16_t boardDevice() { return keyboardDevice(false); }
    std::uint16_t testDevice() { return keyboardDevice(true); }
    void boardKey(xcb_keycode_t key, KeyStroke::Direction direction);
    void tapBoardKey(xcb_keycode_t key);
    bool isDown(std::uint16_t device, xcb_keycode_t key);

    void setLayout(const std::string& arguments);

    std::unique_ptr<OtherApplication> openApplication(
        const std::string& instance, const std::string& className,
        OtherApplication::Belongs belongs = OtherApplication::Belongs::toAnother);

    EventLoop loop_;
    std::unique_ptr<X11Connection> connection_ = connectTo(loop_);
    std::unique_ptr<X11Connection> user_ = connectTo(loop_);
    X11Keyboard keyboard_{*connection_};
    X11KeyInput input_{*connection_, keyboard_};
    X11Windows windows_{*connection_};

 private:
    std::uint16_t keyboardDevice(bool test);

    X11Keyboard::KeySet userHolds_;
    bool layoutChanged_ = false;
};

}  // namespace dorix
