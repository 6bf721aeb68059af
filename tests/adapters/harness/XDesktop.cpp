#include "adapters/harness/XDesktop.h"

#include "linux/x11/X11SelectionRead.h"

#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xinput.h>
#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <stdexcept>

namespace dorix {

std::unique_ptr<X11Connection> connectTo(EventLoop& loop, const std::string& display) {
    auto connection = X11Connection::open(loop.main, loop.main, display);
    if (!connection) throw std::runtime_error("no display: run the test in tools/desktop/with-desktop");
    return connection;
}

pid_t inAnotherProcess(const std::function<void()>& function) {
    constexpr std::size_t stackSize = std::size_t{1} << 20U;
    const auto stack = std::make_unique<std::byte[]>(stackSize);
    const auto run = [](void* argument) {
        (*static_cast<const std::function<void()>*>(argument))();
        return 0;
    };
    const pid_t pid = ::clone(run, stack.get() + stackSize, CLONE_VM | CLONE_FILES | CLONE_VFORK | SIGCHLD,
                              const_cast<std::function<void()>*>(&function));
    ::waitpid(pid, nullptr, 0);
    return pid;
}

xcb_window_t openWindow(X11Connection& connection, xcb_window_t parent, bool popsUp) {
    const xcb_window_t window = xcb_generate_id(connection.get());
    const std::array<std::uint32_t, 2> values{popsUp, XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE};
    xcb_create_window(connection.get(), XCB_COPY_FROM_PARENT, window, parent, 0, 0, 200, 100, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values.data());
    xcb_map_window(connection.get(), window);
    connection.flush();
    return window;
}

void setProperty(X11Connection& connection, xcb_window_t window, const char* name, const char* type,
                 const std::string& value) {
    xcb_change_property(connection.get(), XCB_PROP_MODE_REPLACE, window, connection.atom(name),
                        connection.atom(type), 8, static_cast<std::uint32_t>(value.size()), value.data());
    connection.flush();
}

xcb_window_t takeSelection(X11Connection& connection, const char* name) {
    const auto window = connection.createHiddenWindow(XCB_EVENT_MASK_NO_EVENT);
    xcb_set_selection_owner(connection.get(), window, connection.atom(name), XCB_CURRENT_TIME);
    selectionOwner(connection, name);  // by its answer it has been done, also for other connections
    return window;
}

xcb_window_t selectionOwner(X11Connection& connection, const char* name) {
    const auto asked = xcb_get_selection_owner(connection.get(), connection.atom(name));
    return connection.reply(xcb_get_selection_owner_reply, asked)->owner;
}

std::optional<SelectionData> readSelection(EventLoop& loop, X11Connection& connection, const char* selection,
                                           std::string_view target) {
    const X11SelectionRead read(connection, connection.atom(selection), connection.atom(target),
                                loop.main.now() + 10);
    const auto wait = [](auto completion) -> Task<X11SelectionRead::Result> {
        co_return co_await completion;
    };
    return loop.result(wait(read.result()));
}

OtherApplication::OtherApplication(EventLoop& loop, const std::string& instance, const std::string& className,
                                   Belongs belongs)
    : pid_(::getpid()) {
    const auto open = [&] { connection_ = connectTo(loop); };
    if (belongs == Belongs::toUs) {
        open();
    } else {
        pid_ = inAnotherProcess(open);
    }
    keyboard_ = std::make_unique<X11Keyboard>(*connection_);
    window_ = openWindow(*connection_, connection_->root());
    setProperty(*connection_, window_, "WM_CLASS", "STRING", instance + '\0' + className + '\0');
    // As in a sandbox, where every program is the first process.
    const std::uint32_t told = 1;
    xcb_change_property(connection_->get(), XCB_PROP_MODE_REPLACE, window_, connection_->atom("_NET_WM_PID"),
                        XCB_ATOM_CARDINAL, 32, 1, &told);
    connection_->flush();
    for (const char sign : {'+', '-'}) {
        tokens_.push_back(connection_->listen(sign == '+' ? XCB_KEY_PRESS : XCB_KEY_RELEASE,
                                              [this, sign](const auto& event) { handleKey(event, sign); }));
    }
}

OtherApplication::~OtherApplication() {
    xcb_destroy_window(connection_->get(), window_);
    connection_->flush();
}

void OtherApplication::handleKey(const xcb_generic_event_t& event, char sign) {
    const auto& key = reinterpret_cast<const xcb_key_press_event_t&>(event);
    std::string name = "none";
    for (const char* known : {"v", "c", "a", "Alt_L", "Alt_R", "Shift_L", "Control_L", "Insert"}) {
        const auto symbol = xkb_keysym_from_name(known, XKB_KEYSYM_NO_FLAGS);
        if (keyboard_->keyForSymbol(symbol) == key.detail) name = known;
    }
    std::array<char, 16> state{};
    std::snprintf(state.data(), state.size(), "/%x", key.state & 0xFFU);
    keys_.push_back(sign + name + state.data());
}

std::size_t OtherApplication::count(const std::string& key) const {
    return static_cast<std::size_t>(std::ranges::count(keys_, key));
}

XDesktopTest::~XDesktopTest() {
    for (unsigned key = 0; key < userHolds_.size(); ++key) {
        if (userHolds_[key]) userKey(static_cast<xcb_keycode_t>(key), KeyStroke::Direction::up);
    }
    if (layoutChanged_) setLayout("us -option ''");
}

void XDesktopTest::settle() {
    // The server answers each client in order, so what came before the answer is in the queue when it comes.
    for (auto* connection : {user_.get(), connection_.get()}) {
        connection->reply(xcb_get_input_focus_reply, xcb_get_input_focus(connection->get()));
    }
    bool done = false;
    loop_.main.after(0, [&] { done = true; });
    waitFor([&] { return done; });
    QCoreApplication::processEvents();
}

void XDesktopTest::userKey(xcb_keycode_t key, KeyStroke::Direction direction) {
    const bool down = direction == KeyStroke::Direction::down;
    userHolds_[key] = down;
    const std::uint8_t type = down ? XCB_KEY_PRESS : XCB_KEY_RELEASE;
    xcb_test_fake_input(user_->get(), type, key, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, 0);
    user_->flush();
    settle();
}

void XDesktopTest::tapKey(xcb_keycode_t key) {
    userKey(key, KeyStroke::Direction::down);
    userKey(key, KeyStroke::Direction::up);
}

std::uint16_t XDesktopTest::keyboardDevice(bool test) {
    const auto asked = xcb_input_xi_query_device(user_->get(), XCB_INPUT_DEVICE_ALL);
    const auto answer = user_->reply(xcb_input_xi_query_device_reply, asked);
    for (auto device = xcb_input_xi_query_device_infos_iterator(answer.get()); device.rem > 0;
         xcb_input_xi_device_info_next(&device)) {
        const std::string name(xcb_input_xi_device_info_name(device.data),
                               static_cast<std::size_t>(xcb_input_xi_device_info_name_length(device.data)));
        if (device.data->type == XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD && name.contains("XTEST") == test)
            return device.data->deviceid;
    }
    throw std::runtime_error("the display has no such keyboard");
}

void XDesktopTest::boardKey(xcb_keycode_t key, KeyStroke::Direction direction) {
    const auto* input = xcb_get_extension_data(user_->get(), &xcb_input_id);
    const int type =
        direction == KeyStroke::Direction::down ? XCB_INPUT_DEVICE_KEY_PRESS : XCB_INPUT_DEVICE_KEY_RELEASE;
    xcb_test_fake_input(user_->get(), static_cast<std::uint8_t>(input->first_event + type), key,
                        XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, static_cast<std::uint8_t>(boardDevice()));
    user_->flush();
    settle();
}

void XDesktopTest::tapBoardKey(xcb_keycode_t key) {
    boardKey(key, KeyStroke::Direction::down);
    boardKey(key, KeyStroke::Direction::up);
}

bool XDesktopTest::isDown(std::uint16_t device, xcb_keycode_t key) {
    const auto asked = xcb_input_query_device_state(user_->get(), static_cast<std::uint8_t>(device));
    const auto answer = user_->reply(xcb_input_query_device_state_reply, asked);
    for (auto part = xcb_input_query_device_state_classes_iterator(answer.get()); part.rem > 0;
         xcb_input_input_state_next(&part)) {
        if (part.data->class_id != XCB_INPUT_INPUT_CLASS_KEY) continue;
        const auto* keys = reinterpret_cast<const xcb_input_key_state_t*>(part.data)->keys;
        return (keys[key / 8] >> (key % 8) & 1U) != 0;
    }
    return false;
}

void XDesktopTest::setLayout(const std::string& arguments) {
    layoutChanged_ = true;
    bool changed = false;
    const auto token = keyboard_.onChange([&] { changed = true; });
    OtherProgram process({"sh", "-c", "setxkbmap " + arguments});
    EXPECT_TRUE(waitFor([&] { return process.hasEnded() && changed; }));
    settle();
}

std::unique_ptr<OtherApplication> XDesktopTest::openApplication(const std::string& instance,
                                                                const std::string& className,
                                                                OtherApplication::Belongs belongs) {
    auto opened = std::make_unique<OtherApplication>(loop_, instance, className, belongs);
    // The window manager sets the focus before or after it says which window is active.
    EXPECT_TRUE(waitFor([&] {
        const auto focus =
            connection_->reply(xcb_get_input_focus_reply, xcb_get_input_focus(connection_->get()));
        return windows_.frontWindow() == opened->window() && focus->focus == opened->window();
    }));
    settle();
    return opened;
}

}  // namespace dorix
