#pragma once

#include <cstdint>
#include <vector>

namespace dorix {

/// The program's mark, a D on a light disc that keeps it legible on a dark panel, `size` pixels square: rows
/// from the top, each pixel as the bytes alpha, red, green, blue.
std::vector<std::uint8_t> statusGlyph(int size);

}  // namespace dorix
