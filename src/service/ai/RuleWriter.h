#pragma once

#include "service/ai/Requests.h"
#include "service/ai/WriteAnswer.h"

namespace dorix::service {

/// Writes a dictation in Spanish or English with nothing but rules: fillers and corrected words go, spoken
/// punctuation becomes punctuation, dictated lists become lists. No word is put in that was not said. In
/// linear time; pure, any thread.
WriteAnswer writeByRules(const WriteRequest& request);

}  // namespace dorix::service
