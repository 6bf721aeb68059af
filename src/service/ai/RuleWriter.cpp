#include "service/ai/RuleWriter.h"

#include "base/text/Text.h"
#include "base/writing/Faithfulness.h"
#include "service/ai/writing/AskRule.h"
#include "service/ai/writing/Clauses.h"
#include "service/ai/writing/Corrections.h"
#include "service/ai/writing/Fillers.h"
#include "service/ai/writing/Letter.h"
#include "service/ai/writing/Lists.h"
#include "service/ai/writing/Names.h"
#include "service/ai/writing/Numbers.h"
#include "service/ai/writing/Relay.h"
#include "service/ai/writing/Sentences.h"
#include "service/ai/writing/SpokenCode.h"
#include "service/ai/writing/SpokenMarks.h"

namespace dorix::service {

namespace {

constexpr std::size_t titleWords = 6;
constexpr double leastFaithfulness = 0.3;

Tokens rewritten(Tokens tokens, const WriteRequest& request, Spoken spoken) {
    const bool beginsWithCapital = !tokens.empty() && isCapital(tokens.front());
    const auto manner = request.tone == "tecnico" ? Register::technical : Register::prose;
    tokens = withoutHesitations(std::move(tokens), spoken);
    if (manner == Register::prose) capitaliseNames(tokens, spoken);
    if (manner == Register::technical) tokens = withSpokenCode(tokens, spoken);
    if (manner == Register::technical && isCommandLine(tokens)) return tokens;
    tokens = withoutAsides(withoutCorrected(tokens), spoken);
    tokens = withLists(withSpokenMarks(withNumbers(tokens, spoken, manner)));
    const bool isLetter = request.tone == "profesional";
    if (manner == Register::prose) {
        breakSentences(tokens, spoken);
        relay(tokens, spoken, isLetter ? Gap::paragraph : Gap::blank);
    }
    if (isLetter) frameLetter(tokens);
    punctuate(tokens, manner, spoken);
    if (beginsWithCapital) capitaliseStart(tokens);  // which a filler had, also where case is kept
    return tokens;
}

/// The first words of the line that tells what the text is about, which its greeting does not.
std::string titleOf(const Tokens& tokens) {
    Tokens first;
    for (const auto& token : tokens) {
        if (token.gap == Gap::paragraph && first.size() < titleWords / 2) first.clear();
        if (first.size() == titleWords || (token.gap != Gap::blank && !first.empty())) break;
        first.push_back(token);
        first.back().marker.clear();
    }
    return text::capitalizeFirst(text::trimAny(textOf(first), ".,;:"));
}

/// What is said in a language that has no rules here, with nothing but a capital.
WriteAnswer asSaid(std::string_view transcript) {
    return {.texto = text::capitalizeFirst(text::trim(transcript))};
}

}  // namespace

WriteAnswer writeByRules(const WriteRequest& request) {
    const auto said = tokensOf(request.transcript);
    if (request.allowAsk && isForAssistant(request, said)) return {.accion = std::string(WriteAnswer::ask)};
    const auto spoken = spokenIn(request.transcript);
    if (spoken == Spoken{}) return asSaid(request.transcript);
    const auto tokens = rewritten(said, request, spoken);
    const auto text = textOf(tokens);
    if (faithfulnessScore(text, request.transcript) >= leastFaithfulness && !text.empty())
        return {.titulo = titleOf(tokens), .texto = text};
    return asSaid(request.transcript);
}

}  // namespace dorix::service
