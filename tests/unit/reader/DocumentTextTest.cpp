#include "reader/text/OfficeText.h"
#include "reader/text/PlainText.h"
#include "reader/text/RtfText.h"
#include "reading/Messages.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace dorix {
namespace {

using namespace reader;

constexpr std::size_t plenty = 1UZ << 20U;

std::string repeated(std::string_view piece, std::size_t times) {
    std::string all;
    for (std::size_t i = 0; i < times; ++i) all += piece;
    return all;
}

std::string rtf(std::string_view body) {
    return rtfText("{\\rtf1\\ansi\\ansicpg1252\\deff0 " + std::string(body) + "}", plenty).value_or("none");
}

TEST(RtfTextTest, LettersComeFromCodePagesAndUnicode) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {R"(ma\'f1ana \'80 a\~b)", "mañana € a\u00A0b"},
        {R"(\u241?\u-10179?\u-8704? \u8364\'80!)", "ñ😀 €!"},
        {R"({\uc2\u8212\'97x}y\uc0\u241 z)", "—yñz"},
        {R"({\fonttbl{\f0\fcharset0 Arial;}{\f1\fcharset204 Arial;}{\f2\fcharset128 Gothic;}}\f1\'cf\'f0{\f0\'e9}{\f2\'93\'fa})",
         "Прé日"},
        {R"(\{\\\} \emdash \ldblquote x\rdblquote)", "{\\} —“x”"},
        {"one\\\ntwo\r\nthree", "one\ntwothree"},
        {R"(\u55357 ?\u65 ?\u56832 ?)", "A\uFFFD"},
    };
    for (const auto& [body, text] : cases) EXPECT_EQ(rtf(body), text) << body;
    EXPECT_EQ(rtfText("{\\rtf1\\ansi\\ansicpg1251 \\'cf}", plenty), "П");
}

TEST(RtfTextTest, WhatIsForProgramsIsLeftOutAndNotesFollow) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {R"({\info{\title x}}{\*\generator x;}{\stylesheet{\s0 Normal;}}{\pict\bin3 }}}}a)", "a"},
        {R"({\field{\*\fldinst HYPERLINK "x"}{\fldrslt link}} b)", "link b"},
        {R"(a{\footnote \chftn one}b{\*\footnote two\par}\par)", "ab\none\ntwo\n"},
        {R"({\upr{a?}{\*\ud{a\u241?}}}{\deleted gone}\deleted x\deleted0 b)", "añb"},
        {R"(\trowd a\cell b\cell\row{\listtext 1.\tab}c\par)", "a\nb\nc\n"},
        {R"({\shp{\*\shpinst{\sp{\sn n}{\sv v}}{\shptxt box\par}}{\shprslt old}}a)", "box\na"},
    };
    for (const auto& [body, text] : cases) EXPECT_EQ(rtf(body), text) << body;
}

TEST(RtfTextTest, DamageCostsNoMoreThanItHasTo) {
    EXPECT_EQ(rtfText("{\\rtf1 a\\'", plenty), "a");
    EXPECT_EQ(rtfText("{\\rtf1 a}}}}b\\'zz\\u", plenty), "ab");
    EXPECT_EQ(rtfText("{\\rtf1 \\bin99999999999 a", plenty), "a");
    EXPECT_EQ(rtfText("{\\rtf1 \\uc-3\\u5-\\bin2147483647 a", plenty), "\x05-");
    EXPECT_EQ(rtfText("hello", plenty), std::nullopt);
    EXPECT_EQ(rtf(repeated("{", 90'000) + "x"), "x");
    EXPECT_EQ(rtfText("{\\rtf1 " + repeated("{", 200'000) + "x", plenty), std::nullopt);
    EXPECT_LT(rtfText("{\\rtf1 " + repeated("word \\par ", 10'000), 1000)->size(), 1100U);
}

TEST(OfficeTextTest, DocxIsReadInOrder) {
    const std::string xml =
        R"(<?xml version="1.0"?><!DOCTYPE d [<!ENTITY lol "ha">]><w:document><w:body>)"
        R"(<w:p><w:pPr><w:tabs><w:tab/></w:tabs></w:pPr><w:r><w:t>A&amp;&#241;</w:t></w:r>)"
        R"(<w:r><w:t xml:space="preserve"> </w:t><w:tab/><w:t>&lol;</w:t><w:br/></w:r>)"
        R"(<w:del><w:r><w:delText>gone</w:delText><w:t>gone</w:t></w:r></w:del>)"
        R"(<w:r><w:instrText>PAGE</w:instrText></w:r><w:ins><w:r><w:t>new</w:t></w:r></w:ins></w:p> )"
        R"(<w:tbl><w:tr><w:tc><w:p><w:r><w:t>c1</w:t></w:r></w:p></w:tc>)"
        R"(<w:tc><w:p><w:r><w:t>c2</w:t></w:r></w:p></w:tc></w:tr></w:tbl>)"
        R"(<w:p><w:r><w:t>x</w:t><mc:AlternateContent><mc:Choice><w:txbxContent><w:p><w:r><w:t>box</w:t></w:r>)"
        R"(</w:p></w:txbxContent></mc:Choice><mc:Fallback><w:p><w:r><w:t>box</w:t></w:r></w:p></mc:Fallback>)"
        R"(</mc:AlternateContent></w:r></w:p></w:body></w:document>)";
    EXPECT_EQ(docxText(xml, plenty), "A&ñ \t&lol;\nnew\nc1\nc2\nx\nbox\n\n");
    EXPECT_EQ(
        docxText(R"(<w:footnotes><w:footnote w:type="separator"><w:p/></w:footnote><w:footnote><w:p><w:r>)"
                 R"(<w:t>note</w:t></w:r></w:p></w:footnote></w:footnotes>)",
                 plenty),
        "note\n");
}

TEST(OfficeTextTest, OdtIsReadInOrder) {
    const std::string xml =
        R"(<office:document-content><office:body><office:text> <text:tracked-changes><text:changed-region>)"
        R"(<text:p>gone</text:p></text:changed-region></text:tracked-changes><text:h>T</text:h>)"
        "<text:p>one\n  <text:span>two</text:span> <text:span>three</text:span><text:s text:c=\"2\"/>x"
        R"(<text:note><text:note-citation>1</text:note-citation><text:note-body><text:p>note</text:p>)"
        R"(</text:note-body></text:note><office:annotation><text:p>said</text:p></office:annotation>)"
        R"(<text:line-break/>y<text:tab/>z<draw:frame><draw:text-box><text:p>box</text:p></draw:text-box>)"
        R"(</draw:frame></text:p></office:text></office:body></office:document-content>)";
    EXPECT_EQ(odtText(xml, plenty), "T\none two three  x\ny\tz\nbox\n\nnote\n");
}

TEST(OfficeTextTest, NeitherDepthNorDamageBringsItDown) {
    const std::size_t deep = 100'000;
    const auto nested = [](const std::string& name, std::size_t times, const std::string& inside) {
        return repeated("<" + name + ">", times) + inside + repeated("</" + name + ">", times);
    };
    EXPECT_EQ(docxText(nested("w:p", deep, "<w:t>x</w:t>"), 2 * deep), "x" + repeated("\n", deep));
    EXPECT_EQ(odtText("<a><text:p>" + nested("text:span", deep, "x") + "</text:p></a>", plenty), "x\n");
    for (const auto* broken : {"", "x", "<w:p>", "<w:p><w:t>x</w:p>", "<!DOCTYPE"}) {
        EXPECT_EQ(docxText(broken, plenty).value_or(""), "") << broken;
        EXPECT_EQ(odtText(broken, plenty).value_or(""), "") << broken;
    }
}

TEST(PlainTextTest, ItIsUtf8OrElseLatin1AndCutByCharacters) {
    EXPECT_EQ(plainText("mañana"), "mañana");
    EXPECT_EQ(plainText("ma\xF1"
                        "ana \x80"),
              "mañana \u0080");
    using namespace std::string_literals;
    EXPECT_EQ(finishedText("a\0b\0"s, 10), "ab");
    EXPECT_EQ(finishedText(" \n\t\0 \u00A0"s, 10), std::nullopt);
    EXPECT_EQ(finishedText("\0 e\u0301\u0301xy"s, 3), " e\u0301\u0301x");
    EXPECT_EQ(finishedText("a\xFF", 10), "a\uFFFD");
    EXPECT_EQ(finishedText("abc", 0), "");
}

TEST(ReadingMessagesTest, OrdersAndAnswersArriveAsTheyWereSent) {
    using namespace std::string_literals;
    const ReadOrder order{
        .file = "/a\n\xFF/b.pdf"s, .kind = DocumentKind::bundle, .limit = 400'000, .isIdle = true};
    const ReadAnswer answer{.outcome = ReadAnswer::Outcome::text, .words = "x\0y"s};
    MessageReader reader(100);
    std::vector<std::string> bodies;
    for (const char byte : encoded(order) + encoded(answer)) {
        reader.take({&byte, 1});
        if (auto body = reader.next()) bodies.push_back(*std::move(body));
    }
    ASSERT_EQ(bodies.size(), 2U);
    EXPECT_EQ(readOrderIn(bodies[0]), order);
    EXPECT_EQ(readAnswerIn(bodies[1]), answer);
    EXPECT_EQ(readOrderIn("\x09"s + bodies[0].substr(1)), std::nullopt);
    EXPECT_EQ(readAnswerIn(""), std::nullopt);
    reader.take("\xFF\xFF\xFF\xFFzzz");
    EXPECT_EQ(reader.next(), std::nullopt);
    EXPECT_TRUE(reader.isBroken());
}

}  // namespace
}  // namespace dorix
