#include "linux/dbus/StatusGlyph.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace dorix {

namespace {

struct Color {
    double red, green, blue;
};

constexpr Color accent{15, 118, 110};
constexpr Color ground{255, 255, 255};

/// How much of a pixel at distance `r` from the centre lies within a circle.
double covered(double r, double radius) { return std::clamp(radius - r + 0.5, 0.0, 1.0); }

}  // namespace

std::vector<std::uint8_t> statusGlyph(int size) {
    const double half = size / 2.0;
    const double disc = half;
    const double ringOuter = half * 0.92;
    const double ringInner = half * 0.66;
    const double dot = half * 0.34;
    std::vector<std::uint8_t> pixels;
    pixels.reserve(static_cast<std::size_t>(size) * static_cast<std::size_t>(size) * 4);
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            const double r = std::hypot(x + 0.5 - half, y + 0.5 - half);
            const double ink = covered(r, ringOuter) - covered(r, ringInner) + covered(r, dot);
            const auto mixed = [ink](double over, double under) { return under + (over - under) * ink; };
            const std::array channels{255 * covered(r, disc), mixed(accent.red, ground.red),
                                      mixed(accent.green, ground.green), mixed(accent.blue, ground.blue)};
            for (const double channel : channels)
                pixels.push_back(static_cast<std::uint8_t>(std::lround(channel)));
        }
    }
    return pixels;
}

}  // namespace dorix
