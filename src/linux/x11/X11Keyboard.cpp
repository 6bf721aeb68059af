#include "linux/x11/X11Keyboard.h"

#include "base/Log.h"
#include "linux/x11/XcbXkb.h"
#include "platform/KeyCodes.h"

#include <xcb/xinput.h>
#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon-x11.h>

#include <algorithm>
#include <utility>

namespace dorix {

namespace {

constexpr unsigned firstKey = 8;

struct Position {
    std::uint16_t code;
    std::uint64_t flags;
    const char* name;
    xkb_keysym_t symbol;
};

// By the names that keyboard descriptions give to positions; a server whose description has other names is
// asked for the symbol.
constexpr std::array<Position, 8> modifierPositions{{
    {keycode::leftShift, modifier::shift | modifier::deviceLeftShift, "LFSH", XKB_KEY_Shift_L},
    {keycode::rightShift, modifier::shift | modifier::deviceRightShift, "RTSH", XKB_KEY_Shift_R},
    {keycode::leftControl, modifier::control | modifier::deviceLeftControl, "LCTL", XKB_KEY_Control_L},
    {keycode::rightControl, modifier::control | modifier::deviceRightControl, "RCTL", XKB_KEY_Control_R},
    {keycode::leftOption, modifier::option | modifier::deviceLeftOption, "LALT", XKB_KEY_Alt_L},
    {keycode::rightOption, modifier::option | modifier::deviceRightOption, "RALT", XKB_KEY_Alt_R},
    {keycode::leftCommand, modifier::command | modifier::deviceLeftCommand, "LWIN", XKB_KEY_Super_L},
    {keycode::rightCommand, modifier::command | modifier::deviceRightCommand, "RWIN", XKB_KEY_Super_R},
}};

struct Letter {
    std::uint16_t code;
    xkb_keysym_t symbol;
    const char* position;
};
constexpr std::array<Letter, 2> letters{{{keycode::c, XKB_KEY_c, "AB03"}, {keycode::v, XKB_KEY_v, "AB04"}}};

std::uint16_t codeOfSymbol(xkb_keysym_t symbol) {
    switch (symbol) {
        case XKB_KEY_space:
            return keycode::space;
        case XKB_KEY_Escape:
            return keycode::escape;
        case XKB_KEY_Caps_Lock:
            return keycode::capsLock;
        case XKB_KEY_XF86Fn:
            return keycode::function;
        default:
            return keycode::other;
    }
}

constexpr std::uint16_t mapEvents = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
constexpr std::uint16_t mapParts = XCB_XKB_MAP_PART_KEY_TYPES | XCB_XKB_MAP_PART_KEY_SYMS |
                                   XCB_XKB_MAP_PART_MODIFIER_MAP | XCB_XKB_MAP_PART_VIRTUAL_MODS |
                                   XCB_XKB_MAP_PART_VIRTUAL_MOD_MAP;

}  // namespace

X11Keyboard::X11Keyboard(X11Connection& connection)
    : connection_(connection), context_(xkb_context_new(XKB_CONTEXT_NO_FLAGS)) {
    selectEvents();
    reload();
}

void X11Keyboard::selectEvents() {
    selectEventsOf(XCB_XKB_ID_USE_CORE_KBD, mapEvents | XCB_XKB_EVENT_TYPE_STATE_NOTIFY);
    const auto* xkb = xcb_get_extension_data(connection_.get(), &xcb_xkb_id);
    events_ = connection_.listen(xkb->first_event, [this](const auto& event) { handleEvent(event); });
}

void X11Keyboard::selectEventsOf(std::uint16_t device, std::uint16_t events) {
    xcb_xkb_select_events(connection_.get(), device, events, 0, events, mapParts, mapParts, nullptr);
}

void X11Keyboard::handleEvent(const xcb_generic_event_t& event) {
    // All events of the extension share one type and tell their own in the next byte.
    if (event.pad0 != XCB_XKB_STATE_NOTIFY) {
        scheduleReload();
        return;
    }
    const auto& state = reinterpret_cast<const xcb_xkb_state_notify_event_t&>(event);
    lockedModifiers_ = state.lockedMods;
    if (group_ == state.group) return;
    group_ = state.group;
    scheduleReload();
}

// Changes come in bursts: one for each part of the layout, and whenever another keyboard is typed on.
void X11Keyboard::scheduleReload() {
    if (reloadPending_) return;
    reloadPending_ = std::make_shared<bool>(true);
    connection_.executor().post([this, pending = std::weak_ptr(reloadPending_)] {
        if (!pending.expired()) reload();
    });
}

void X11Keyboard::reload() {
    reloadPending_.reset();
    X11Keymap typed(connection_, context_.get(), xkb_x11_get_core_keyboard_device_id(connection_.get()));
    if (!typed) {
        if (!connection_.isLost()) logLine("the keyboard layout could not be read");
        return;
    }
    typed_ = std::move(typed);
    readTestKeyboard();
    readGroup();
    readKeys();
    readModifierMap();
    connection_.flush();
    changed_.notify();
}

/// Strikes come from the test keyboard that belongs to the user's keyboards, and every strike puts that one's
/// layout in force.
void X11Keyboard::readTestKeyboard() {
    const auto device = testKeyboard();
    if (device && device != testKeyboard_) selectEventsOf(*device, mapEvents);
    testKeyboard_ = device;
    X11Keymap struck(connection_, context_.get(), device ? std::int32_t{*device} : -1);
    struck_ = struck ? std::move(struck) : typed_;
}

std::optional<std::uint16_t> X11Keyboard::testKeyboard() {
    const auto core = xkb_x11_get_core_keyboard_device_id(connection_.get());
    const auto asked = xcb_input_xi_query_device(connection_.get(), XCB_INPUT_DEVICE_ALL);
    const auto answer = connection_.reply(xcb_input_xi_query_device_reply, asked);
    if (!answer) return std::nullopt;
    for (auto device = xcb_input_xi_query_device_infos_iterator(answer.get()); device.rem > 0;
         xcb_input_xi_device_info_next(&device)) {
        const auto& info = *device.data;
        if (info.type == XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD && info.attachment == core &&
            isTestDevice(info.deviceid))
            return info.deviceid;
    }
    return std::nullopt;
}

bool X11Keyboard::isTestDevice(std::uint16_t device) {
    const auto property = connection_.atom("XTEST Device");
    const auto asked = xcb_input_xi_get_property(connection_.get(), device, 0, property, XCB_ATOM_ANY, 0, 1);
    const auto answer = connection_.reply(xcb_input_xi_get_property_reply, asked);
    return answer && answer->num_items > 0;
}

void X11Keyboard::readGroup() {
    const auto state = connection_.reply(xcb_xkb_get_state_reply,
                                         xcb_xkb_get_state(connection_.get(), XCB_XKB_ID_USE_CORE_KBD));
    if (!state) return;
    group_ = state->group;
    lockedModifiers_ = state->lockedMods;
}

void X11Keyboard::readKeys() {
    keys_.fill({keycode::other, 0});
    for (unsigned key = 0; key < keys_.size(); ++key) {
        const auto symbol = typed_.symbol(static_cast<xcb_keycode_t>(key));
        if (symbol == XKB_KEY_NoSymbol) continue;
        keys_[key].code = codeOfSymbol(symbol);
        // Keys that a layout option made modifiers, such as CapsLock as another Control.
        const auto twin = std::ranges::find(modifierPositions, symbol, &Position::symbol);
        if (twin != modifierPositions.end()) keys_[key] = {twin->code, twin->flags};
    }
    placeModifiers();
    placeLetters();
}

void X11Keyboard::placeModifiers() {
    for (const auto& position : modifierPositions) {
        if (const auto key = keyAt(position.name, position.symbol))
            keys_[*key] = {position.code, position.flags};
    }
}

void X11Keyboard::placeLetters() {
    for (const auto& letter : letters) {
        auto key = typed_.keyForSymbolIn(group_, letter.symbol);
        if (!key) key = typed_.keyForSymbol(letter.symbol);
        if (!key) key = typed_.keyAt(letter.position);
        if (key) keys_[*key].code = letter.code;
    }
}

std::optional<xcb_keycode_t> X11Keyboard::keyAt(const char* position, xkb_keysym_t fallback) const {
    const auto key = typed_.keyAt(position);
    return key ? key : typed_.keyForSymbol(fallback);
}

std::optional<xcb_keycode_t> X11Keyboard::keyFor(std::uint16_t virtualKeyCode) const {
    // A modifier is found at its own place rather than where an option made a second one.
    const auto position = std::ranges::find(modifierPositions, virtualKeyCode, &Position::code);
    if (position != modifierPositions.end()) return keyAt(position->name, position->symbol);
    const auto key = std::ranges::find(keys_.begin() + firstKey, keys_.end(), virtualKeyCode, &Key::code);
    if (virtualKeyCode == keycode::other || key == keys_.end()) return std::nullopt;
    return static_cast<xcb_keycode_t>(key - keys_.begin());
}

std::optional<xcb_keycode_t> X11Keyboard::strikeModifier(std::uint8_t modifier) const {
    return struck_.keySetting(modifier, modifier == XCB_MOD_MASK_SHIFT ? XKB_KEY_Shift_L : XKB_KEY_Control_L);
}

std::optional<xcb_keycode_t> X11Keyboard::strikeSymbol(xkb_keysym_t symbol, std::uint8_t modifiers) const {
    return struck_.keyTyping(symbol, group_, modifiers);
}

std::optional<xcb_keycode_t> X11Keyboard::strikeLetter(std::uint16_t virtualKeyCode) const {
    const auto letter = std::ranges::find(letters, virtualKeyCode, &Letter::code);
    if (letter == letters.end()) return std::nullopt;
    if (const auto key = strikeSymbol(letter->symbol, XCB_MOD_MASK_CONTROL)) return key;
    if (const auto key = struck_.keyForSymbol(letter->symbol)) return key;
    return struck_.keyAt(letter->position);
}

bool X11Keyboard::strikesLatin() const {
    return std::ranges::all_of(
        letters, [this](const Letter& letter) { return struck_.keyForSymbol(letter.symbol).has_value(); });
}

bool X11Keyboard::opensMenus(xcb_keycode_t key) const {
    static constexpr std::array<xkb_keysym_t, 6> openers{XKB_KEY_Alt_L,  XKB_KEY_Alt_R,   XKB_KEY_Meta_L,
                                                         XKB_KEY_Meta_R, XKB_KEY_Super_L, XKB_KEY_Super_R};
    return std::ranges::find(openers, typed_.symbol(key, group_)) != openers.end();
}

bool X11Keyboard::shiftsLevels(xcb_keycode_t key) const {
    static constexpr std::array<xkb_keysym_t, 3> shifts{XKB_KEY_ISO_Level3_Shift, XKB_KEY_ISO_Level5_Shift,
                                                        XKB_KEY_Mode_switch};
    return std::ranges::find(shifts, typed_.symbol(key, group_)) != shifts.end();
}

std::uint64_t X11Keyboard::lockFlags() const {
    return (lockedModifiers_ & XCB_MOD_MASK_LOCK) != 0 ? modifier::capsLock : 0;
}

void X11Keyboard::readModifierMap() {
    const auto map =
        connection_.reply(xcb_get_modifier_mapping_reply, xcb_get_modifier_mapping(connection_.get()));
    modifiers_.reset();
    locks_.reset();
    alt_ = super_ = numLock_ = scrollLock_ = 0;
    for (unsigned key = 0; key < keys_.size(); ++key) modifiers_[key] = keys_[key].flags != 0;
    if (!map || map->keycodes_per_modifier == 0) return;
    const auto* keys = xcb_get_modifier_mapping_keycodes(map.get());
    for (int i = 0; i < xcb_get_modifier_mapping_keycodes_length(map.get()); ++i) {
        const xcb_keycode_t key = keys[i];
        if (key == 0) continue;
        const auto bit =
            static_cast<std::uint16_t>(1U << (static_cast<unsigned>(i) / map->keycodes_per_modifier));
        const auto takeIfFree = [bit](std::uint16_t& mask) { mask = mask == 0 ? bit : mask; };
        modifiers_.set(key);
        if (gives(key, XKB_KEY_Alt_L) || gives(key, XKB_KEY_Alt_R)) takeIfFree(alt_);
        if (gives(key, XKB_KEY_Super_L) || gives(key, XKB_KEY_Super_R)) takeIfFree(super_);
        if (gives(key, XKB_KEY_Num_Lock)) numLock_ |= bit;
        if (gives(key, XKB_KEY_Scroll_Lock)) scrollLock_ |= bit;
        const bool lock = gives(key, XKB_KEY_Num_Lock) || gives(key, XKB_KEY_Scroll_Lock);
        locks_[key] = lock || gives(key, XKB_KEY_Caps_Lock);
    }
}

std::uint16_t X11Keyboard::coreModifiers(std::uint32_t hotKeyModifiers) const {
    const auto part = [hotKeyModifiers](std::uint32_t modifier, unsigned mask) {
        return (hotKeyModifiers & modifier) != 0 ? mask : 0U;
    };
    return static_cast<std::uint16_t>(part(hotkeymodifier::shift, XCB_MOD_MASK_SHIFT) |
                                      part(hotkeymodifier::control, XCB_MOD_MASK_CONTROL) |
                                      part(hotkeymodifier::option, alt_ != 0 ? alt_ : XCB_MOD_MASK_1) |
                                      part(hotkeymodifier::command, super_ != 0 ? super_ : XCB_MOD_MASK_4));
}

}  // namespace dorix
