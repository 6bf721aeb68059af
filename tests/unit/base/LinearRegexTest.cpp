#include "base/text/LinearRegex.h"
#include "base/text/Regex.h"

#include <gtest/gtest.h>

#include <array>
#include <span>
#include <string>
#include <string_view>

namespace dorix {
namespace {

bool matches(std::string_view pattern, std::string_view text) {
    return LinearRegex(std::span(&pattern, 1)).matches(LinearRegex::symbols(text));
}

/// All texts of the letters up to a length.
template <typename Visit>
void forAllTexts(std::span<const std::string_view> letters, std::size_t length, const Visit& visit,
                 const std::string& text = {}) {
    visit(text);
    if (length == 0) return;
    for (const auto letter : letters) forAllTexts(letters, length - 1, visit, text + std::string(letter));
}

TEST(LinearRegexTest, AgreesWithTheOtherEngineOnAllShortTexts) {
    // A letter, another, a blank, a hyphen, a letter beyond ASCII, a sign beyond, a combining mark, a joiner.
    static constexpr auto letters =
        std::to_array<std::string_view>({"a", "b", " ", "-", "я", "…", "\u20DD", "\u200D"});
    for (const std::string_view pattern : {"a",          "^a",          "a$",
                                           "^$",         "^(a|ab)$",    "(^a|b$)",
                                           "^a|b",       "a?b",         "^a*b+$",
                                           "(ab)+-",     "(a|b )*-$",   "a.b",
                                           "a.*-b",      R"(\ba)",      R"(a\b)",
                                           R"(\b)",      R"(\b\b-)",    R"(\ba\b.*\bb\b)",
                                           R"(^.\b.\b)", R"(-\b$)",     "[a-z-]+ [a-b]",
                                           "()",         "(|a)b",       "(a*)*b",
                                           "(a|b|)+-",   R"(^\b.*\b$)", "a(b?)+$",
                                           ".*",         "^.+a"}) {
        const Regex reference(pattern);
        const LinearRegex linear(std::span(&pattern, 1));
        forAllTexts(letters, 4, [&](const std::string& text) {
            ASSERT_EQ(linear.matches(LinearRegex::symbols(text)), reference.matches(text))
                << pattern << " in \"" << text << "\"";
        });
    }
}

TEST(LinearRegexTest, FindsAnyOfItsPatterns) {
    static constexpr auto patterns = std::to_array<std::string_view>({"^uno", "dos$", R"(\btres\b)"});
    const LinearRegex any(patterns);
    for (const auto text : {"unos", "los dos", "ya tres mas"}) EXPECT_TRUE(any.matches(text)) << text;
    for (const auto text : {"un uno", "dos veces", "estres", ""}) EXPECT_FALSE(any.matches(text)) << text;
    EXPECT_FALSE(LinearRegex({}).matches("a"));
}

TEST(LinearRegexTest, TakesOtherLettersForNoLetterOfAPattern) {
    EXPECT_FALSE(matches("ñ", "ñ"));
    EXPECT_TRUE(matches("a(ñ|n)o", "ano"));
    EXPECT_TRUE(matches("a.o", "año"));
    EXPECT_EQ(LinearRegex::symbols("a\xFFz").size(), 3U);
}

TEST(LinearRegexDeathTest, EndsTheProgramOnAPatternThatItCannotSearchFor) {
    for (const auto pattern : {"(a", "a)", "[a", "a{2}", R"(\d)", "[^a]", "(?i)a", "*a"}) {
        EXPECT_DEATH(matches(pattern, ""), "no linear regular expression") << pattern;
    }
}

TEST(LinearRegexTest, GrowsWithThePatternsNotWithTheTexts) {
    const std::string_view pattern = R"(\b(add|put)\b.*\b(to|on) (my |the )?calendar\b)";
    const LinearRegex regex(std::span(&pattern, 1));
    std::string text;
    for (int i = 0; i < 100'000; ++i) text += "add to my put on the calendars ";
    EXPECT_FALSE(regex.matches(text));
    const auto states = regex.stateCount();
    EXPECT_LT(states, 200U);
    text += "add";
    EXPECT_FALSE(regex.matches(text));
    EXPECT_LE(regex.stateCount(), states + 3);
}

}  // namespace
}  // namespace dorix
