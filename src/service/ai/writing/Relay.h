#pragma once

#include "service/ai/writing/Dictation.h"
#include "service/ai/writing/Fillers.h"

namespace dorix::service {

/// Makes "dile a Ana que llego tarde" the message itself, "Ana, llego tarde", where that takes no other
/// change: what is to be said is a statement of the user's, and nothing in it speaks of Ana. Orders and
/// wishes ("que me llame") would need another form of the verb, and stay. `gap` is what comes between the
/// name and the rest.
void relay(Tokens& tokens, Spoken spoken, Gap gap);

}  // namespace dorix::service
