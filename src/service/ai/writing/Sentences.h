#pragma once

#include "service/ai/writing/Dictation.h"
#include "service/ai/writing/Fillers.h"

#include <cstdint>

namespace dorix::service {

enum class Register : std::uint8_t {
    prose,
    technical,  // words keep their case, and a short line gets no full stop
};

/// Puts capitals, question marks and a full stop at the end where they belong. Words stay.
void punctuate(Tokens& tokens, Register manner, Spoken spoken);

/// Gives the first word a capital, unless it is code.
void capitaliseStart(Tokens& tokens);

}  // namespace dorix::service
