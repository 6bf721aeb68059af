#include "writing/BasicPolisher.h"

#include "base/text/Regex.h"
#include "base/text/Text.h"
#include "writing/EnglishDates.h"

#include <array>
#include <utility>

namespace dorix {

namespace {

constexpr std::size_t leastWordsForPeriod = 3;

std::string withoutFillers(std::string text) {
    using enum Regex::Case;
    static const std::array<Regex, 5> fillers{
        Regex(R"(\beh\b[,.]?\s*)", ignored), Regex(R"(\bem\b[,.]?\s*)", ignored),
        Regex(R"(\behm\b[,.]?\s*)", ignored), Regex(R"(\bmmm\b[,.]?\s*)", ignored),
        Regex(R"(\beste\b[,.]?\s*)", ignored)};
    static const Regex closingVale(R"([,\s]*¿?\bvale\??[.?!]*$)", ignored);
    static const Regex opening(R"(^(y|bueno|pues)\b[,]?\s+)", ignored);
    for (const auto& filler : fillers) text = filler.replaceAll(text, "");
    return opening.replaceAll(closingVale.replaceAll(text, ""), "");
}

bool wantsPeriod(std::string_view text) {
    const auto last = text::lastCharacter(text);
    if (text.empty() || last == "." || last == "!" || last == "?" || last == "…") return false;
    return wordCount(text) >= leastWordsForPeriod;
}

}  // namespace

Task<PolishResult> BasicPolisher::polish(PolishRequest request) { co_return polished(request.transcript); }

PolishResult BasicPolisher::polished(std::string_view transcript) const {
    static const Regex whiteSpace(R"(\s+)");
    std::string text = withoutFillers(std::string(text::trim(transcript)));
    text = whiteSpace.replaceAll(text, " ");
    text = text::capitalizeFirst(text::trimBlanks(withEnglishDates(std::move(text))));
    if (wantsPeriod(text)) text += '.';
    return {.title = titleFrom(text), .text = text, .engine = name_};
}

}  // namespace dorix
