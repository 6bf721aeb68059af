#include "assistant/AnswerText.h"

#include "base/text/Text.h"

#include <algorithm>
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

std::string inPlaceOf(std::string_view selected, std::string_view rewritten) {
    const auto inside = text::trim(selected);
    const bool isQuoted =
        std::ranges::any_of(wrappings, [&](const Quotes& quotes) { return isWrapped(inside, quotes); });
    const auto core = isQuoted ? std::string(text::trim(rewritten)) : withoutQuotes(rewritten);
    if (core.empty()) return "";
    const auto begin = selected.find(inside);
    std::string framed(selected.substr(0, begin));
    framed.append(core).append(selected.substr(begin + inside.size()));
    return framed;
}

std::string withoutMarks(std::string_view text) {
    return text::replaceAll(text::replaceAll(text, "**", ""), "`", "");
}

}  // namespace dorix
