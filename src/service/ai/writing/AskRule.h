#pragma once

#include "service/ai/Requests.h"
#include "service/ai/writing/Dictation.h"

namespace dorix::service {

/// Whether a dictation is meant for the assistant and not for the page: by name, or as a question or an order
/// where there is no field to write to.
bool isForAssistant(const WriteRequest& request, const Tokens& tokens);

}  // namespace dorix::service
