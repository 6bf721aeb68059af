#include "linux/x11/X11KeyInput.h"

#include "linux/x11/XcbXkb.h"

#include <xcb/xinput.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <utility>

namespace dorix {

namespace {
// A faked key comes back within milliseconds, or never when the server found nothing to change.
constexpr double fakedKeyLife = 1.0;
// Longer than any delay before auto-repeat starts.
constexpr std::uint32_t repeatDelayMs = 2000;
}  // namespace

X11KeyInput::X11KeyInput(X11Connection& connection, X11Keyboard& keyboard)
    : connection_(connection), keyboard_(keyboard) {
    selectEvents();
    repair(Adopt::heldKeys);
}

void X11KeyInput::selectEvents() {
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } masters{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
              XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE};
    xcb_input_xi_select_events(connection_.get(), connection_.root(), 1, &masters.head);
    // Devices come and go with the virtual terminal, and the keys that were down on them with no event.
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } all{{XCB_INPUT_DEVICE_ALL, 1}, XCB_INPUT_XI_EVENT_MASK_HIERARCHY};
    xcb_input_xi_select_events(connection_.get(), connection_.root(), 1, &all.head);
    // Without it an auto-repeat would look like the key going up and down.
    constexpr std::uint32_t detectable = XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT;
    connection_.reply(xcb_xkb_per_client_flags_reply,
                      xcb_xkb_per_client_flags(connection_.get(), XCB_XKB_ID_USE_CORE_KBD, detectable,
                                               detectable, 0, 0, 0));

    listenToDevices();
}

void X11KeyInput::listenToDevices() {
    const auto opcode = xcb_get_extension_data(connection_.get(), &xcb_input_id)->major_opcode;
    const auto listen = [&](std::uint16_t type, KeyStroke::Direction direction) {
        tokens_.push_back(connection_.listenGeneric(
            opcode, type, [this, direction](const auto& event) { handleDevice(event, direction); }));
    };
    listen(XCB_INPUT_RAW_KEY_PRESS, KeyStroke::Direction::down);
    listen(XCB_INPUT_RAW_KEY_RELEASE, KeyStroke::Direction::up);
    // While a grab of this connection holds the keyboard the server sends it no raw events, but those of the
    // grab, of whichever kind that is.
    listen(XCB_INPUT_KEY_PRESS, KeyStroke::Direction::down);
    listen(XCB_INPUT_KEY_RELEASE, KeyStroke::Direction::up);
    tokens_.push_back(connection_.listen(XCB_KEY_PRESS, [this](const auto& event) { handleGrabbed(event); }));
    tokens_.push_back(
        connection_.listen(XCB_KEY_RELEASE, [this](const auto& event) { handleGrabbed(event); }));
    tokens_.push_back(connection_.listenGeneric(opcode, XCB_INPUT_HIERARCHY,
                                                [this](const auto&) { repair(Adopt::nothing); }));
    tokens_.push_back(keyboard_.onChange([this] { repair(Adopt::nothing); }));
}

std::uint64_t X11KeyInput::modifierFlags() const {
    std::uint64_t flags = keyboard_.lockFlags();
    if (held_.none()) return flags;
    for (unsigned key = 0; key < held_.size(); ++key) {
        if (held_[key]) flags |= keyboard_.flagsOf(static_cast<xcb_keycode_t>(key));
    }
    return flags;
}

void X11KeyInput::fake(KeyStroke stroke) {
    faked_.push_back({stroke, connection_.executor().now() + fakedKeyLife});
    const std::uint8_t type =
        stroke.direction == KeyStroke::Direction::down ? XCB_KEY_PRESS : XCB_KEY_RELEASE;
    xcb_test_fake_input(connection_.get(), type, stroke.key, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, 0);
}

void X11KeyInput::spoilMenuActivation() {
    const auto key = keyboard_.strikeNothing();
    if (!key) return;
    fake({*key, KeyStroke::Direction::down});
    fake({*key, KeyStroke::Direction::up});
    connection_.flush();
}

void X11KeyInput::handleDevice(const xcb_generic_event_t& event, KeyStroke::Direction direction) {
    // Raw events and those of a grab are alike up to the key.
    const auto& key = reinterpret_cast<const xcb_input_raw_key_press_event_t&>(event);
    handle(static_cast<xcb_keycode_t>(key.detail), direction, key.time);
}

void X11KeyInput::handleGrabbed(const xcb_generic_event_t& event) {
    const auto& key = reinterpret_cast<const xcb_key_press_event_t&>(event);
    const bool down = (event.response_type & 0x7FU) == XCB_KEY_PRESS;
    handle(key.detail, down ? KeyStroke::Direction::down : KeyStroke::Direction::up, key.time);
}

void X11KeyInput::handle(xcb_keycode_t key, KeyStroke::Direction direction, std::uint32_t time) {
    const KeyStroke stroke{key, direction, clock_.at(time, connection_.executor().now())};
    if (!wasFaked(stroke) && !isRepeat(stroke, time)) take(stroke);
    if (repairOwed_ && !awaitsFaked()) repair(Adopt::nothing);
}

bool X11KeyInput::awaitsFaked() {
    const double now = connection_.executor().now();
    std::erase_if(faked_, [now](const Faked& faked) { return faked.expires < now; });
    return !faked_.empty();
}

bool X11KeyInput::wasFaked(const KeyStroke& stroke) {
    if (!awaitsFaked()) return false;
    const auto faked = std::ranges::find_if(faked_, [&](const Faked& other) {
        return other.stroke.key == stroke.key && other.stroke.direction == stroke.direction;
    });
    if (faked == faked_.end()) return false;
    // The server does what it is told in order: what was faked before has had no effect and never comes.
    faked_.erase(faked_.begin(), faked + 1);
    return true;
}

bool X11KeyInput::isRepeat(const KeyStroke& stroke, std::uint32_t time) {
    const bool held = held_[stroke.key];
    if (stroke.direction == KeyStroke::Direction::up) return !held;
    const std::uint32_t since = time - std::exchange(lastDown_[stroke.key], time);
    // A key that seems held since long ago went up while nobody could see it.
    return held && since < repeatDelayMs;
}

void X11KeyInput::take(const KeyStroke& stroke) {
    held_[stroke.key] = stroke.direction == KeyStroke::Direction::down;
    strokes_.notify(stroke);
}

void X11KeyInput::repair(Adopt adopt) {
    const auto keymap = connection_.reply(xcb_query_keymap_reply, xcb_query_keymap(connection_.get()));
    // While keys of our own are on their way the server's view is not the user's.
    repairOwed_ = awaitsFaked();
    if (!keymap || repairOwed_) return;
    const double now = connection_.executor().now();
    for (unsigned key = 0; key < held_.size(); ++key) {
        const bool down = (keymap->keys[key / 8] >> (key % 8) & 1U) != 0;
        // A key that is down may be one whose event is still to be read.
        if (down && adopt == Adopt::heldKeys) held_.set(key);
        if (!down && held_[key]) take({static_cast<xcb_keycode_t>(key), KeyStroke::Direction::up, now});
    }
}

}  // namespace dorix
