#pragma once

#include "service/ai/Needed.h"
#include "service/ai/Requests.h"

#include <expected>
#include <string>

namespace dorix::service {

/// Answers with sentences of the material that came with the question, quoted as they stand under the name of
/// where they come from, and with the number of a memory hit. The few words around them are in the language
/// of the question, or in `fallback` when that cannot be told. Linear in the material; pure, any thread.
std::expected<std::string, Needed> answerByExtraction(const AskRequest& request, Language fallback);

}  // namespace dorix::service
