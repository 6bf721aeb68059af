#pragma once

#include "panel/AnswerBlocks.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {

/// Takes a text apart line by line, and a long line piece by piece. What it has made of the lines so far is
/// final but for the block that is open; a copy can be asked what would come of the text if it ended here.
/// Any thread, one at a time.
class BlockParser {
 public:
    enum class Line { ends, goesOn };

    /// The next line without its end, or a piece of it. A piece that its line goes on after ends with no
    /// blank and is longer than any mark.
    void take(std::string_view piece, Line line);
    /// The text ends here.
    void finish() { close(); }

    /// A block as it stands, in pieces if it is long.
    void add(AnswerBlock block);

    /// The blocks that were finished since the last call.
    std::vector<AnswerBlock> taken();

 private:
    void beginLine(std::string_view line);
    void takeFence(std::string_view text);
    bool takeMarked(std::string_view text, std::size_t indent);
    void begin(AnswerBlock block);
    void open(AnswerBlock block);
    void append(std::string_view line);
    void cutLong();
    void close();

    std::vector<AnswerBlock> blocks_;
    std::optional<AnswerBlock> open_;
    bool hasLine_ = false;
    std::string fence_;            // of the code that is open
    bool isInLine_ = false;        // a piece of the line has been taken, and more is to come
    bool skipsLine_ = false;       // the rest of the line means nothing
    bool closesWithLine_ = false;  // the block is one line long
};

/// The text without the blanks at its end.
std::string_view trimmedEnd(std::string_view text);

/// The text up to its first line's end, which is taken off it.
std::string_view takeLine(std::string_view& rest);

}  // namespace dorix
