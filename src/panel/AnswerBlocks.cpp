#include "panel/AnswerBlocks.h"

#include "panel/BlockParser.h"

#include <algorithm>

namespace dorix {

std::vector<AnswerBlock> answerBlocks(std::string_view markdown) {
    BlockParser parser;
    while (!markdown.empty()) parser.take(takeLine(markdown), BlockParser::Line::ends);
    parser.finish();
    return parser.taken();
}

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
