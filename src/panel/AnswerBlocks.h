#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace dorix {

/// A piece of a text that is laid out by itself. Pieces are short, however long the text is, so that only
/// those that show need to be laid out.
struct AnswerBlock {
    enum class Kind { paragraph, heading, item, quote, code, rule };

    Kind kind = Kind::paragraph;
    int level = 0;           // of a heading, 1 to 6; how deep an item lies, from 0
    std::string marker;      // what stands before an item: a bullet, or its number as it was written
    std::string text;        // of code as it stands, otherwise still with its marks within the line
    bool continues = false;  // the one before was cut off here for its length alone

    bool operator==(const AnswerBlock&) const = default;
};

/// The blocks of a text in the Markdown that answers are written in: headings, lists, quotes, fenced code,
/// rules and tables (as code, as they stand). A line's end is a line's end. Raw HTML has no meaning: it is
/// text. Linear in the text's length. Any thread.
std::vector<AnswerBlock> answerBlocks(std::string_view markdown);

/// The same for a text in which nothing is a mark.
std::vector<AnswerBlock> literalBlocks(std::string_view text);

/// The text of one block as rich text: bold, italics, code and links to http and https addresses, and nothing
/// else that could fetch or run anything; what else could be markup is escaped. Any thread.
std::string richText(std::string_view blockText);

/// The text with what has a meaning in rich text escaped. Any thread.
std::string escaped(std::string_view text);

}  // namespace dorix
