#include "panel/AnswerBlocks.h"
#include "panel/BlockFeed.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace dorix {
namespace {

using Kind = AnswerBlock::Kind;
using testing::ElementsAre;

TEST(AnswerBlocksTest, TakesTheCommonMarkdownApart) {
    const auto blocks = answerBlocks(
        "# Título\nuna línea\notra\n\n- uno\n  sigue\n  - dentro\n12. doce\n> cita\n> más\n\n---\n"
        "```py\n# no es un título\n\n  x\n```\n| a | b |\n|---|---|\n#etiqueta");
    EXPECT_THAT(
        blocks,
        ElementsAre(AnswerBlock{.kind = Kind::heading, .level = 1, .text = "Título"},
                    AnswerBlock{.text = "una línea\notra"},
                    AnswerBlock{.kind = Kind::item, .marker = "•", .text = "uno\nsigue"},
                    AnswerBlock{.kind = Kind::item, .level = 1, .marker = "•", .text = "dentro"},
                    AnswerBlock{.kind = Kind::item, .marker = "12.", .text = "doce"},
                    AnswerBlock{.kind = Kind::quote, .text = "cita\nmás"}, AnswerBlock{.kind = Kind::rule},
                    AnswerBlock{.kind = Kind::code, .text = "# no es un título\n\n  x"},
                    AnswerBlock{.kind = Kind::code, .text = "| a | b |\n|---|---|"},
                    AnswerBlock{.text = "#etiqueta"}));
    EXPECT_THAT(answerBlocks("```\nsin cerrar"),
                ElementsAre(AnswerBlock{.kind = Kind::code, .text = "sin cerrar"}));
    EXPECT_TRUE(answerBlocks(" \n\n").empty());
}

TEST(AnswerBlocksTest, LiteralTextHasNoMarks) {
    EXPECT_THAT(literalBlocks("# uno\n- dos\n\n\n> tres\n"),
                ElementsAre(AnswerBlock{.text = "# uno\n- dos"}, AnswerBlock{.text = "> tres"}));
}

TEST(AnswerBlocksTest, NoBlockIsLongAndNothingIsLost) {
    std::string text;
    for (int i = 0; i < 40'000; ++i) text += i % 3 == 0 ? "ñandú " : "voló ";
    text += std::string(5000, 'x');
    std::string together;
    for (const auto& block : answerBlocks(text)) {
        EXPECT_LE(block.text.size(), 1200U);
        EXPECT_EQ(block.continues, !together.empty());
        together += block.text;
    }
    std::erase(together, ' ');
    std::erase(text, ' ');
    EXPECT_EQ(together, text);
}

/// What more of a text can do to the blocks that were there.
TEST(AnswerBlockStreamTest, WhereverATextHasComeToItsBlocksAreThoseOfTheWhole) {
    const std::string marks =
        "# Título\nuna línea\notra\n\n- uno\n  sigue\n  - dentro\n12. doce\n> cita\n> más\n\n---\n"
        "```py\n# no\n\n  x  \n~~~\n```  \n| a | b |\n|---|---|\n-\n- \n--\n---x\r\n## \n#\n# #\n## #1 "
        "Plan\n~~~\nfin";
    std::string longLine = "> ";
    for (int i = 0; i < 900; ++i) longLine += i % 7 == 0 ? "ñandú   " : "voló ";
    const std::string text = marks + "\n~~~\n" + longLine + "\n" + std::string(300, '-') + "\n# " + longLine +
                             longLine + "\n```\n" + longLine + "\n" + longLine + "\n```\n1. x\n" +
                             std::string(2100, ' ') + "--- y";
    for (const std::size_t step : {1U, 13U, 700U, 5000U}) {
        AnswerBlockStream stream;
        std::vector<AnswerBlock> shown;
        for (std::size_t end = 0; end < text.size() + step; end += step) {
            const auto part = std::string_view(text).substr(0, end);
            const auto first = stream.update(part);
            ASSERT_LE(first, shown.size());
            shown.resize(first);
            shown.insert(shown.end(), stream.blocks().begin() + static_cast<std::ptrdiff_t>(first),
                         stream.blocks().end());
            ASSERT_TRUE(shown == answerBlocks(part)) << end;
        }
    }
    AnswerBlockStream stream;
    stream.update("uno\n\ndos ");
    stream.update("uno\n\ndos");
    EXPECT_EQ(stream.blocks(), answerBlocks("uno\n\ndos"));
    stream.update("otro");
    EXPECT_EQ(stream.blocks(), answerBlocks("otro"));
}

TEST(RichTextTest, MarksWithinTheLine) {
    EXPECT_EQ(richText("a **b *c* d** e"), "a <b>b <i>c</i> d</b> e");
    EXPECT_EQ(richText("`**x**` ``a`b``"), "<code>**x**</code> <code>a`b</code>");
    EXPECT_EQ(richText("3 * 4 * 5, snake_case_name, 2**"), "3 * 4 * 5, snake_case_name, 2**");
    EXPECT_EQ(richText("\\*no\\*"), "*no*");
    EXPECT_EQ(richText("ver https://a.example/x?y=1&z=2."),
              "ver <a href=\"https://a.example/x?y=1&amp;z=2\">https://a.example/x?y=1&amp;z=2</a>.");
    EXPECT_EQ(richText("[aquí](http://b.example)"), "<a href=\"http://b.example\">aquí</a>");
}

TEST(RichTextTest, ALineIsNoBlock) {
    EXPECT_EQ(richText("1. _uno_\n# dos\n===\n- tres\n    cuatro"),
              "1. <i>uno</i>\n# dos\n===\n- tres\n    cuatro");
    EXPECT_EQ(richText("**una\notra**\n\n[r]: x"), "<b>una\notra</b>\n\n[r]: x");
}

TEST(RichTextTest, NothingOfTheTextIsMarkup) {
    EXPECT_EQ(richText("<img src=\"x\"> & <script> &#60;b>"),
              "&lt;img src=&quot;x&quot;&gt; &amp; &lt;script&gt; &#60;b&gt;");
    EXPECT_EQ(richText("[x](javascript:alert(1)) [y](file:///etc/passwd)"),
              "x (javascript:alert(1)) y (file:///etc/passwd)");
    EXPECT_EQ(richText("![i](https://x.example/i.png)"), "<a href=\"https://x.example/i.png\">i</a>");
    EXPECT_EQ(richText("[a\"b](https://x.example/\"onmouseover=)"),
              "<a href=\"https://x.example/&quot;onmouseover=\">a&quot;b</a>");
}

}  // namespace
}  // namespace dorix
