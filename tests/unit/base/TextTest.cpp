#include "base/Uuid.h"
#include "base/text/Line.h"
#include "base/text/Regex.h"
#include "base/text/Text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace dorix {
namespace {

using testing::ElementsAre;

// One flag, one family, one letter with a combining accent: four bytes and more, each one character.
constexpr std::string_view flag = "🇪🇸";
constexpr std::string_view family = "👨‍👩‍👧";
constexpr std::string_view accented = "e\u0301";

TEST(TextTest, CountsAndCutsCharactersAsReadersSeeThem) {
    const std::string text = std::string(flag) + "a" + std::string(family) + std::string(accented) + "ñ";
    EXPECT_EQ(text::length(text), 5U);
    EXPECT_EQ(text::length("a\r\nb"), 3U);
    EXPECT_EQ(text::prefix(text, 3), std::string(flag) + "a" + std::string(family));
    EXPECT_EQ(text::prefix(accented, 1), accented) << "an accent that follows the last letter belongs to it";
    EXPECT_EQ(text::prefix("abc", 2), "ab");
    EXPECT_EQ(text::prefix("abc", 9), "abc");
    EXPECT_EQ(text::lastCharacter("hola…"), "…");
    EXPECT_EQ(text::lastCharacter(""), "");
}

TEST(TextTest, TrimsWhatEachTrimIsFor) {
    EXPECT_EQ(text::trim(" \t\r\n\u00A0\u2003 hola \u2028\v"), "hola");
    EXPECT_EQ(text::trim("\n \n"), "");
    EXPECT_EQ(text::trimBlanks(" \u00A0\thola\n "), "hola\n");
    EXPECT_EQ(text::trimAny(";:hola, tal.,", ".,;:"), "hola, tal");
    EXPECT_EQ(text::trimAny("...", "."), "");
}

TEST(TextTest, SplitsIntoWordsPiecesAndLetters) {
    EXPECT_THAT(text::words("  uno\tdos\u00A0tres \n"), ElementsAre("uno", "dos", "tres"));
    EXPECT_THAT(text::split("a,,b,", ','), ElementsAre("a", "", "b", ""));
    EXPECT_THAT(text::letterRuns("año2000, ¿qué?"), ElementsAre("año", "qué"));
    EXPECT_EQ(text::join({"a", "b"}, ", "), "a, b");
}

TEST(TextTest, FoldsCaseAndDiacriticsAway) {
    EXPECT_EQ(text::fold("CANCIÓN Ñandú"), "cancion nandu");
    EXPECT_EQ(text::fold("Straße"), "strasse");
    EXPECT_EQ(text::fold(accented), "e");
    EXPECT_EQ(text::fold("ÁRBOL 👋🏽 Ёлка, ÉL 한국 Ñ"), "arbol 👋🏽 елка, el 한국 n");
    EXPECT_EQ(text::lowercase("ÁRBOL X"), "árbol x");
    EXPECT_EQ(text::capitalizeFirst("ñandú"), "Ñandú");
    EXPECT_EQ(text::capitalizeFirst(""), "");
    EXPECT_EQ(text::replaceAll("**a** **", "**", ""), "a ");
}

TEST(UuidTest, IsARandomUuid) {
    const Regex version4("^[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}$");
    EXPECT_TRUE(version4.matches(makeUuid()));
    EXPECT_NE(makeUuid(), makeUuid());
}

TEST(TextTest, AnythingBecomesOneLine) {
    EXPECT_EQ(text::asLine("reunión 👩‍👩‍👧 ya"), "reunión 👩‍👩‍👧 ya");
    EXPECT_EQ(text::asLine("rm -rf x\n\x1b[A\r\t\u2028\u0085y\x7f"), "rm -rf x  [A    y ");
    EXPECT_EQ(text::asLine("a\xff\xc3"), "a\uFFFD\uFFFD");
}

}  // namespace
}  // namespace dorix
