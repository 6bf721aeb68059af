#include "linux/x11/X11ChordStriker.h"

#include "linux/x11/XcbXkb.h"

#include <sys/uio.h>
#include <xcb/xcbext.h>

#include <array>
#include <ranges>

namespace dorix {

namespace {

using enum KeyStroke::Direction;

constexpr const char* leftoversName = "_DORIX_PRESSED_KEYS";

/// Key-downs that come too soon after another or do not last long enough are not taken while these are on.
constexpr std::uint32_t filters = XCB_XKB_BOOL_CTRL_SLOW_KEYS | XCB_XKB_BOOL_CTRL_BOUNCE_KEYS;

/// Modifiers and a group that the next key has, or that every key has.
struct Lasting {
    std::uint8_t latched = 0;
    std::uint8_t latchedGroup = 0;
    std::uint8_t locked = 0;
};

/// XkbLatchLockState, for whose latches the library's function has no argument.
struct LatchLockRequest {
    std::uint8_t majorOpcode = 0;
    std::uint8_t minorOpcode = 0;
    std::uint16_t length = 0;
    std::uint16_t device = XCB_XKB_ID_USE_CORE_KBD;
    std::uint8_t affectLocks = 0;
    std::uint8_t locks = 0;
    std::uint8_t lockGroup = 0;
    std::uint8_t groupLock = 0;
    std::uint8_t affectLatches = 0;
    std::uint8_t latches = 0;
    std::uint8_t unused = 0;
    std::uint8_t latchGroup = 0;
    std::uint16_t groupLatch = 0;
};
static_assert(sizeof(LatchLockRequest) == 16);

void send(X11Connection& connection, LatchLockRequest request) {
    // The library writes the header, and keeps two elements before the first for itself.
    std::array<iovec, 3> parts{};
    parts[2] = {.iov_base = &request, .iov_len = sizeof(request)};
    const xcb_protocol_request_t kind{
        .count = 1, .ext = &xcb_xkb_id, .opcode = XCB_XKB_LATCH_LOCK_STATE, .isvoid = 1};
    xcb_send_request(connection.get(), 0, &parts[2], &kind);
}

/// Whether `state`'s latches and locks are in force.
void setLasting(X11Connection& connection, const Lasting& state, bool inForce) {
    if (state.latched == 0 && state.latchedGroup == 0 && state.locked == 0) return;
    const auto now = inForce ? state : Lasting{};
    send(connection, {.affectLocks = state.locked,
                      .locks = now.locked,
                      .affectLatches = state.latched,
                      .latches = now.latched,
                      .latchGroup = state.latchedGroup != 0,
                      .groupLatch = now.latchedGroup});
}

}  // namespace

/// How the keyboard is when a chord is to be struck.
struct X11ChordStriker::Resting {
    X11Keyboard::KeySet down;
    Lasting lasting;
    std::uint32_t filters = 0;
    /// StickyKeys are on, to go off when two keys are down at once; with these options.
    bool twoKeysEndSticky = false;
    std::uint16_t options = 0;

    void setControls(X11Connection& connection, bool inForce) const;
};

void X11ChordStriker::Resting::setControls(X11Connection& connection, bool inForce) const {
    if (filters == 0 && !twoKeysEndSticky) return;
    // The option rather than StickyKeys, which take all latches and locks with them when they go off.
    const auto twoKeys = static_cast<unsigned>(XCB_XKB_AX_OPTION_TWO_KEYS);
    const unsigned now = twoKeysEndSticky && !inForce ? options & ~twoKeys : options;
    const std::uint32_t changed = (filters != 0 ? XCB_XKB_CONTROL_CONTROLS_ENABLED : 0U) |
                                  (twoKeysEndSticky ? XCB_XKB_BOOL_CTRL_STICKY_KEYS : 0U);
    const std::array<std::uint8_t, 32> perKeyRepeat{};  // as all the rest not changed
    xcb_xkb_set_controls(connection.get(), XCB_XKB_ID_USE_CORE_KBD, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0,
                         static_cast<std::uint16_t>(now), filters, inForce ? filters : 0, changed, 1, 1, 1, 1,
                         1, 1, 1, 1, 0, 0, 0, 0, 0, 0, perKeyRepeat.data());
}

X11ChordStriker::X11ChordStriker(X11Connection& connection, X11Keyboard& keyboard, X11KeyInput& input)
    : connection_(connection),
      keyboard_(keyboard),
      input_(input),
      strokes_(input.listen([this](const KeyStroke& stroke) { handleStroke(stroke); })) {
    releaseLeftovers();
}

X11ChordStriker::~X11ChordStriker() {
    if (pressedAgain_.any()) releaseLeftovers();
}

void X11ChordStriker::strike(const std::vector<xcb_keycode_t>& keys) {
    const auto state = ask();
    state.setControls(connection_, false);
    spoilMenus(state);
    letGo(state);
    // After the keys, which may latch when they go up.
    auto lasting = state.lasting;
    lasting.latched = 0xFF;
    setLasting(connection_, lasting, false);
    for (const auto key : keys) input_.fake({key, down});
    for (const auto key : std::views::reverse(keys)) input_.fake({key, up});
    pressAgain(state);
    spoilMenus(state);
    setLasting(connection_, state.lasting, true);
    state.setControls(connection_, true);
    connection_.flush();
}

X11ChordStriker::Resting X11ChordStriker::ask() {
    auto* const server = connection_.get();
    const auto keymapAsked = xcb_query_keymap(server);
    const auto stateAsked = xcb_xkb_get_state(server, XCB_XKB_ID_USE_CORE_KBD);
    const auto controlsAsked = xcb_xkb_get_controls(server, XCB_XKB_ID_USE_CORE_KBD);
    const auto keymap = connection_.reply(xcb_query_keymap_reply, keymapAsked);
    const auto state = connection_.reply(xcb_xkb_get_state_reply, stateAsked);
    const auto controls = connection_.reply(xcb_xkb_get_controls_reply, controlsAsked);
    Resting resting;
    if (!keymap || !state || !controls) return resting;
    for (unsigned key = 0; key < resting.down.size(); ++key)
        resting.down[key] = (keymap->keys[key / 8] >> (key % 8) & 1U) != 0;
    resting.lasting = {.latched = state->latchedMods,
                       .latchedGroup = static_cast<std::uint8_t>(state->latchedGroup),
                       .locked = static_cast<std::uint8_t>(state->lockedMods & ~keyboard_.coreLocks())};
    resting.filters = controls->enabledControls & filters;
    resting.options = controls->accessXOption;
    resting.twoKeysEndSticky = (controls->enabledControls & XCB_XKB_BOOL_CTRL_STICKY_KEYS) != 0 &&
                               (controls->accessXOption & XCB_XKB_AX_OPTION_TWO_KEYS) != 0;
    return resting;
}

void X11ChordStriker::letGo(const Resting& state) {
    for (unsigned key = 0; key < state.down.size(); ++key) {
        const auto code = static_cast<xcb_keycode_t>(key);
        if (state.down[key] && !keyboard_.isLock(code)) input_.fake({code, up});
    }
}

/// Other keys than modifiers stay up: pressed again they would type.
void X11ChordStriker::pressAgain(const Resting& state) {
    X11Keyboard::KeySet again;
    for (unsigned key = 0; key < state.down.size(); ++key) {
        const auto code = static_cast<xcb_keycode_t>(key);
        again[key] = state.down[key] && keyboard_.isModifier(code) && !keyboard_.isLock(code);
    }
    if (again.none()) return;
    pressedAgain_ |= again;
    writeDown();
    for (unsigned key = 0; key < again.size(); ++key) {
        if (again[key]) input_.fake({static_cast<xcb_keycode_t>(key), down});
    }
}

/// The application in front would otherwise see a key that opens its menu go down and up with nothing in
/// between: when it is let go of, and when it goes up for good.
void X11ChordStriker::spoilMenus(const Resting& state) {
    for (unsigned key = 0; key < state.down.size(); ++key) {
        if (!state.down[key] || !keyboard_.opensMenus(static_cast<xcb_keycode_t>(key))) continue;
        input_.spoilMenuActivation();
        return;
    }
}

void X11ChordStriker::writeDown() {
    std::vector<std::uint8_t> keys;
    for (unsigned key = 0; key < pressedAgain_.size(); ++key) {
        if (pressedAgain_[key]) keys.push_back(static_cast<std::uint8_t>(key));
    }
    xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, connection_.root(),
                        connection_.atom(leftoversName), XCB_ATOM_CARDINAL, 8,
                        static_cast<std::uint32_t>(keys.size()), keys.data());
}

void X11ChordStriker::releaseLeftovers() {
    const auto property = connection_.atom(leftoversName);
    const auto asked =
        xcb_get_property(connection_.get(), 1, connection_.root(), property, XCB_ATOM_CARDINAL, 0, 256 / 4);
    const auto keys = connection_.reply(xcb_get_property_reply, asked);
    if (!keys || keys->format != 8) return;
    const auto* first = static_cast<const std::uint8_t*>(xcb_get_property_value(keys.get()));
    const auto length = xcb_get_property_value_length(keys.get());
    for (int i = 0; i < length; ++i) input_.fake({first[i], up});
    pressedAgain_.reset();
    // Whoever took them for held hears that they are not.
    if (length > 0) input_.repair(X11KeyInput::Adopt::nothing);
    connection_.flush();
}

// The test keyboard holds the modifier as well since it was pressed again there, and the user's own release
// may have come before that.
void X11ChordStriker::handleStroke(const KeyStroke& stroke) {
    if (stroke.direction == down || !pressedAgain_[stroke.key]) return;
    pressedAgain_.reset(stroke.key);
    input_.fake({stroke.key, up});
    writeDown();
    connection_.flush();
}

}  // namespace dorix
