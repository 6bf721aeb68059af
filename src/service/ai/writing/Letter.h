#pragma once

#include "service/ai/writing/Dictation.h"

namespace dorix::service {

/// Sets the greeting and the farewell of a message apart, in lines of their own, where they were dictated.
void frameLetter(Tokens& tokens);

}  // namespace dorix::service
