#pragma once

#include "linux/x11/X11Connection.h"
#include "linux/x11/X11Keymap.h"

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
///
/// Each device has a layout of its own, and the user's keyboard may have another one than the server's test
/// keyboard, which strikes what we strike: strike...() look there, and go by meaning alone.
class X11Keyboard {
 public:
    using KeySet = std::bitset<256>;

    explicit X11Keyboard(X11Connection& connection);

    /// keycode::other for a key that has none.
    std::uint16_t virtualKeyCode(xcb_keycode_t key) const { return keys_[key].code; }

    /// None when the keyboard has no such key.
    std::optional<xcb_keycode_t> keyFor(std::uint16_t virtualKeyCode) const;

    /// The first key that gives this symbol without Shift.
    std::optional<xcb_keycode_t> keyForSymbol(xkb_keysym_t symbol) const {
        return typed_.keyForSymbol(symbol);
    }

    /// The key to strike for Control or Shift: a core modifier bit.
    std::optional<xcb_keycode_t> strikeModifier(std::uint8_t modifier) const;

    /// The key to strike for what types `symbol` while these core modifiers are down.
    std::optional<xcb_keycode_t> strikeSymbol(xkb_keysym_t symbol, std::uint8_t modifiers) const;

    /// The same for a letter, "v", which many applications also take from a layout that is not in force, or
    /// by its position.
    std::optional<xcb_keycode_t> strikeLetter(std::uint16_t virtualKeyCode) const;

    /// Whether the letters of the chords are on the keyboard at all, in some layout.
    bool strikesLatin() const;

    /// A key to strike that means nothing to any application.
    std::optional<xcb_keycode_t> strikeNothing() const { return struck_.unassignedKey(); }

    /// The modifier flags that the key sets while it is down; 0 for a key that is no modifier.
    std::uint64_t flagsOf(xcb_keycode_t key) const { return keys_[key].flags; }

    /// Any key that changes what others mean, locks included.
    bool isModifier(xcb_keycode_t key) const { return modifiers_[key]; }

    /// A key that stays in force after it went up (CapsLock, NumLock, ScrollLock).
    bool isLock(xcb_keycode_t key) const { return locks_[key]; }

    /// An Alt or a Super key by what it gives now: many applications and desktops open a menu when it is
    /// pressed alone. AltGr is none.
    bool opensMenus(xcb_keycode_t key) const;

    /// A key that is held for what else other keys type, as AltGr, by what it gives now.
    bool shiftsLevels(xcb_keycode_t key) const;

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

    void selectEvents();
    void selectEventsOf(std::uint16_t device, std::uint16_t events);
    void handleEvent(const xcb_generic_event_t& event);
    void scheduleReload();
    void reload();
    void readGroup();
    void readKeys();
    void placeModifiers();
    void placeLetters();
    void readModifierMap();
    void readTestKeyboard();
    std::optional<std::uint16_t> testKeyboard();
    bool isTestDevice(std::uint16_t device);
    std::optional<xcb_keycode_t> keyAt(const char* position, xkb_keysym_t fallback) const;
    bool gives(xcb_keycode_t key, xkb_keysym_t symbol) const { return typed_.symbol(key) == symbol; }

    X11Connection& connection_;
    std::unique_ptr<xkb_context, ContextDeleter> context_;
    X11Keymap typed_;
    X11Keymap struck_;
    std::optional<std::uint16_t> testKeyboard_;
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
