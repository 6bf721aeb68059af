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

/// While it lives the server serves this connection alone. Nothing that waits for another connection of this
/// process may be done meanwhile.
class ServerGrab {
 public:
    explicit ServerGrab(X11Connection& connection) : connection_(connection) {
        xcb_grab_server(connection_.get());
    }
    ~ServerGrab() {
        xcb_ungrab_server(connection_.get());
        connection_.flush();
    }
    ServerGrab(const ServerGrab&) = delete;
    ServerGrab& operator=(const ServerGrab&) = delete;

 private:
    X11Connection& connection_;
};

}  // namespace

X11EventPoster::X11EventPoster(X11Connection& connection, X11Keyboard& keyboard, X11KeyInput& input,
                               X11Windows& windows, X11Pasteboard* pasteboard)
    : connection_(connection),
      keyboard_(keyboard),
      input_(input),
      windows_(windows),
      pasteboard_(pasteboard),
      strokes_(input.listen([this](const KeyStroke& stroke) { handleStroke(stroke); })) {}

Task<bool> X11EventPoster::postCommandKey(std::uint16_t keyCode, Condition still) {
    if (connection_.isLost()) co_return false;
    const auto chord = commandChord(keyCode);
    if (chord.keys.empty()) co_return false;
    if (chord.pastesPrimary && pasteboard_) co_await pasteboard_->servePrimaryForPaste();
    co_return strike(chord, still);
}

bool X11EventPoster::strike(const Chord& chord, const Condition& still) {
    const ServerGrab grab(connection_);
    if (!still()) return false;
    if (chord.pastesPrimary && pasteboard_ && !pasteboard_->holdsPrimary()) return false;
    press(chord);
    release();
    return true;
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
