#pragma once

#include "service/ai/writing/Dictation.h"
#include "service/ai/writing/Fillers.h"
#include "service/ai/writing/Sentences.h"

namespace dorix::service {

/// The dictation with those numbers in digits that people write in digits: of several words (a year, an
/// amount), with decimals, digits said one by one, shares, sums of money, days of a month, and hours with
/// their minutes. Short ones ("diez minutos", "two years") and what begins a sentence stay words, as the
/// academies' and publishers' guides ask for (RAE, "Ortografía", chapter VIII; The Chicago Manual of
/// Style, 9.2 and 9.5).
Tokens withNumbers(const Tokens& tokens, Spoken spoken, Register manner);

}  // namespace dorix::service
