#pragma once

#include "service/ai/Needed.h"
#include "service/ai/Requests.h"

#include <expected>
#include <string>

namespace dorix::service {

/// Carries out an instruction that is mechanical: a list of lines, numbers before them, upper or lower case,
/// trimming, joining, sorting, dropping repeated lines. Every other one needs a language model. Pure; any
/// thread.
std::expected<std::string, Needed> transformByRules(const TransformRequest& request);

}  // namespace dorix::service
