#pragma once

#include <string>
#include <string_view>

namespace dorix::text {

/// Text of anybody's making as one line of UTF-8: control characters and line ends become blanks, and what is
/// no UTF-8 becomes U+FFFD. Pure; any thread.
std::string asLine(std::string_view text);

}  // namespace dorix::text
