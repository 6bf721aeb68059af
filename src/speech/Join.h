#pragma once

#include <string>
#include <string_view>

namespace dorix {

/// Two pieces of a transcript with one blank between them; both are trimmed of white space and line ends, and
/// an empty one adds nothing. Any thread.
std::string join(std::string_view a, std::string_view b);

}  // namespace dorix
