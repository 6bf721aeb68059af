#include "panel/AnswerBlocks.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace dorix {

namespace {

using Kind = AnswerBlock::Kind;

// Bytes. Enough for nearly every paragraph that people write, little enough to lay out in a frame.
constexpr std::size_t longestBlock = 1200;

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

std::string_view trimmedEnd(std::string_view text) {
    const auto last = text.find_last_not_of(" \t\r\n");
    return last == std::string_view::npos ? std::string_view() : text.substr(0, last + 1);
}

std::size_t indentation(std::string_view line) {
    return std::min(line.find_first_not_of(" \t"), line.size());
}

std::string_view takeLine(std::string_view& rest) {
    const auto end = rest.find('\n');
    auto line = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

std::size_t headingLevel(std::string_view line) {
    const auto marks = std::min(line.find_first_not_of('#'), line.size());
    return marks >= 1 && marks <= 6 && marks < line.size() && line[marks] == ' ' ? marks : 0;
}

bool isRule(std::string_view line) {
    const std::string_view marks = trimmedEnd(line);
    if (marks.size() < 3 || !std::string_view("-*_").contains(marks.front())) return false;
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

/// Takes a text apart line by line.
class BlockParser {
 public:
    std::vector<AnswerBlock> parse(std::string_view rest) {
        while (!rest.empty()) take(takeLine(rest));
        close();
        return std::move(blocks_);
    }

    void add(AnswerBlock block) {
        std::string whole = std::exchange(block.text, {});
        std::string_view rest = whole;
        while (rest.size() > longestBlock) {
            const auto cut = cutPoint(rest);
            block.text = trimmedEnd(rest.substr(0, cut));
            blocks_.push_back(block);
            block.continues = true;
            rest.remove_prefix(cut);
        }
        block.text = rest;
        blocks_.push_back(std::move(block));
    }

    std::vector<AnswerBlock> taken() { return std::move(blocks_); }

 private:
    void take(std::string_view line) {
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

    void takeFence(std::string_view text) {
        const auto mark = text.substr(0, 3);
        if (fence_.empty()) {
            close();
            fence_ = mark;
            open_ = AnswerBlock{.kind = Kind::code};
        } else if (mark == fence_) {
            fence_.clear();
            close();
        } else {
            append(text);
        }
    }

    bool takeMarked(std::string_view text, std::size_t indent) {
        if (const auto level = headingLevel(text); level > 0) {
            begin({.kind = Kind::heading, .level = static_cast<int>(level)});
            append(text.substr(text.find_first_not_of(" #", level)));
            close();
        } else if (isRule(text)) {
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

    void begin(AnswerBlock block) {
        close();
        open_ = std::move(block);
    }
    /// Goes on with a block of the kind, or begins one.
    void open(AnswerBlock block) {
        if (!open_ || open_->kind != block.kind) begin(std::move(block));
    }
    void append(std::string_view line) {
        if (hasLine_) open_->text += '\n';
        open_->text += line;
        hasLine_ = true;
    }
    void close() {
        if (open_) add(std::move(*open_));
        open_.reset();
        hasLine_ = false;
    }

    std::vector<AnswerBlock> blocks_;
    std::optional<AnswerBlock> open_;
    bool hasLine_ = false;
    std::string fence_;  // of the code that is open
};

}  // namespace

std::vector<AnswerBlock> answerBlocks(std::string_view markdown) { return BlockParser().parse(markdown); }

std::vector<AnswerBlock> literalBlocks(std::string_view text) {
    BlockParser parser;
    text = trimmedEnd(text);
    while (!text.empty()) {
        const auto end = text.find("\n\n");
        parser.add({.text = std::string(trimmedEnd(text.substr(0, end)))});
        text.remove_prefix(std::min(text.size(), end));
        text.remove_prefix(std::min(text.size(), text.find_first_not_of("\r\n")));
    }
    return parser.taken();
}

}  // namespace dorix
