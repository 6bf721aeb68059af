#pragma once

#include "base/async/TaskScope.h"
#include "linux/qt/QtMainLoop.h"
#include "linux/x11/X11Connection.h"
#include "linux/x11/X11KeyInput.h"
#include "linux/x11/X11Keyboard.h"
#include "linux/x11/X11Windows.h"

#include <gtest/gtest.h>
#include <sys/types.h>

#include <QCoreApplication>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace dorix::testing {

/// A process of the test, ended with it.
class Process {
 public:
    /// Runs `command` in a shell with `input` on its standard input.
    explicit Process(const std::string& command, const std::string& input = {});
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    bool hasEnded();
    int status() const { return status_; }
    pid_t pid() const { return pid_; }

 private:
    pid_t pid_ = 0;
    int status_ = -1;
    std::FILE* input_ = nullptr;
};

QCoreApplication& theApplication();

/// A window of another application: its own connection, class and, unless it is to be ours, process.
class OtherApplication {
 public:
    enum class Belongs { toAnother, toUs };

    OtherApplication(QtMainLoop& loop, const std::string& instance, const std::string& className,
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

    void setProperty(const char* name, const char* type, const std::string& value);

 private:
    void handleKey(const xcb_key_press_event_t& event, char sign);

    std::unique_ptr<X11Connection> connection_;
    std::unique_ptr<X11Keyboard> keyboard_;
    xcb_window_t window_ = XCB_WINDOW_NONE;
    pid_t pid_ = 0;
    std::vector<std::string> keys_;
    std::vector<X11Connection::Token> tokens_;
};

/// A test on the X display in $DISPLAY, with a window manager.
class DesktopTest : public ::testing::Test {
 protected:
    ~DesktopTest() override;
    void SetUp() override;

    /// Runs the loop until the condition holds; false after `seconds`.
    bool waitFor(const std::function<bool()>& condition, double seconds = 5);

    /// Waits until everything that was sent on either connection has been carried out and heard of.
    void settle();

    template <typename T>
    T result(Task<T> task) {
        std::optional<T> value;
        const auto run = [](Task<T> inner, std::optional<T>& into) -> Task<void> {
            into = co_await std::move(inner);
        };
        tasks_.spawn(run(std::move(task), value));
        EXPECT_TRUE(waitFor([&] { return value.has_value(); }, 10));
        return value ? std::move(*value) : T{};
    }

    /// As the user's keyboard: through the connection of another program.
    void userKey(xcb_keycode_t key, KeyStroke::Direction direction);
    void userDown(std::uint16_t virtualKeyCode);
    void userUp(std::uint16_t virtualKeyCode);

    void setLayout(const std::string& arguments);

    std::unique_ptr<OtherApplication> openApplication(
        const std::string& instance, const std::string& className,
        OtherApplication::Belongs belongs = OtherApplication::Belongs::toAnother);

    QCoreApplication& application_ = theApplication();
    QtMainLoop loop_;
    std::unique_ptr<X11Connection> connection_;
    std::unique_ptr<X11Connection> user_;
    std::unique_ptr<X11Keyboard> keyboard_;
    std::unique_ptr<X11KeyInput> input_;
    std::unique_ptr<X11Windows> windows_;
    TaskScope tasks_{loop_};

 private:
    X11Keyboard::KeySet userHolds_;
    bool layoutChanged_ = false;
};

}  // namespace dorix::testing
