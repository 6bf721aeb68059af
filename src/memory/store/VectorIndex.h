#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace dorix {

/// Vectors of one dimension, of which it finds those nearest to another one by their dot product. It keeps a
/// byte for each number, and knows for each vector how far that is off at most: so it leaves out only what is
/// sure not to be among the nearest, after reading a quarter of what the vectors themselves would take. What
/// it finds is to be ordered by the vectors themselves, which the caller has. One thread.
class VectorIndex {
 public:
    explicit VectorIndex(std::size_t dimension);
    ~VectorIndex();
    VectorIndex(const VectorIndex&) = delete;
    VectorIndex& operator=(const VectorIndex&) = delete;

    std::size_t dimension() const { return dimension_; }
    std::size_t size() const { return size_; }

    /// A vector with numbers in it that are none is left out, as nothing is near to it.
    void add(std::int64_t id, std::span<const float> vector);
    /// One that is not there is gone.
    void remove(std::int64_t id);

    /// The ids of the `count` vectors with the highest dot products with the query, summed in 32-bit floats,
    /// and of others that come close; in no order. None for a query with numbers in it that are none.
    std::vector<std::int64_t> nearest(std::span<const float> query, std::size_t count) const;

 private:
    struct Block;
    struct Scores;

    Scores scores(std::span<const float> query) const;

    const std::size_t dimension_;
    const std::size_t stride_;  // bytes of a vector's codes, with what fills them up
    std::size_t size_ = 0;
    std::vector<std::unique_ptr<Block>> blocks_;  // full but for the last
};

}  // namespace dorix
