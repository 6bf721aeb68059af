#include "assistant/AnswerText.h"

#include "base/text/Text.h"

#include <array>
#include <cstddef>

namespace dorix {

namespace {

struct Quotes {
    std::string_view opening;
    std::string_view closing;
};

constexpr std::array wrappings{Quotes{"«", "»"}, Quotes{"\"", "\""}, Quotes{"“", "”"}};
constexpr std::size_t shortestWrapped = 3;  // characters: with nothing inside, the quotes are the text

bool isWrapped(std::string_view text, const Quotes& in) {
    return text::prefix(text, 1) == in.opening && text::lastCharacter(text) == in.closing &&
           text::length(text) >= shortestWrapped;
}

}  // namespace

std::string withoutQuotes(std::string_view text) {
    text = text::trim(text);
    for (const auto& quotes : wrappings) {
        if (!isWrapped(text, quotes)) continue;
        text.remove_prefix(quotes.opening.size());
        text.remove_suffix(quotes.closing.size());
    }
    return std::string(text);
}

std::string withoutMarks(std::string_view text) {
    return text::replaceAll(text::replaceAll(text, "**", ""), "`", "");
}

}  // namespace dorix
