#pragma once

#include "panel/AnswerBlocks.h"
#include "panel/BlockParser.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {

/// What an answer rests on, as it is shown.
struct SourceChip {
    std::string title;
    std::string address;  // where a click leads to; "" where it leads nowhere
    std::string numbers;  // by which the answer cites it; "" where it does not

    bool operator==(const SourceChip&) const = default;
};

/// A piece of what is shown of an answer and around it, laid out by itself.
struct DetailBlock {
    std::string_view kind;
    AnswerBlock content;
    std::vector<SourceChip> sources;  // of the kind "sources"

    bool operator==(const DetailBlock&) const = default;
};

/// The blocks of a text that grows: only what has come is read, and only the last block is read again. Any
/// thread, one at a time.
class AnswerBlockStream {
 public:
    /// Takes the text as it is by now: what it was and more, or another one. The first block that may be
    /// another than before.
    std::size_t update(std::string_view text);

    const std::vector<AnswerBlock>& blocks() const { return blocks_; }

 private:
    void forget();
    void takeLines();

    std::string text_;
    std::size_t taken_ = 0;  // bytes of it that `parser_` has
    BlockParser parser_;
    std::vector<AnswerBlock> blocks_;
    std::size_t settled_ = 0;  // the first of them that more text may change
};

/// An answer with what stands above and under it, one piece after the other. Any thread, one at a time.
class BlockFeed {
 public:
    /// What is shown from now on. The first piece that may be another than before.
    std::size_t show(std::vector<DetailBlock> above, std::string_view markdown,
                     std::vector<DetailBlock> under);

    /// The pieces from that one on.
    std::vector<DetailBlock> from(std::size_t first) const;

 private:
    std::vector<DetailBlock> above_;
    AnswerBlockStream answer_;
    std::vector<DetailBlock> under_;
};

/// Pieces of one kind, of a text in which nothing is a mark.
std::vector<DetailBlock> literalPieces(std::string_view kind, std::string_view text);

}  // namespace dorix
