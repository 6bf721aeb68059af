#include "memory/embedding/EmbeddingTable.h"

#include "base/Json.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <exception>

namespace dorix {

namespace {

constexpr std::size_t longestHeader = 1024UZ * 1024;  // bytes; those of one tensor have some hundred
constexpr std::size_t largestDimension = 1UZ << 16;
static_assert(std::endian::native == std::endian::little, "the file's numbers are little-endian");

/// The header, which is cut off the bytes.
Json headerOf(std::string_view& file) {
    std::uint64_t length = 0;
    if (file.size() < sizeof(length)) throw std::runtime_error("no header");
    std::memcpy(&length, file.data(), sizeof(length));
    file.remove_prefix(sizeof(length));
    if (length > longestHeader || length > file.size()) throw std::runtime_error("no header");
    auto header = Json::parse(file.substr(0, length));
    file.remove_prefix(length);
    return header;
}

}  // namespace

std::expected<EmbeddingTable, std::string> EmbeddingTable::in(std::string_view file) {
    try {
        const auto header = headerOf(file);
        for (const auto& [name, tensor] : header.items()) {
            // Later versions of the format have tokens share vectors, or weigh them.
            if (name != "embeddings" && name != "__metadata__") return std::unexpected("a tensor " + name);
        }
        const auto& tensor = header.at("embeddings");
        if (tensor.at("dtype") != "F32") return std::unexpected("no 32-bit floats");
        EmbeddingTable table;
        const auto [rows, columns] = tensor.at("shape").get<std::pair<std::uint64_t, std::uint64_t>>();
        const auto [begin, end] = tensor.at("data_offsets").get<std::pair<std::uint64_t, std::uint64_t>>();
        const bool isInside = begin <= end && end <= file.size();
        // In this order nothing overflows.
        if (!isInside || rows == 0 || columns == 0 || columns > largestDimension ||
            rows > file.size() / columns / sizeof(float) || end - begin != rows * columns * sizeof(float))
            return std::unexpected("the vectors are not all there");
        table.rows_ = rows;
        table.dimension_ = columns;
        table.numbers_ = file.substr(begin, end - begin);
        return table;
    } catch (const std::exception& error) {
        return std::unexpected(error.what());
    }
}

void EmbeddingTable::addRow(std::size_t row, std::span<double> sums) const {
    const auto* at = numbers_.data() + row * dimension_ * sizeof(float);
    for (auto& sum : sums) {
        float number = 0;  // the file need not be aligned
        std::memcpy(&number, at, sizeof(number));
        sum += static_cast<double>(number);
        at += sizeof(number);
    }
}

}  // namespace dorix
