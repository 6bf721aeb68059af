#include "linux/x11/X11EventPoster.h"

#include "base/Log.h"
#include "platform/KeyCodes.h"

#include <xkbcommon/xkbcommon-keysyms.h>

namespace dorix {

namespace {

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
      windows_(windows),
      pasteboard_(pasteboard),
      striker_(connection, keyboard, input) {}

Task<bool> X11EventPoster::postCommandKey(std::uint16_t keyCode, Condition still) {
    if (connection_.isLost()) co_return false;
    const auto chord = commandChord(keyCode);
    if (chord.keys.empty()) co_return false;
    if (chord.pastesPrimary && pasteboard_) co_await pasteboard_->servePrimaryForPaste();
    co_return strike(chord, still);
}

bool X11EventPoster::strike(const Chord& chord, const Condition& still) {
    // That waits for another connection of ours.
    if (pasteboard_) pasteboard_->commit();
    const ServerGrab grab(connection_);
    if (!still()) return false;
    if (chord.pastesPrimary && pasteboard_ && !pasteboard_->holdsPrimary()) return false;
    striker_.strike(chord.keys);
    return true;
}

CommandChord X11EventPoster::commandChordInFront() {
    const auto front = windows_.windowClass(windows_.frontWindow());
    const auto chord = commandChordFor(front.instance, front.className);
    if (keyboard_.strikesLatin()) return chord;
    // Without Latin letters anywhere on the keyboard few applications know their own chords; the older ones
    // with Insert work in all of them.
    if (chord == CommandChord::control) return CommandChord::insert;
    return chord == CommandChord::controlShift ? CommandChord::insertPrimary : chord;
}

X11EventPoster::Chord X11EventPoster::keysOf(const std::vector<OptionalKey>& keys) {
    Chord chord;
    for (const auto& key : keys) {
        if (!key) {
            logLine("the keyboard lacks the keys to copy or paste in the application in front");
            return {};
        }
        chord.keys.push_back(*key);
    }
    return chord;
}

X11EventPoster::Chord X11EventPoster::commandChord(std::uint16_t keyCode) {
    const bool paste = keyCode == keycode::v;
    const auto letter = keyboard_.strikeLetter(keyCode);
    const auto control = keyboard_.strikeModifier(XCB_MOD_MASK_CONTROL);
    const auto shift = keyboard_.strikeModifier(XCB_MOD_MASK_SHIFT);
    const auto insert =
        keyboard_.strikeSymbol(XKB_KEY_Insert, paste ? XCB_MOD_MASK_SHIFT : XCB_MOD_MASK_CONTROL);
    switch (commandChordInFront()) {
        case CommandChord::control:
            return keysOf({control, letter});
        case CommandChord::controlShift:
            return keysOf({control, shift, letter});
        case CommandChord::insert:
            return keysOf({paste ? shift : control, insert});
        case CommandChord::none:
            return {};
        case CommandChord::insertPrimary:
            break;
    }
    // Control and C would interrupt the program in the terminal.
    if (!paste) return {};
    auto chord = keysOf({shift, insert});
    chord.pastesPrimary = !chord.keys.empty();
    return chord;
}

}  // namespace dorix
