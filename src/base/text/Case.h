#pragma once

#include <string>
#include <string_view>

namespace dorix::text {

/// UTF-8 in upper case, in no language's rules. Pure; any thread.
std::string uppercase(std::string_view text);

}  // namespace dorix::text
