#include "linux/x11/X11EventPoster.h"

#include "base/Log.h"
#include "platform/KeyCodes.h"

#include <xkbcommon/xkbcommon-keysyms.h>

#include <algorithm>
#include <array>
#include <ranges>
#include <utility>

namespace dorix {

namespace {

using enum KeyStroke::Direction;

struct FlagKey {
    std::uint64_t flag;
    std::uint16_t keyCode;
};
constexpr std::array<FlagKey, 3> flagKeys{{{modifier::shift, keycode::leftShift},
                                           {modifier::control, keycode::leftControl},
                                           {modifier::option, keycode::leftOption}}};

}  // namespace

X11EventPoster::X11EventPoster(X11Connection& connection, X11Keyboard& keyboard, X11KeyInput& input,
                               X11Windows& windows, X11Pasteboard* pasteboard)
    : connection_(connection),
      keyboard_(keyboard),
      input_(input),
      windows_(windows),
      pasteboard_(pasteboard),
      strokes_(input.listen([this](const KeyStroke& stroke) { handleStroke(stroke); })),
      tasks_(connection.executor()) {}

void X11EventPoster::postKeyboardEvent(std::uint16_t keyCode, Direction direction, std::uint64_t flags) {
    if (connection_.isLost()) return;
    if (direction == Direction::down) {
        release();
        pressedCode_ = keyCode;
        ++downs_;
        isHeld_ = true;
        if (pasteboard_) pasteboard_->commit();
        auto chord = chordFor(keyCode, flags);
        if (chord.pastesPrimary) {
            tasks_.spawn(pressForPrimary(std::move(chord)));
        } else {
            press(chord);
        }
    } else if (keyCode == pressedCode_) {
        isHeld_ = false;
        release();
    }
    connection_.flush();
}

X11EventPoster::Chord X11EventPoster::chordFor(std::uint16_t keyCode, std::uint64_t flags) {
    if ((flags & modifier::command) != 0) return commandChord(keyCode);
    Chord chord;
    for (const auto& [flag, modifierCode] : flagKeys) {
        const auto key = (flags & flag) != 0 ? keyboard_.keyFor(modifierCode) : std::nullopt;
        if (key) chord.keys.push_back(*key);
    }
    const auto key = keyboard_.keyFor(keyCode);
    if (!key) return {};
    chord.keys.push_back(*key);
    return chord;
}

CommandChord X11EventPoster::commandChordInFront() {
    const auto front = windows_.windowClass(windows_.frontWindow());
    const auto chord = commandChordFor(front.instance, front.className);
    if (keyboard_.keyForSymbol(XKB_KEY_v) && keyboard_.keyForSymbol(XKB_KEY_c)) return chord;
    // Without Latin letters anywhere on the keyboard few applications know their own chords; the older ones
    // with Insert work in all of them.
    if (chord == CommandChord::control) return CommandChord::insert;
    return chord == CommandChord::controlShift ? CommandChord::insertPrimary : chord;
}

X11EventPoster::Chord X11EventPoster::keysOf(const std::vector<OptionalKey>& keys) {
    Chord chord;
    for (const auto& key : keys) {
        if (!key) {
            logLine("el teclado no tiene las teclas para copiar o pegar en la aplicación de delante");
            return {};
        }
        chord.keys.push_back(*key);
    }
    return chord;
}

X11EventPoster::Chord X11EventPoster::commandChord(std::uint16_t keyCode) {
    const auto letter = keyboard_.keyFor(keyCode);
    const auto control = keyboard_.keyFor(keycode::leftControl);
    const auto shift = keyboard_.keyFor(keycode::leftShift);
    const auto insert = keyboard_.keyForSymbol(XKB_KEY_Insert);
    const bool paste = keyCode == keycode::v;
    switch (commandChordInFront()) {
        case CommandChord::control:
            return keysOf({control, letter});
        case CommandChord::controlShift:
            return keysOf({control, shift, letter});
        case CommandChord::insert:
            return keysOf({paste ? shift : control, insert});
        case CommandChord::insertPrimary:
            break;
    }
    // Control and C would interrupt the program in the terminal.
    if (!paste) return {};
    auto chord = keysOf({shift, insert});
    chord.pastesPrimary = !chord.keys.empty();
    return chord;
}

Task<void> X11EventPoster::pressForPrimary(Chord chord) {
    const auto down = downs_;
    if (pasteboard_) co_await pasteboard_->servePrimaryForPaste();
    if (down != downs_) co_return;
    press(chord);
    if (!isHeld_) release();
    connection_.flush();
}

void X11EventPoster::press(const Chord& chord) {
    if (chord.keys.empty()) return;
    for (unsigned key = 0; key < input_.held().size(); ++key) {
        const auto code = static_cast<xcb_keycode_t>(key);
        if (!input_.held()[key] || keyboard_.isLock(code)) continue;
        letGo_.set(key);
        input_.fake({code, up});
    }
    for (const auto key : chord.keys) input_.fake({key, down});
    pressed_ = chord;
}

void X11EventPoster::release() {
    if (!pressed_) return;
    for (const auto key : std::views::reverse(pressed_->keys)) input_.fake({key, up});
    pressed_.reset();
    // Other keys stay up: pressed again they would type.
    for (unsigned key = 0; key < letGo_.size(); ++key) {
        const auto code = static_cast<xcb_keycode_t>(key);
        if (!letGo_[key] || !keyboard_.isModifier(code) || !input_.held()[key]) continue;
        input_.fake({code, down});
        pressedAgain_.set(key);
    }
    letGo_.reset();
}

// The test keyboard holds the modifier as well since it was pressed again there, and the user's own release
// may have come before that.
void X11EventPoster::handleStroke(const KeyStroke& stroke) {
    if (stroke.direction == down || !pressedAgain_[stroke.key]) return;
    pressedAgain_.reset(stroke.key);
    input_.fake({stroke.key, up});
    connection_.flush();
}

}  // namespace dorix
