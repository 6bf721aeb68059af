#include "adapters/x11/TestDesktop.h"

#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon-x11.h>

#include <QCoreApplication>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace dorix::testing {

QCoreApplication& theApplication() {
    static int count = 1;
    static char name[] = "x11_adapter_test";
    static char* arguments[] = {name, nullptr};
    static QCoreApplication app(count, arguments);
    return app;
}

namespace {

/// Runs the function in a process of its own that shares everything with this one, which waits. The X server
/// takes what connects there for another program.
pid_t inAnotherProcess(const std::function<void()>& function) {
    constexpr std::size_t stackSize = std::size_t{1} << 20U;
    const std::unique_ptr<std::byte[]> stack(new std::byte[stackSize]);
    const auto run = [](void* argument) {
        (*static_cast<const std::function<void()>*>(argument))();
        return 0;
    };
    const pid_t pid = ::clone(run, stack.get() + stackSize, CLONE_VM | CLONE_FILES | CLONE_VFORK | SIGCHLD,
                              const_cast<std::function<void()>*>(&function));
    ::waitpid(pid, nullptr, 0);
    return pid;
}

}  // namespace

Process::Process(const std::string& command, const std::string& input) {
    // A file rather than a pipe: programs that go to the background keep it open.
    input_ = std::tmpfile();
    std::fwrite(input.data(), 1, input.size(), input_);
    std::fflush(input_);
    std::rewind(input_);
    pid_ = ::fork();
    if (pid_ != 0) return;
    ::setpgid(0, 0);
    ::dup2(::fileno(input_), STDIN_FILENO);
    ::execl("/bin/sh", "sh", "-c", ("exec " + command).c_str(), nullptr);
    ::_exit(127);
}

Process::~Process() {
    if (!hasEnded()) {
        ::kill(-pid_, SIGTERM);
        ::kill(pid_, SIGTERM);
        ::waitpid(pid_, &status_, 0);
    }
    std::fclose(input_);
}

bool Process::hasEnded() {
    if (pid_ == 0) return true;
    if (::waitpid(pid_, &status_, WNOHANG) != pid_) return false;
    pid_ = 0;
    status_ = WEXITSTATUS(status_);
    return true;
}

OtherApplication::OtherApplication(QtMainLoop& loop, const std::string& instance,
                                   const std::string& className, Belongs belongs)
    : pid_(::getpid()) {
    const auto open = [&] { connection_ = X11Connection::open(loop, loop); };
    if (belongs == Belongs::toUs) {
        open();
    } else {
        pid_ = inAnotherProcess(open);
    }
    keyboard_ = std::make_unique<X11Keyboard>(*connection_);
    window_ = xcb_generate_id(connection_->get());
    const std::uint32_t events = XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE;
    xcb_create_window(connection_->get(), XCB_COPY_FROM_PARENT, window_, connection_->root(), 0, 0, 200, 100,
                      0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    const std::string both = instance + '\0' + className + '\0';
    setProperty("WM_CLASS", "STRING", both);
    // As in a sandbox, where every program is the first process.
    const std::uint32_t told = 1;
    xcb_change_property(connection_->get(), XCB_PROP_MODE_REPLACE, window_, connection_->atom("_NET_WM_PID"),
                        XCB_ATOM_CARDINAL, 32, 1, &told);
    xcb_map_window(connection_->get(), window_);
    connection_->flush();
    tokens_.push_back(connection_->listen(XCB_KEY_PRESS, [this](const auto& event) {
        handleKey(reinterpret_cast<const xcb_key_press_event_t&>(event), '+');
    }));
    tokens_.push_back(connection_->listen(XCB_KEY_RELEASE, [this](const auto& event) {
        handleKey(reinterpret_cast<const xcb_key_press_event_t&>(event), '-');
    }));
}

OtherApplication::~OtherApplication() {
    xcb_destroy_window(connection_->get(), window_);
    connection_->flush();
}

void OtherApplication::setProperty(const char* name, const char* type, const std::string& value) {
    xcb_change_property(connection_->get(), XCB_PROP_MODE_REPLACE, window_, connection_->atom(name),
                        connection_->atom(type), 8, static_cast<std::uint32_t>(value.size()), value.data());
    connection_->flush();
}

void OtherApplication::handleKey(const xcb_key_press_event_t& event, char sign) {
    char name[64] = "none";
    for (const int known : {XKB_KEY_v, XKB_KEY_c, XKB_KEY_a, XKB_KEY_space, XKB_KEY_Alt_L, XKB_KEY_Alt_R,
                            XKB_KEY_ISO_Level3_Shift, XKB_KEY_Shift_L, XKB_KEY_Control_L, XKB_KEY_Insert}) {
        const auto symbol = static_cast<xkb_keysym_t>(known);
        if (keyboard_->keyForSymbol(symbol) == event.detail) xkb_keysym_get_name(symbol, name, sizeof name);
    }
    char state[16];
    std::snprintf(state, sizeof state, "/%x", static_cast<unsigned>(event.state & 0xFFU));
    keys_.push_back(std::string(1, sign) + name + state);
}

std::size_t OtherApplication::count(const std::string& key) const {
    return static_cast<std::size_t>(std::ranges::count(keys_, key));
}

DesktopTest::~DesktopTest() {
    for (unsigned key = 0; key < userHolds_.size(); ++key) {
        if (userHolds_[key]) userKey(static_cast<xcb_keycode_t>(key), KeyStroke::Direction::up);
    }
    if (layoutChanged_) setLayout("us -option ''");
}

void DesktopTest::SetUp() {
    if (std::getenv("DISPLAY") == nullptr) {
        if (std::getenv("CI") != nullptr) FAIL() << "DISPLAY is not set";
        GTEST_SKIP() << "DISPLAY is not set";
    }
    connection_ = X11Connection::open(loop_, loop_);
    user_ = X11Connection::open(loop_, loop_);
    ASSERT_TRUE(connection_ && user_);
    keyboard_ = std::make_unique<X11Keyboard>(*connection_);
    input_ = std::make_unique<X11KeyInput>(*connection_, *keyboard_);
    windows_ = std::make_unique<X11Windows>(*connection_);
    settle();
}

bool DesktopTest::waitFor(const std::function<bool()>& condition, double seconds) {
    const double deadline = loop_.now() + seconds;
    QTimer tick;
    tick.start(20);
    while (!condition()) {
        if (loop_.now() > deadline) return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

void DesktopTest::settle() {
    // The server answers each client in order, so what came before the answer is in the queue when it comes.
    for (auto* connection : {user_.get(), connection_.get()}) {
        connection->reply(xcb_get_input_focus_reply, xcb_get_input_focus(connection->get()));
    }
    bool done = false;
    loop_.after(0, [&] { done = true; });
    waitFor([&] { return done; });
    QCoreApplication::processEvents();
}

void DesktopTest::userKey(xcb_keycode_t key, KeyStroke::Direction direction) {
    if (!user_) return;
    const bool down = direction == KeyStroke::Direction::down;
    userHolds_[key] = down;
    const std::uint8_t type = down ? XCB_KEY_PRESS : XCB_KEY_RELEASE;
    xcb_test_fake_input(user_->get(), type, key, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, 0);
    user_->flush();
    settle();
}

void DesktopTest::userDown(std::uint16_t virtualKeyCode) {
    userKey(keyboard_->keyFor(virtualKeyCode).value(), KeyStroke::Direction::down);
}

void DesktopTest::userUp(std::uint16_t virtualKeyCode) {
    userKey(keyboard_->keyFor(virtualKeyCode).value(), KeyStroke::Direction::up);
}

void DesktopTest::setLayout(const std::string& arguments) {
    layoutChanged_ = true;
    bool changed = false;
    const auto token = keyboard_->onChange([&] { changed = true; });
    Process process("setxkbmap " + arguments);
    EXPECT_TRUE(waitFor([&] { return process.hasEnded() && changed; }));
    settle();
}

std::unique_ptr<OtherApplication> DesktopTest::openApplication(const std::string& instance,
                                                               const std::string& className,
                                                               OtherApplication::Belongs belongs) {
    auto opened = std::make_unique<OtherApplication>(loop_, instance, className, belongs);
    EXPECT_TRUE(waitFor([&] { return windows_->frontWindow() == opened->window(); }));
    // The window manager sets the focus before or after it says which window is active.
    EXPECT_TRUE(waitFor([&] {
        const auto focus =
            connection_->reply(xcb_get_input_focus_reply, xcb_get_input_focus(connection_->get()));
        return focus->focus == opened->window();
    }));
    settle();
    return opened;
}

}  // namespace dorix::testing
