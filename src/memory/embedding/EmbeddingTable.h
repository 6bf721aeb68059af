#pragma once

#include <cstddef>
#include <expected>
#include <span>
#include <string>
#include <string_view>

namespace dorix {

/// The vectors of a static model's tokens, as they lie in the bytes of a "model.safetensors": a JSON header
/// behind its length, then numbers. Of the format only what model2vec writes is taken: one tensor called
/// "embeddings", of 32-bit floats. Any thread.
class EmbeddingTable {
 public:
    /// The bytes outlive it; or why they are no such table, in English. Whatever they hold, what is read of
    /// them later lies inside.
    static std::expected<EmbeddingTable, std::string> in(std::string_view file);

    std::size_t rows() const { return rows_; }
    std::size_t dimension() const { return dimension_; }

    /// Adds a row, which must be there, to as many sums.
    void addRow(std::size_t row, std::span<double> sums) const;

    std::string_view bytes() const { return numbers_; }

 private:
    std::size_t rows_ = 0;
    std::size_t dimension_ = 0;
    std::string_view numbers_;
};

}  // namespace dorix
