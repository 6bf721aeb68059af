#include "linux/x11/AreaAverage.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace dorix {

namespace {
constexpr int channels = 4;
constexpr std::int64_t whole = 256;
}  // namespace

AreaAverage::AreaAverage(Size from, Size to)
    : columns_(partsOf(from.width, to.width)),
      lines_(partsOf(from.height, to.height)),
      sums_(static_cast<std::size_t>(from.width) * channels) {}

/// In units of which an input pixel has `to`, an output pixel has `from`. What is rounded off one weight is
/// made up for by the next, so that a plain surface stays exactly what it is.
std::vector<AreaAverage::Part> AreaAverage::partsOf(int from, int to) {
    std::vector<Part> parts(static_cast<std::size_t>(to));
    for (std::int64_t i = 0; i < to; ++i) {
        auto& part = parts[static_cast<std::size_t>(i)];
        const std::int64_t begin = i * from;
        const std::int64_t end = begin + from;
        part.first = static_cast<int>(begin / to);
        std::int64_t given = 0;
        for (std::int64_t pixel = part.first; pixel * to < end; ++pixel) {
            const std::int64_t covered = std::min((pixel + 1) * to, end) - begin;
            const std::int64_t upToHere = (2 * whole * covered + from) / (2 * std::int64_t{from});
            part.weights.push_back(static_cast<std::uint16_t>(upToHere - given));
            given = upToHere;
        }
    }
    return parts;
}

void AreaAverage::addUp(const Part& part, const Rows& rows) {
    std::ranges::fill(sums_, std::uint16_t{0});
    int row = part.first;
    for (const unsigned weight : part.weights) {
        const std::uint8_t* const values = rows(row++);
        std::uint16_t* const sums = sums_.data();
        const std::size_t count = sums_.size();
        for (std::size_t i = 0; i < count; ++i)
            sums[i] = static_cast<std::uint16_t>(sums[i] + weight * values[i]);
    }
}

void AreaAverage::writeRow(std::uint8_t* into) const {
    for (const auto& part : columns_) {
        std::array<std::uint32_t, channels> sum{};
        const std::uint16_t* from = sums_.data() + static_cast<std::size_t>(part.first) * channels;
        for (const std::uint32_t weight : part.weights) {
            for (std::size_t channel = 0; channel < channels; ++channel)
                sum[channel] += weight * from[channel];
            from += channels;
        }
        for (const auto value : sum)
            *into++ = static_cast<std::uint8_t>((value + whole * whole / 2) / (whole * whole));
    }
}

void AreaAverage::shrink(const Rows& rows, std::uint8_t* picture) {
    for (const auto& line : lines_) {
        addUp(line, rows);
        writeRow(picture);
        picture += columns_.size() * channels;
    }
}

}  // namespace dorix
