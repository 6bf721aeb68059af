#include "panel/BlockFeed.h"

#include <algorithm>
#include <utility>

namespace dorix {

namespace {

using Kind = AnswerBlock::Kind;

// Bytes of a line that are enough to tell what it is; what comes behind them can only be more of it.
constexpr std::size_t longPiece = 2048;

std::string_view kindName(Kind kind) {
    switch (kind) {
        case Kind::paragraph:
            return "paragraph";
        case Kind::heading:
            return "heading";
        case Kind::item:
            return "item";
        case Kind::quote:
            return "quote";
        case Kind::code:
            return "code";
        case Kind::rule:
            break;
    }
    return "rule";
}

void append(std::vector<AnswerBlock>& blocks, std::vector<AnswerBlock> more) {
    std::ranges::move(more, std::back_inserter(blocks));
}

}  // namespace

// AnswerBlockStream

std::size_t AnswerBlockStream::update(std::string_view text) {
    if (!text.starts_with(text_)) forget();
    text_.append(text.substr(text_.size()));
    const std::size_t first = settled_;
    blocks_.resize(settled_);
    takeLines();
    append(blocks_, parser_.taken());
    settled_ = blocks_.size();
    BlockParser ending = parser_;
    const auto begun = std::string_view(text_).substr(taken_);
    if (!begun.empty()) ending.take(begun, BlockParser::Line::ends);
    ending.finish();
    append(blocks_, ending.taken());
    return first;
}

void AnswerBlockStream::forget() {
    text_.clear();
    taken_ = 0;
    parser_ = {};
    settled_ = 0;
}

/// All whole lines, and what there is of one that is long.
void AnswerBlockStream::takeLines() {
    std::string_view rest = std::string_view(text_).substr(taken_);
    while (rest.find('\n') != std::string_view::npos) {
        const auto line = takeLine(rest);
        parser_.take(line, BlockParser::Line::ends);
    }
    if (rest.size() > longPiece) {
        const auto piece = trimmedEnd(rest);
        if (piece.size() > longPiece) {
            parser_.take(piece, BlockParser::Line::goesOn);
            rest.remove_prefix(piece.size());
        }
    }
    taken_ = text_.size() - rest.size();
}

// BlockFeed

std::size_t BlockFeed::show(std::vector<DetailBlock> above, std::string_view markdown,
                            std::vector<DetailBlock> under) {
    const bool isSameAbove = above == above_;
    const std::size_t before = answer_.blocks().size();
    const std::size_t changed = answer_.update(markdown);
    above_ = std::move(above);
    under_ = std::move(under);
    return isSameAbove ? above_.size() + std::min(changed, before) : 0;
}

std::vector<DetailBlock> BlockFeed::from(std::size_t first) const {
    const auto& blocks = answer_.blocks();
    std::vector<DetailBlock> pieces;
    for (std::size_t i = first; i < above_.size(); ++i) pieces.push_back(above_[i]);
    const std::size_t inAnswer = first - std::min(first, above_.size());
    for (std::size_t i = inAnswer; i < blocks.size(); ++i) {
        pieces.push_back({kindName(blocks[i].kind), blocks[i], {}});
    }
    const std::size_t inUnder = inAnswer - std::min(inAnswer, blocks.size());
    for (std::size_t i = inUnder; i < under_.size(); ++i) pieces.push_back(under_[i]);
    return pieces;
}

std::vector<DetailBlock> literalPieces(std::string_view kind, std::string_view text) {
    std::vector<DetailBlock> pieces;
    for (auto& block : literalBlocks(text)) pieces.push_back({kind, std::move(block), {}});
    return pieces;
}

}  // namespace dorix
