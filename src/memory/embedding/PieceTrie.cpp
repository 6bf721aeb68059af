#include "memory/embedding/PieceTrie.h"

#include <algorithm>
#include <compare>
#include <string>
#include <utility>

namespace dorix {

namespace {

std::string_view pieceAt(std::string_view pieces, const std::vector<std::uint32_t>& starts, std::size_t i) {
    const auto end = i + 1 < starts.size() ? starts[i + 1] : pieces.size();
    return pieces.substr(starts[i], end - starts[i]);
}

/// The first bytes of a text, as a number that is ordered as they are.
std::uint64_t beginningOf(std::string_view text) {
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < sizeof(number); ++i)
        number = (number << 8U) | (i < text.size() ? static_cast<unsigned char>(text[i]) : 0U);
    return number;
}

bool isBelow(char a, char b) { return static_cast<unsigned char>(a) < static_cast<unsigned char>(b); }

}  // namespace

/// The pieces in their order, side by side, as each level is made by going through all of them.
struct PieceTrie::Ordered {
    std::string text;
    std::vector<std::uint32_t> starts;
    std::vector<std::uint32_t> numbers;

    Ordered(std::string_view pieces, const std::vector<std::uint32_t>& places) {
        std::vector<std::pair<std::uint64_t, std::uint32_t>> order;  // most pieces differ in how they begin
        order.reserve(places.size());
        for (std::uint32_t i = 0; i < places.size(); ++i)
            order.emplace_back(beginningOf(pieceAt(pieces, places, i)), i);
        std::ranges::sort(order, [&](const auto& a, const auto& b) {
            if (a.first != b.first) return a.first < b.first;
            const auto order = pieceAt(pieces, places, a.second) <=> pieceAt(pieces, places, b.second);
            return order == 0 ? a.second < b.second : order < 0;
        });
        text.reserve(pieces.size());
        for (const auto& [beginning, number] : order) {
            starts.push_back(static_cast<std::uint32_t>(text.size()));
            numbers.push_back(number);
            text += pieceAt(pieces, places, number);
        }
    }

    std::string_view at(std::size_t i) const { return pieceAt(text, starts, i); }
};

/// The pieces that begin with the same bytes.
struct PieceTrie::Range {
    std::uint32_t first = 0;
    std::uint32_t end = 0;
};

PieceTrie::PieceTrie(std::string_view pieces, const std::vector<std::uint32_t>& starts) : labels_{'\0'} {
    const Ordered ordered(pieces, starts);
    std::vector<Range> level{{.end = static_cast<std::uint32_t>(starts.size())}};
    for (std::size_t depth = 0; !level.empty(); ++depth) {
        std::vector<Range> nextLevel;
        for (const auto& range : level) addNode(ordered, range, depth, nextLevel);
        level = std::move(nextLevel);
    }
    children_.push_back(static_cast<std::uint32_t>(labels_.size()));
    children_.shrink_to_fit();
    labels_.shrink_to_fit();
    pieces_.shrink_to_fit();
}

/// `depth` is how many bytes the pieces of the range have in common.
void PieceTrie::addNode(const Ordered& ordered, Range range, std::size_t depth,
                        std::vector<Range>& nextLevel) {
    children_.push_back(static_cast<std::uint32_t>(labels_.size()));
    auto at = range.first;
    auto piece = none;
    for (; at < range.end && ordered.at(at).size() == depth; ++at) piece = ordered.numbers[at];
    pieces_.push_back(piece);
    while (at < range.end) {
        const char label = ordered.at(at)[depth];
        auto end = at + 1;
        while (end < range.end && ordered.at(end)[depth] == label) ++end;
        labels_.push_back(label);
        nextLevel.push_back({.first = at, .end = end});
        at = end;
    }
}

bool PieceTrie::Walk::next(char byte) {
    const auto first = trie_.labels_.begin() + trie_.children_[node_];
    const auto end = trie_.labels_.begin() + trie_.children_[node_ + 1];
    const auto found = std::lower_bound(first, end, byte, isBelow);
    if (found == end || *found != byte) return false;
    node_ = static_cast<std::uint32_t>(found - trie_.labels_.begin());
    return true;
}

std::uint32_t PieceTrie::find(std::string_view text) const {
    Walk walk(*this);
    return std::ranges::all_of(text, [&](char byte) { return walk.next(byte); }) ? walk.piece() : none;
}

}  // namespace dorix
