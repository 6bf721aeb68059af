#include "memory/indexing/Chunker.h"

#include "base/text/Pieces.h"
#include "base/text/Text.h"

#include <algorithm>

namespace dorix {

namespace {

constexpr std::size_t shortestChunk = 41;

/// Each run of blanks and tabs becomes one blank, each of three line feeds or more becomes two.
std::string squeezed(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    std::size_t lineFeeds = 0;
    for (const char c : text) {
        lineFeeds = c == '\n' ? lineFeeds + 1 : 0;
        const bool isBlank = c == ' ' || c == '\t';
        if (lineFeeds > 2 || (isBlank && out.ends_with(' '))) continue;
        out += isBlank ? ' ' : c;
    }
    return out;
}

/// A text whose characters are counted once.
class CountedText {
 public:
    explicit CountedText(std::string_view text) : text_(text), bounds_(text::characterBounds(text)) {}

    std::size_t size() const { return bounds_.size() - 1; }
    bool isGap(std::size_t character) const {
        const auto bytes = piece(character, character + 1);
        return bytes == " " || bytes.ends_with('\n');
    }
    std::string_view piece(std::size_t from, std::size_t to) const {
        return text_.substr(bounds_[from], bounds_[to] - bounds_[from]);
    }

 private:
    const std::string_view text_;
    const std::vector<std::size_t> bounds_;
};

/// Where the piece ends that begins at `start`.
std::size_t endOfPiece(const CountedText& text, std::size_t start, std::size_t size) {
    const auto end = std::min(start + size, text.size());
    if (end == text.size()) return end;
    for (auto gap = end - 1; gap > start + size / 2; --gap) {
        if (text.isGap(gap)) return gap;
    }
    return end;
}

}  // namespace

std::vector<std::string> chunks(std::string_view text, const ChunkSizes& sizes) {
    std::vector<std::string> found;
    const auto whole = squeezed(text);
    const CountedText counted(whole);
    if (sizes.size == 0) return found;
    for (std::size_t start = 0; start < counted.size() && found.size() < sizes.maxChunks;) {
        const auto end = endOfPiece(counted, start, sizes.size);
        const auto piece = text::trim(counted.piece(start, end));
        if (text::length(piece) >= shortestChunk) found.emplace_back(piece);
        if (end == counted.size()) break;
        // An overlap that takes in all of the piece would come to the same place for ever.
        const bool goesOn = end > sizes.overlap && end - sizes.overlap > start;
        start = goesOn ? end - sizes.overlap : end;
    }
    return found;
}

}  // namespace dorix
