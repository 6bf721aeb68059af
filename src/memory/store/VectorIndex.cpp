#include "memory/store/VectorIndex.h"

#include "memory/store/CodeProducts.h"

#include <hwy/aligned_allocator.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <queue>
#include <utility>

namespace dorix {

namespace {

constexpr std::size_t rowsOfBlock = 4096;
constexpr float largestCode = 127;

/// Also not so large that a product would not be a number any more.
bool hasNumbers(std::span<const float> vector) {
    constexpr float most = 1e9F;
    return std::ranges::all_of(vector, [](float number) { return std::abs(number) <= most; });
}

double norm(std::span<const float> vector) {
    double sum = 0;
    for (const double number : vector) sum += number * number;
    return std::sqrt(sum);
}

float largest(std::span<const float> vector) {
    float most = 0;
    for (const auto number : vector) most = std::max(most, std::abs(number));
    return most;
}

/// What codes stand for, and how far that is from the vector they were made of.
struct Coding {
    float scale = 0;  // of a code
    float norm = 0;   // of the vector
    float error = 0;  // the norm of what is missing
};

/// Rounds the numbers to whole multiples of a scale, by which the largest is `most`.
template <typename Code>
Coding encode(std::span<const float> vector, float most, Code* codes) {
    Coding coding{.scale = largest(vector) / most, .norm = static_cast<float>(norm(vector))};
    if (coding.scale == 0) return coding;
    double missing = 0;
    for (std::size_t i = 0; i < vector.size(); ++i) {
        const auto code = std::nearbyint(vector[i] / coding.scale);
        codes[i] = static_cast<Code>(std::clamp(code, -most, most));
        const double off = static_cast<double>(vector[i]) - static_cast<double>(codes[i]) * coding.scale;
        missing += off * off;
    }
    coding.error = static_cast<float>(std::sqrt(missing));
    return coding;
}

/// As large as the sum of the products allows.
float largestQueryCode(std::size_t dimension) {
    constexpr double mostOfSum = std::numeric_limits<std::int32_t>::max();
    constexpr double mostOfCode = std::numeric_limits<std::int16_t>::max();
    const double fitting = std::floor(mostOfSum / (largestCode * static_cast<double>(dimension)));
    return static_cast<float>(std::min(fitting, mostOfCode));
}

}  // namespace

struct VectorIndex::Block {
    explicit Block(std::size_t stride) : codes(hwy::AllocateAligned<std::int8_t>(rowsOfBlock * stride)) {
        if (!codes) throw std::bad_alloc();
    }

    hwy::AlignedFreeUniquePtr<std::int8_t[]> codes;
    std::size_t rows = 0;
    std::array<Coding, rowsOfBlock> codings;
    std::array<std::int64_t, rowsOfBlock> ids;
};

/// Between which two values the dot products lie.
struct VectorIndex::Scores {
    std::vector<float> about;
    std::vector<float> off;  // at most
};

VectorIndex::VectorIndex(std::size_t dimension)
    : dimension_(dimension), stride_((dimension + codeAlignment - 1) / codeAlignment * codeAlignment) {}

VectorIndex::~VectorIndex() = default;

void VectorIndex::add(std::int64_t id, std::span<const float> vector) {
    if (!hasNumbers(vector)) return;
    if (size_ % rowsOfBlock == 0) blocks_.push_back(std::make_unique<Block>(stride_));
    auto& block = *blocks_.back();
    auto* codes = block.codes.get() + block.rows * stride_;
    std::fill_n(codes, stride_, 0);
    block.codings[block.rows] = encode(vector, largestCode, codes);
    block.ids[block.rows] = id;
    ++block.rows;
    ++size_;
}

void VectorIndex::remove(std::int64_t id) {
    for (auto& block : blocks_) {
        const auto found = std::find(block->ids.begin(), block->ids.begin() + block->rows, id);
        if (found == block->ids.begin() + block->rows) continue;
        // The last of all takes its place.
        auto& last = *blocks_.back();
        const auto row = static_cast<std::size_t>(found - block->ids.begin());
        const auto from = last.rows - 1;
        std::copy_n(last.codes.get() + from * stride_, stride_, block->codes.get() + row * stride_);
        block->codings[row] = last.codings[from];
        block->ids[row] = last.ids[from];
        --last.rows;
        --size_;
        if (last.rows == 0) blocks_.pop_back();
        return;
    }
}

VectorIndex::Scores VectorIndex::scores(std::span<const float> query) const {
    const auto codes = hwy::AllocateAligned<std::int16_t>(stride_);
    std::fill_n(codes.get(), stride_, 0);
    const auto coded = encode(query, largestQueryCode(dimension_), codes.get());
    // What summing in floats may add to or take from a sum, at most.
    const float rounding = static_cast<float>(dimension_) * std::numeric_limits<float>::epsilon();
    Scores found{.about = std::vector<float>(size_), .off = std::vector<float>(size_)};
    std::array<std::int32_t, rowsOfBlock> products;
    std::size_t at = 0;
    for (const auto& block : blocks_) {
        codeProducts(block->codes.get(), block->rows, stride_, codes.get(), products.data());
        for (std::size_t row = 0; row < block->rows; ++row, ++at) {
            const auto& coding = block->codings[row];
            found.about[at] = static_cast<float>(products[row]) * coding.scale * coded.scale;
            // q·v - q'·v' = q·(v - v') + (q - q')·v', where |v'| is at most |v| + |v - v'|.
            found.off[at] = coded.norm * coding.error + coded.error * (coding.norm + coding.error) +
                            2 * rounding * coded.norm * coding.norm;
        }
    }
    return found;
}

std::vector<std::int64_t> VectorIndex::nearest(std::span<const float> query, std::size_t count) const {
    if (count == 0 || size_ == 0 || !hasNumbers(query)) return {};
    const auto found = scores(query);
    // What the nearest so far are at least.
    std::priority_queue<float, std::vector<float>, std::greater<>> least;
    for (std::size_t at = 0; at < size_; ++at) {
        const auto sure = found.about[at] - found.off[at];
        if (least.size() == count && sure <= least.top()) continue;
        if (least.size() == count) least.pop();
        least.push(sure);
    }
    std::vector<std::int64_t> ids;
    for (std::size_t at = 0; at < size_; ++at) {
        if (least.size() == count && found.about[at] + found.off[at] < least.top()) continue;
        ids.push_back(blocks_[at / rowsOfBlock]->ids[at % rowsOfBlock]);
    }
    return ids;
}

}  // namespace dorix
