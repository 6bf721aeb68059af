#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace dorix {

/// How many bytes the first code point of a text has, which is not empty: of bytes that are not UTF-8 one, or
/// as many as there are. Any thread.
inline std::size_t codePointLength(std::string_view text) {
    const auto first = static_cast<unsigned char>(text.front());
    const std::size_t length = first < 0xC0 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    return std::min(length, text.size());
}

}  // namespace dorix
