#include "panel/BlockParser.h"

#include <algorithm>
#include <utility>

namespace dorix {

namespace {

using Kind = AnswerBlock::Kind;

// Bytes. Enough for nearly every paragraph that people write, little enough to lay out in a frame.
constexpr std::size_t longestBlock = 1200;
// A line of more marks is a text: whether it is a rule can be told before it ends.
constexpr std::size_t longestRule = 200;

bool isContinuationByte(char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; }

/// Where to cut a text that is too long: behind a line, else behind a word, else between two characters.
std::size_t cutPoint(std::string_view text) {
    const auto head = text.substr(0, longestBlock);
    for (const char end : {'\n', ' '}) {
        const auto found = head.rfind(end);
        if (found != std::string_view::npos && found > longestBlock / 2) return found + 1;
    }
    std::size_t cut = longestBlock;
    while (cut > 1 && isContinuationByte(text[cut])) --cut;
    return cut;
}

std::size_t indentation(std::string_view line) {
    return std::min(line.find_first_not_of(" \t"), line.size());
}

std::size_t headingLevel(std::string_view line) {
    const auto marks = std::min(line.find_first_not_of('#'), line.size());
    return marks >= 1 && marks <= 6 && marks < line.size() && line[marks] == ' ' ? marks : 0;
}

bool isRule(std::string_view line) {
    const std::string_view marks = trimmedEnd(line);
    if (marks.size() < 3 || marks.size() > longestRule || !std::string_view("-*_").contains(marks.front()))
        return false;
    return marks.find_first_not_of(marks.front()) == std::string_view::npos;
}

/// How long the mark of a list's item is, with the space behind it; 0 for none.
std::size_t itemMark(std::string_view line) {
    if (line.size() > 1 && std::string_view("-*+").contains(line.front()) && line[1] == ' ') return 2;
    if (line.starts_with("• ")) return std::string_view("• ").size();
    const auto digits = std::min(line.find_first_not_of("0123456789"), line.size());
    if (digits == 0 || digits > 4 || digits + 1 >= line.size()) return 0;
    const bool ends = (line[digits] == '.' || line[digits] == ')') && line[digits + 1] == ' ';
    return ends ? digits + 2 : 0;
}

}  // namespace

std::string_view trimmedEnd(std::string_view text) {
    const auto last = text.find_last_not_of(" \t\r\n");
    return last == std::string_view::npos ? std::string_view() : text.substr(0, last + 1);
}

std::string_view takeLine(std::string_view& rest) {
    const auto end = rest.find('\n');
    auto line = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

void BlockParser::take(std::string_view piece, Line line) {
    if (!isInLine_) {
        beginLine(piece);
    } else if (!skipsLine_) {
        open_->text += fence_.empty() && line == Line::ends ? trimmedEnd(piece) : piece;
        cutLong();
    }
    isInLine_ = line == Line::goesOn;
    if (isInLine_) return;
    if (std::exchange(closesWithLine_, false)) close();
    skipsLine_ = false;
}

void BlockParser::beginLine(std::string_view line) {
    const auto indent = indentation(line);
    const auto text = trimmedEnd(line.substr(indent));
    if (text.starts_with("```") || text.starts_with("~~~")) {
        takeFence(text);
    } else if (!fence_.empty()) {
        append(line);
    } else if (text.empty()) {
        close();
    } else if (text.starts_with('|')) {
        open({.kind = Kind::code});
        append(text);
    } else if (!takeMarked(text, indent)) {
        open({});
        append(text);
    }
}

void BlockParser::takeFence(std::string_view text) {
    const auto mark = text.substr(0, 3);
    if (!fence_.empty() && mark != fence_) return append(text);
    close();
    skipsLine_ = true;
    if (fence_.empty()) {
        fence_ = mark;
        open_ = AnswerBlock{.kind = Kind::code};
    } else {
        fence_.clear();
    }
}

bool BlockParser::takeMarked(std::string_view text, std::size_t indent) {
    if (const auto level = headingLevel(text); level > 0) {
        begin({.kind = Kind::heading, .level = static_cast<int>(level)});
        append(text.substr(std::min(text.find_first_not_of(" #", level), text.size())));
        closesWithLine_ = true;
    } else if (indent <= longestRule && isRule(text)) {
        begin({.kind = Kind::rule});
        close();
    } else if (const auto mark = itemMark(text); mark > 0) {
        const auto name = trimmedEnd(text.substr(0, mark));
        const bool numbered = name.size() > 1 && name != "•";
        begin({.kind = Kind::item,
               .level = static_cast<int>(std::min<std::size_t>(indent / 2, 4)),
               .marker = numbered ? std::string(name) : "•"});
        append(text.substr(mark));
    } else if (text.starts_with('>')) {
        open({.kind = Kind::quote});
        append(text.substr(text.starts_with("> ") ? 2 : 1));
    } else if (open_ && open_->kind == Kind::item && indent > 0) {
        append(text);
    } else {
        return false;
    }
    return true;
}

void BlockParser::begin(AnswerBlock block) {
    close();
    open_ = std::move(block);
}

/// Goes on with a block of the kind, or begins one.
void BlockParser::open(AnswerBlock block) {
    if (!open_ || open_->kind != block.kind) begin(std::move(block));
}

void BlockParser::append(std::string_view line) {
    if (hasLine_) open_->text += '\n';
    open_->text += line;
    hasLine_ = true;
    cutLong();
}

/// What is too long for one block is final as soon as it is that long.
void BlockParser::cutLong() {
    std::string_view rest = open_->text;
    if (rest.size() <= longestBlock) return;
    AnswerBlock piece = *open_;
    while (rest.size() > longestBlock) {
        const auto cut = cutPoint(rest);
        piece.text = trimmedEnd(rest.substr(0, cut));
        blocks_.push_back(piece);
        piece.continues = true;
        rest.remove_prefix(cut);
    }
    piece.text = rest;
    open_ = std::move(piece);
}

void BlockParser::close() {
    if (open_) blocks_.push_back(std::move(*open_));
    open_.reset();
    hasLine_ = false;
}

void BlockParser::add(AnswerBlock block) {
    open_ = std::move(block);
    cutLong();
    close();
}

std::vector<AnswerBlock> BlockParser::taken() { return std::exchange(blocks_, {}); }

}  // namespace dorix
