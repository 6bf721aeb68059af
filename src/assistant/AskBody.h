#pragma once

#include "assistant/Assistant.h"
#include "base/Json.h"

namespace dorix {

/// What the service is told of a question, for "v1/ai/ask": the material as it is, each piece in a field of
/// its own and up to a length. Pure; any thread.
Json askBody(const Assistant::Request& request);

}  // namespace dorix
