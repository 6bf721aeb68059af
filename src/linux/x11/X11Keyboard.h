#pragma once

#include "linux/x11/X11Connection.h"

#include <xcb/xcb.h>
#include <xkbcommon/xkbcommon.h>

#include <array>
#include <bitset>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace dorix {

/// The keyboard layout: what the X key codes mean, followed when the user changes it. Main executor; the
/// lookups answer from memory.
///
/// Modifiers go by their position on the keyboard, so that right Alt is right option also where it is AltGr.
/// Letters go by what the key types; in a layout without Latin letters by what it types in the user's Latin
/// layout, or else by position.
class X11Keyboard {
 public:
    using KeySet = std::bitset<256>;

    explicit X11Keyboard(X11Connection& connection);

    /// keycode::other for a key that has none.
    std::uint16_t virtualKeyCode(xcb_keycode_t key) const { return keys_[key].code; }

    /// None when the keyboard has no such key.
    std::optional<xcb_keycode_t> keyFor(std::uint16_t virtualKeyCode) const;

    /// The first key that gives this symbol without Shift.
    std::optional<xcb_keycode_t> keyForSymbol(xkb_keysym_t symbol) const;

    /// A key code that means nothing to any application.
    std::optional<xcb_keycode_t> unassignedKey() const;

    /// The modifier flags that the key sets while it is down; 0 for a key that is no modifier.
    std::uint64_t flagsOf(xcb_keycode_t key) const { return keys_[key].flags; }

    /// Any key that changes what others mean, locks included.
    bool isModifier(xcb_keycode_t key) const { return modifiers_[key]; }

    /// A key that stays in force after it went up (CapsLock, NumLock, ScrollLock).
    bool isLock(xcb_keycode_t key) const { return locks_[key]; }

    /// An Alt or a Super key by what it gives now: many applications and desktops open a menu when it is
    /// pressed alone. AltGr is none.
    bool opensMenus(xcb_keycode_t key) const;

    /// modifier::capsLock while it is on; one event late for the CapsLock key itself.
    std::uint64_t lockFlags() const;

    /// The core modifier bits of hot-key modifiers in this layout.
    std::uint16_t coreModifiers(std::uint32_t hotKeyModifiers) const;

    /// The core modifier bits of CapsLock, NumLock and ScrollLock.
    std::uint16_t coreLocks() const { return XCB_MOD_MASK_LOCK | numLock_ | scrollLock_; }

    /// Called after every change of layout.
    Subscription onChange(std::function<void()> callback) { return changed_.add(std::move(callback)); }

 private:
    struct Key {
        std::uint16_t code = 0;
        std::uint64_t flags = 0;
    };
    struct ContextDeleter {
        void operator()(xkb_context* context) const { xkb_context_unref(context); }
    };
    struct KeymapDeleter {
        void operator()(xkb_keymap* keymap) const { xkb_keymap_unref(keymap); }
    };

    void selectEvents();
    void handleEvent(const xcb_generic_event_t& event);
    void scheduleReload();
    void reload();
    void readGroup();
    void readKeys();
    void placeModifiers();
    void placeLetters();
    void readModifierMap();
    std::optional<xcb_keycode_t> keyAt(const char* position, xkb_keysym_t fallback) const;
    std::optional<xcb_keycode_t> keyForSymbolIn(xkb_layout_index_t layout, xkb_keysym_t symbol) const;
    xcb_keycode_t letterKey(xkb_keysym_t letter, const char* position) const;
    bool gives(xcb_keycode_t key, xkb_keysym_t symbol) const;

    X11Connection& connection_;
    std::unique_ptr<xkb_context, ContextDeleter> context_;
    std::unique_ptr<xkb_keymap, KeymapDeleter> keymap_;
    std::int32_t device_ = -1;
    std::uint8_t group_ = 0;
    std::uint8_t lockedModifiers_ = 0;
    std::array<Key, 256> keys_{};
    KeySet modifiers_;
    KeySet locks_;
    std::uint16_t alt_ = XCB_MOD_MASK_1;
    std::uint16_t super_ = XCB_MOD_MASK_4;
    std::uint16_t numLock_ = 0;
    std::uint16_t scrollLock_ = 0;
    Observers<> changed_;
    Subscription events_;
    std::shared_ptr<bool> reloadPending_;
};

}  // namespace dorix
