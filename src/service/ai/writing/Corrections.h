#pragma once

#include "service/ai/writing/Dictation.h"

namespace dorix::service {

/// The dictation without what the user took back: in "el martes, no, el miércoles" the first day and the
/// "no". A wrong guess costs words that were meant, so what goes and what replaces it have to be of one kind
/// and one shape; everything else stays as it was said.
Tokens withoutCorrected(const Tokens& tokens);

}  // namespace dorix::service
