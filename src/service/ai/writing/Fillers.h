#pragma once

#include "service/ai/writing/Dictation.h"

namespace dorix::service {

/// Whose words the writer may take for fillers: in a third language they mean something.
struct Spoken {
    bool spanish = false;
    bool english = false;

    bool operator==(const Spoken&) const = default;
};

/// What a dictation is in; both where it does not say, neither where it is in another language.
Spoken spokenIn(std::string_view transcript);

/// The dictation without sounds that are no words and small words said twice. One word stays at least.
Tokens withoutHesitations(Tokens tokens, Spoken spoken);

/// The dictation without the words that pauses set apart and that say nothing. They may also announce a
/// correction, so corrections come first. One word stays at least.
Tokens withoutAsides(Tokens tokens, Spoken spoken);

}  // namespace dorix::service
