#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace dorix {

/// Makes a picture smaller: each pixel is the mean of the area that it stands for, parts of pixels included.
/// Any thread.
class AreaAverage {
 public:
    struct Size {
        int width = 0;
        int height = 0;
    };

    /// Gives a row of the larger picture, four bytes a pixel. Rows are asked for from the top, each once or
    /// twice running.
    using Rows = std::function<const std::uint8_t*(int row)>;

    /// Neither side of `to` is longer than that of `from`.
    AreaAverage(Size from, Size to);

    /// Fills `picture`, which has four bytes for each pixel of the smaller one.
    void shrink(const Rows& rows, std::uint8_t* picture);

 private:
    // Of what an output pixel stands for: from which input pixel on, and how much of each, in 1/256. They add
    // up to 256.
    struct Part {
        int first = 0;
        std::vector<std::uint16_t> weights;
    };

    static std::vector<Part> partsOf(int from, int to);
    void addUp(const Part& part, const Rows& rows);
    void writeRow(std::uint8_t* into) const;

    const std::vector<Part> columns_;
    const std::vector<Part> lines_;
    std::vector<std::uint16_t> sums_;  // of one output row, as wide as the input; in 1/256
};

}  // namespace dorix
