#pragma once

#include "service/ai/writing/Dictation.h"
#include "service/ai/writing/Fillers.h"

namespace dorix::service {

/// Gives names of people and places, abbreviations in capitals and, in English, days, months and languages
/// the capitals that a recogniser may leave out. Words that are also something else stay, unless what stands
/// around them tells. No word changes but in its case.
void capitaliseNames(Tokens& tokens, Spoken spoken);

/// Whether the word begins with a capital.
bool isCapital(const Token& token);

/// The number of words that name or address somebody from `at` on: "señor Robles", "Ana María", "equipo".
std::size_t addresseeAt(const Tokens& tokens, std::size_t at);

}  // namespace dorix::service
