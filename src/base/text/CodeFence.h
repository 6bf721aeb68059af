#pragma once

#include <string_view>

namespace dorix::text {

/// What a model made of `original`, without a code block around all of it that `original` did not have. Part
/// of `answer`. Pure; any thread.
std::string_view withoutFence(std::string_view answer, std::string_view original);

}  // namespace dorix::text
