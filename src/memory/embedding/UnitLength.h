#pragma once

#include <cmath>
#include <span>

namespace dorix {

/// Makes a vector as long as one, in 32-bit floats; one that is all zeros stays so. False where that cannot
/// be done, as it holds numbers that are none or too large. Any thread.
inline bool makeUnitLength(std::span<float> vector) {
    float squares = 0;
    for (const auto number : vector) squares += number * number;
    if (!std::isfinite(squares)) return false;
    if (squares == 0) return true;
    const auto length = std::sqrt(squares);
    for (auto& number : vector) number /= length;
    return true;
}

}  // namespace dorix
