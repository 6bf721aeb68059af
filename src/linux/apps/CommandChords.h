#pragma once

#include <string_view>

namespace dorix {

/// What an application takes for its copy and paste chords.
enum class CommandChord {
    /// Ctrl and the letter: everything but what follows.
    control,
    /// Ctrl, Shift and the letter: terminals, where Ctrl and a letter go to the program inside.
    controlShift,
    /// Ctrl-Insert and Shift-Insert.
    insert,
    /// Shift-Insert, which pastes PRIMARY; no chord copies.
    insertPrimary,
    /// No chord does the same in all of its modes: editors where the letters are commands. What Ctrl and V
    /// begin there waits for more keys.
    none,
};

/// By WM_CLASS, either of whose halves may be the one that is known; in any case of letters.
CommandChord commandChordFor(std::string_view instance, std::string_view className);

}  // namespace dorix
