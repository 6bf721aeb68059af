#pragma once

#include <string_view>

namespace dorix {

/// The version that this was built as, such as "0.1.0". Any thread.
std::string_view version();

}  // namespace dorix
