#pragma once

#include <cstddef>
#include <cstdint>

namespace dorix {

/// What the rows of codes are filled up to, in bytes; they begin at multiples of it.
inline constexpr std::size_t codeAlignment = 64;

/// The dot products of `rows` rows of `stride` codes each with the query, which has as many; with the widest
/// instructions that the processor has. The sums must fit into 32 bits. Any thread.
void codeProducts(const std::int8_t* codes, std::size_t rows, std::size_t stride, const std::int16_t* query,
                  std::int32_t* products);

}  // namespace dorix
