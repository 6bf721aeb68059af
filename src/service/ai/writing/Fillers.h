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

/// The dictation without hesitations, fillers that stand apart and small words said twice. It keeps one word
/// at least.
Tokens withoutFillers(Tokens tokens, Spoken spoken);

}  // namespace dorix::service
