#pragma once

#include "linux/apps/CommandChords.h"
#include "linux/x11/X11ChordStriker.h"
#include "linux/x11/X11KeyInput.h"
#include "linux/x11/X11Pasteboard.h"
#include "linux/x11/X11Windows.h"
#include "platform/InputEvents.h"

#include <optional>
#include <vector>

namespace dorix {

/// Types through the X server's test extension, what the application in front takes for its chord. A terminal
/// that pastes only PRIMARY gets it when that selection is ready.
class X11EventPoster final : public EventPoster {
 public:
    /// `pasteboard` is null where the clipboard is not the display's: then PRIMARY is not served.
    X11EventPoster(X11Connection& connection, X11Keyboard& keyboard, X11KeyInput& input, X11Windows& windows,
                   X11Pasteboard* pasteboard);

    /// The server serves nobody else between the question and the stroke.
    Task<bool> postCommandKey(std::uint16_t keyCode, Condition still) override;

 private:
    struct Chord {
        /// In the order they are pressed.
        std::vector<xcb_keycode_t> keys;
        bool pastesPrimary = false;
    };
    using OptionalKey = std::optional<xcb_keycode_t>;

    CommandChord commandChordInFront();
    static Chord keysOf(const std::vector<OptionalKey>& keys);
    Chord commandChord(std::uint16_t keyCode);
    bool strike(const Chord& chord, const Condition& still);

    X11Connection& connection_;
    X11Keyboard& keyboard_;
    X11Windows& windows_;
    X11Pasteboard* const pasteboard_;
    X11ChordStriker striker_;
};

}  // namespace dorix
