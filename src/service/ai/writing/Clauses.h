#pragma once

#include "service/ai/writing/Dictation.h"
#include "service/ai/writing/Fillers.h"

namespace dorix::service {

/// Ends sentences in a dictation that came without any punctuation, and puts the commas that are sure: behind
/// a greeting, an introduction ("however") and a condition that comes first. Where it is not clear that a
/// sentence ends none does.
///
/// A sentence has one finite verb, and one more for each word that joins clauses (RAE, "Nueva gramática",
/// chapters 1.13, 43 and 47; Quirk et al., "A Comprehensive Grammar of the English Language", chapters 10 and
/// 13). A verb that nothing joins thus begins another: in Spanish the forms tell that say who acts or that
/// pronouns stand before, in English the subject pronouns.
void breakSentences(Tokens& tokens, Spoken spoken);

}  // namespace dorix::service
