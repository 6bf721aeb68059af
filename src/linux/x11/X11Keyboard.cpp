#include "linux/x11/X11Keyboard.h"

#include "base/Log.h"
#include "linux/x11/XcbXkb.h"
#include "platform/KeyCodes.h"

#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon-x11.h>

#include <algorithm>

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
    constexpr std::uint16_t events = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY |
                                     XCB_XKB_EVENT_TYPE_STATE_NOTIFY;
    xcb_xkb_select_events(connection_.get(), XCB_XKB_ID_USE_CORE_KBD, events, 0, events, mapParts, mapParts,
                          nullptr);
    const auto* xkb = xcb_get_extension_data(connection_.get(), &xcb_xkb_id);
    events_ = connection_.listen(xkb->first_event, [this](const auto& event) { handleEvent(event); });
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
    device_ = xkb_x11_get_core_keyboard_device_id(connection_.get());
    std::unique_ptr<xkb_keymap, KeymapDeleter> keymap(
        device_ < 0 ? nullptr
                    : xkb_x11_keymap_new_from_device(context_.get(), connection_.get(), device_,
                                                     XKB_KEYMAP_COMPILE_NO_FLAGS));
    if (!keymap) {
        if (!connection_.isLost()) logLine("no se pudo leer la distribución del teclado");
        return;
    }
    keymap_ = std::move(keymap);
    readGroup();
    readKeys();
    readModifierMap();
    connection_.flush();
    changed_.notify();
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
        const xkb_keysym_t* symbols = nullptr;
        if (xkb_keymap_key_get_syms_by_level(keymap_.get(), key, 0, 0, &symbols) < 1) continue;
        keys_[key].code = codeOfSymbol(symbols[0]);
        // Keys that a layout option made modifiers, such as CapsLock as another Control.
        const auto twin = std::ranges::find(modifierPositions, symbols[0], &Position::symbol);
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
    keys_[letterKey(XKB_KEY_c, "AB03")].code = keycode::c;
    keys_[letterKey(XKB_KEY_v, "AB04")].code = keycode::v;
}

xcb_keycode_t X11Keyboard::letterKey(xkb_keysym_t letter, const char* position) const {
    if (const auto key = keyForSymbolIn(group_, letter)) return *key;
    if (const auto key = keyForSymbol(letter)) return *key;
    return keyAt(position, letter).value_or(0);
}

std::optional<xcb_keycode_t> X11Keyboard::keyAt(const char* position, xkb_keysym_t fallback) const {
    const auto key = xkb_keymap_key_by_name(keymap_.get(), position);
    if (key != XKB_KEYCODE_INVALID && key < keys_.size()) return static_cast<xcb_keycode_t>(key);
    return keyForSymbol(fallback);
}

std::optional<xcb_keycode_t> X11Keyboard::keyForSymbol(xkb_keysym_t symbol) const {
    if (!keymap_) return std::nullopt;
    for (xkb_layout_index_t layout = 0; layout < xkb_keymap_num_layouts(keymap_.get()); ++layout) {
        if (const auto key = keyForSymbolIn(layout, symbol)) return key;
    }
    return std::nullopt;
}

std::optional<xcb_keycode_t> X11Keyboard::keyForSymbolIn(xkb_layout_index_t layout,
                                                         xkb_keysym_t symbol) const {
    for (unsigned key = 0; key < keys_.size(); ++key) {
        const xkb_keysym_t* symbols = nullptr;
        const int count = xkb_keymap_key_get_syms_by_level(keymap_.get(), key, layout, 0, &symbols);
        if (count == 1 && symbols[0] == symbol) return static_cast<xcb_keycode_t>(key);
    }
    return std::nullopt;
}

std::optional<xcb_keycode_t> X11Keyboard::keyFor(std::uint16_t virtualKeyCode) const {
    // A modifier is found at its own place rather than where an option made a second one.
    const auto position = std::ranges::find(modifierPositions, virtualKeyCode, &Position::code);
    if (keymap_ && position != modifierPositions.end()) return keyAt(position->name, position->symbol);
    const auto key = std::ranges::find(keys_.begin() + firstKey, keys_.end(), virtualKeyCode, &Key::code);
    if (virtualKeyCode == keycode::other || key == keys_.end()) return std::nullopt;
    return static_cast<xcb_keycode_t>(key - keys_.begin());
}

std::optional<xcb_keycode_t> X11Keyboard::unassignedKey() const {
    if (!keymap_) return std::nullopt;
    // From the end: the low codes are those that keyboards with more keys would send.
    for (unsigned key = 255; key >= firstKey; --key) {
        if (xkb_keymap_num_layouts_for_key(keymap_.get(), key) == 0) return static_cast<xcb_keycode_t>(key);
    }
    return std::nullopt;
}

bool X11Keyboard::opensMenus(xcb_keycode_t key) const {
    if (!keymap_) return false;
    const auto layouts = xkb_keymap_num_layouts_for_key(keymap_.get(), key);
    const xkb_keysym_t* symbols = nullptr;
    if (layouts == 0 ||
        xkb_keymap_key_get_syms_by_level(keymap_.get(), key, group_ % layouts, 0, &symbols) < 1) {
        return false;
    }
    static constexpr std::array<xkb_keysym_t, 6> openers{XKB_KEY_Alt_L,  XKB_KEY_Alt_R,   XKB_KEY_Meta_L,
                                                         XKB_KEY_Meta_R, XKB_KEY_Super_L, XKB_KEY_Super_R};
    return std::ranges::find(openers, symbols[0]) != openers.end();
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

bool X11Keyboard::gives(xcb_keycode_t key, xkb_keysym_t symbol) const {
    const xkb_keysym_t* symbols = nullptr;
    const int count = xkb_keymap_key_get_syms_by_level(keymap_.get(), key, 0, 0, &symbols);
    return count > 0 && symbols[0] == symbol;
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
