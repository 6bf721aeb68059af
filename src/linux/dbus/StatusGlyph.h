#pragma once

#include <cstdint>
#include <vector>

namespace dorix {

/// The program's glyph, a ring with a dot on a light disc, `size` pixels square: rows from the top, each
/// pixel as the bytes alpha, red, green, blue.
std::vector<std::uint8_t> statusGlyph(int size);

}  // namespace dorix
