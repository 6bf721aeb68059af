#pragma once

#include "service/ai/WriteAnswer.h"

#include <optional>
#include <string>
#include <string_view>

/// What a language model answered, read out of what it wrote. Pure; any thread.
namespace dorix::service {

/// The JSON object that was asked for, also within a code block or after a preamble. Nothing when there is
/// none, when a member is missing or no string, or when there is no text to write.
std::optional<WriteAnswer> readWriteAnswer(std::string_view answer);

}  // namespace dorix::service
