#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {

/// How a text is cut, in characters.
struct ChunkSizes {
    std::size_t size = 1000;
    std::size_t overlap = 150;
    std::size_t maxChunks = 200;
};

/// The text in pieces that overlap, cut between words where there is a gap in the second half of a piece.
/// Runs of blanks and of line ends become shorter, and pieces of 40 characters or less are left out. Any
/// thread.
std::vector<std::string> chunks(std::string_view text, const ChunkSizes& sizes);

}  // namespace dorix
