#pragma once

#include "service/ai/writing/Dictation.h"

namespace dorix::service {

/// The dictation with the lists that were dictated as such in lines of their own: "primero … segundo …",
/// "uno … dos … tres …", "first … second …", "bullet point …". The words that counted become the numbers.
Tokens withLists(Tokens tokens);

}  // namespace dorix::service
