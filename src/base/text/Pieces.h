#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

/// What UTF-8 text consists of. Pure functions, any thread; characters as in Text.h.
namespace dorix::text {

/// Where each character begins, in bytes, and the end of the text.
std::vector<std::size_t> characterBounds(std::string_view text);

/// The runs of letters and digits (and the marks that belong to them).
std::vector<std::string_view> alphanumericRuns(std::string_view text);

}  // namespace dorix::text
