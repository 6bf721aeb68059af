#include "linux/x11/X11Keymap.h"

#include <xkbcommon/xkbcommon-x11.h>

namespace dorix {

namespace {

constexpr unsigned firstKey = 8;
constexpr unsigned lastKey = 255;

struct StateDeleter {
    void operator()(xkb_state* state) const { xkb_state_unref(state); }
};
using State = std::unique_ptr<xkb_state, StateDeleter>;

/// The first key that `matches`.
template <typename Matches>
std::optional<xcb_keycode_t> firstKeyWhere(Matches matches) {
    for (unsigned key = firstKey; key <= lastKey; ++key) {
        if (matches(static_cast<xcb_keycode_t>(key))) return static_cast<xcb_keycode_t>(key);
    }
    return std::nullopt;
}

/// The core modifiers among all modifiers, which have the same bits.
std::uint32_t coreModifiers(xkb_state* state, xkb_state_component component) {
    return xkb_state_serialize_mods(state, component) & 0xFFU;
}

}  // namespace

X11Keymap::X11Keymap(X11Connection& connection, xkb_context* context, std::int32_t device) {
    if (device < 0) return;
    keymap_.reset(
        xkb_x11_keymap_new_from_device(context, connection.get(), device, XKB_KEYMAP_COMPILE_NO_FLAGS),
        xkb_keymap_unref);
}

xkb_keysym_t X11Keymap::symbol(xcb_keycode_t key, std::uint8_t group) const {
    const auto groups = keymap_ ? xkb_keymap_num_layouts_for_key(keymap_.get(), key) : 0;
    const xkb_keysym_t* symbols = nullptr;
    if (groups == 0 ||
        xkb_keymap_key_get_syms_by_level(keymap_.get(), key, group % groups, 0, &symbols) < 1) {
        return XKB_KEY_NoSymbol;
    }
    return symbols[0];
}

std::optional<xcb_keycode_t> X11Keymap::keyAt(const char* position) const {
    const auto key = keymap_ ? xkb_keymap_key_by_name(keymap_.get(), position) : XKB_KEYCODE_INVALID;
    if (key < firstKey || key > lastKey) return std::nullopt;
    return static_cast<xcb_keycode_t>(key);
}

std::optional<xcb_keycode_t> X11Keymap::keyForSymbol(xkb_keysym_t symbol) const {
    const auto groups = keymap_ ? xkb_keymap_num_layouts(keymap_.get()) : 0;
    for (unsigned group = 0; group < groups; ++group) {
        if (const auto key = keyForSymbolIn(static_cast<std::uint8_t>(group), symbol)) return key;
    }
    return std::nullopt;
}

std::optional<xcb_keycode_t> X11Keymap::keyForSymbolIn(std::uint8_t group, xkb_keysym_t symbol) const {
    if (!keymap_) return std::nullopt;
    return firstKeyWhere([&](xcb_keycode_t key) {
        const xkb_keysym_t* symbols = nullptr;
        const int count = xkb_keymap_key_get_syms_by_level(keymap_.get(), key, group, 0, &symbols);
        return count == 1 && symbols[0] == symbol;
    });
}

std::optional<xcb_keycode_t> X11Keymap::keyTyping(xkb_keysym_t symbol, std::uint8_t group,
                                                  std::uint8_t modifiers) const {
    if (!keymap_) return std::nullopt;
    const State state(xkb_state_new(keymap_.get()));
    xkb_state_update_mask(state.get(), modifiers, 0, 0, 0, 0, group);
    return firstKeyWhere(
        [&](xcb_keycode_t key) { return xkb_state_key_get_one_sym(state.get(), key) == symbol; });
}

std::optional<xcb_keycode_t> X11Keymap::keySetting(std::uint8_t modifier, xkb_keysym_t symbol) const {
    if (!keymap_) return std::nullopt;
    const auto usual =
        firstKeyWhere([&](xcb_keycode_t key) { return this->symbol(key) == symbol && sets(key, modifier); });
    return usual ? usual : firstKeyWhere([&](xcb_keycode_t key) { return sets(key, modifier); });
}

bool X11Keymap::sets(xcb_keycode_t key, std::uint8_t modifier) const {
    const State state(xkb_state_new(keymap_.get()));
    xkb_state_update_key(state.get(), key, XKB_KEY_DOWN);
    if (coreModifiers(state.get(), XKB_STATE_MODS_DEPRESSED) != modifier ||
        coreModifiers(state.get(), XKB_STATE_MODS_EFFECTIVE) != modifier) {
        return false;
    }
    xkb_state_update_key(state.get(), key, XKB_KEY_UP);
    return coreModifiers(state.get(), XKB_STATE_MODS_EFFECTIVE) == 0;
}

std::optional<xcb_keycode_t> X11Keymap::unassignedKey() const {
    if (!keymap_) return std::nullopt;
    // From the end: the low codes are those that keyboards with more keys would send.
    for (unsigned key = lastKey; key >= firstKey; --key) {
        if (xkb_keymap_num_layouts_for_key(keymap_.get(), key) == 0) return static_cast<xcb_keycode_t>(key);
    }
    return std::nullopt;
}

}  // namespace dorix
