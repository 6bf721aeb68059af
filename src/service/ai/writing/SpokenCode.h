#pragma once

#include "service/ai/writing/Dictation.h"
#include "service/ai/writing/Fillers.h"

namespace dorix::service {

/// Whether the dictation is a line for a terminal: it begins with the name of a program that is used there.
bool isCommandLine(const Tokens& tokens);

/// The signs of options and paths in the place of their names: "dash dash rm", "barra etc barra nginx".
/// Outside of a command line only where two in a row make a path. A comment that is announced ("comentario
/// …", "comment …") gets its "//", a "todo" in English its capitals and its colon.
Tokens withSpokenCode(const Tokens& tokens, Spoken spoken);

}  // namespace dorix::service
