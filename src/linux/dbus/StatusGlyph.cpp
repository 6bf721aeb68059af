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

// The disc has the radius 1.
constexpr double letterLeft = -0.45;
constexpr double letterRadius = 0.54;  // of the bowl; half the height too
constexpr double letterCorner = 0.15;
constexpr double letterShift = -0.05;  // a D looks centred a little to the left of where it is
constexpr int samples = 8;             // each way in a pixel

bool isInDisc(double x, double y) { return std::hypot(x, y) <= 1; }

bool isInLetter(double x, double y) {
    if (x >= 0) return std::hypot(x, y) <= letterRadius;
    const double dx = std::max(0.0, letterLeft + letterCorner - x);
    const double dy = std::max(0.0, std::abs(y) - (letterRadius - letterCorner));
    return std::hypot(dx, dy) <= letterCorner;
}

/// How much of the pixel at (column, row) the shape covers.
template <typename Shape>
double covered(int column, int row, int size, Shape isIn) {
    const double half = size / 2.0;
    int hits = 0;
    for (int i = 0; i < samples * samples; ++i) {
        const int across = i % samples;
        const int down = i / samples;
        const double x = column + (across + 0.5) / samples;
        const double y = row + (down + 0.5) / samples;
        if (isIn(x / half - 1, y / half - 1)) ++hits;
    }
    return hits / static_cast<double>(samples * samples);
}

}  // namespace

std::vector<std::uint8_t> statusGlyph(int size) {
    const auto letter = [](double x, double y) { return isInLetter(x - letterShift, y); };
    std::vector<std::uint8_t> pixels;
    pixels.reserve(static_cast<std::size_t>(size) * static_cast<std::size_t>(size) * 4);
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            const double ink = covered(x, y, size, letter);
            const auto mixed = [ink](double over, double under) { return under + (over - under) * ink; };
            const std::array channels{255 * covered(x, y, size, isInDisc), mixed(accent.red, ground.red),
                                      mixed(accent.green, ground.green), mixed(accent.blue, ground.blue)};
            for (const double channel : channels)
                pixels.push_back(static_cast<std::uint8_t>(std::lround(channel)));
        }
    }
    return pixels;
}

}  // namespace dorix
