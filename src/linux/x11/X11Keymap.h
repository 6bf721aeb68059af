#pragma once

#include "linux/x11/X11Connection.h"

#include <xcb/xcb.h>
#include <xkbcommon/xkbcommon.h>

#include <cstdint>
#include <memory>
#include <optional>

namespace dorix {

/// What the keys of one keyboard give, as the server had it when it was read. A map that could not be read is
/// false and has no keys.
class X11Keymap {
 public:
    X11Keymap() = default;
    /// Waits for the server. `device` is an XInput device, `context` outlives the map.
    X11Keymap(X11Connection& connection, xkb_context* context, std::int32_t device);

    explicit operator bool() const { return keymap_ != nullptr; }

    /// What the key gives without modifiers; XKB_KEY_NoSymbol for nothing. A group that the key has not is
    /// brought into its range.
    xkb_keysym_t symbol(xcb_keycode_t key, std::uint8_t group = 0) const;

    /// The key at a position, by the name that keyboard descriptions give to it ("LFSH").
    std::optional<xcb_keycode_t> keyAt(const char* position) const;

    /// The first key that gives this symbol without modifiers, in the first group that has one.
    std::optional<xcb_keycode_t> keyForSymbol(xkb_keysym_t symbol) const;
    std::optional<xcb_keycode_t> keyForSymbolIn(std::uint8_t group, xkb_keysym_t symbol) const;

    /// The key that gives this symbol with these core modifiers down.
    std::optional<xcb_keycode_t> keyTyping(xkb_keysym_t symbol, std::uint8_t group,
                                           std::uint8_t modifiers) const;

    /// A key that sets exactly this core modifier while it is down and leaves nothing behind; one with this
    /// symbol rather than another.
    std::optional<xcb_keycode_t> keySetting(std::uint8_t modifier, xkb_keysym_t symbol) const;

    /// A key that means nothing to any application.
    std::optional<xcb_keycode_t> unassignedKey() const;

 private:
    bool sets(xcb_keycode_t key, std::uint8_t modifier) const;

    std::shared_ptr<xkb_keymap> keymap_;  // never changes
};

}  // namespace dorix
