#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace dorix {

/// Pieces of text, each with the number by which it was added, found by what a text begins with. The nodes of
/// a level lie side by side, so that each needs nine bytes. Any thread once it is built.
class PieceTrie {
 public:
    static constexpr std::uint32_t none = 0xFFFF'FFFF;

    /// Of what comes twice the last one counts. The pieces are all in one text; piece i begins at `starts[i]`
    /// and ends where the next one begins, or the text ends.
    PieceTrie(std::string_view pieces, const std::vector<std::uint32_t>& starts);

    /// Where a walk through a text stands.
    class Walk {
     public:
        explicit Walk(const PieceTrie& trie) : trie_(trie) {}
        /// Takes the next byte; false where no piece goes on with it.
        bool next(char byte);
        /// The piece that ends here; `none` where none does.
        std::uint32_t piece() const { return trie_.pieces_[node_]; }

     private:
        const PieceTrie& trie_;
        std::uint32_t node_ = 0;
    };

    /// The piece that is the text; `none` where there is none.
    std::uint32_t find(std::string_view text) const;

 private:
    struct Ordered;
    struct Range;

    void addNode(const Ordered& ordered, Range range, std::size_t depth, std::vector<Range>& nextLevel);

    std::vector<std::uint32_t> children_;  // the first of each node; those of the next node follow
    std::vector<char> labels_;             // the byte by which a node is reached
    std::vector<std::uint32_t> pieces_;
};

}  // namespace dorix
