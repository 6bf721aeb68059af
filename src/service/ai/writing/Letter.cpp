#include "service/ai/writing/Letter.h"

#include "service/ai/writing/Names.h"
#include "service/ai/writing/PhraseTable.h"
#include "service/ai/writing/WritingWords.h"

#include <algorithm>
#include <optional>

namespace dorix::service {

namespace {

const Phrases& farewells() {
    static const Phrases table(words::farewells());
    return table;
}

/// Where the greeting ends, with the name of whoever is greeted.
std::optional<std::size_t> greetingEnd(const Tokens& tokens) {
    const auto words = Phrases(words::greetings()).wordsAt(tokens, 0);
    if (words == 0) return std::nullopt;
    // "Hola, Ana," as well as "Hola Ana,".
    const bool pauses = tokens[words - 1].closing == ",";
    if (tokens[words - 1].endsClause() && !pauses) return words;
    const auto end = words + addresseeAt(tokens, words);
    return end > words || pauses ? std::optional(end) : std::nullopt;
}

/// Where a farewell begins that nothing follows but a name.
std::optional<std::size_t> farewellStart(const Tokens& tokens, std::size_t from) {
    const auto farthest = tokens.size() > from + 8 ? tokens.size() - 8 : from;
    for (auto at = farthest; at < tokens.size(); ++at) {
        const auto words = farewells().wordsAt(tokens, at);
        if (words == 0 || at == 0 || !tokens[at - 1].endsClause()) continue;
        const auto rest = tokens.begin() + static_cast<std::ptrdiff_t>(at + words);
        const bool isName = tokens.end() - rest <= 3 && std::all_of(rest, tokens.end(), isCapital);
        if (isName) return at;
    }
    return std::nullopt;
}

void endLine(Token& token, std::string_view mark) {
    while (token.closing.ends_with(',') || token.closing.ends_with('.') || token.closing.ends_with(';'))
        token.closing.pop_back();
    if (token.closing.empty()) token.closing = mark;
}

}  // namespace

void frameLetter(Tokens& tokens) {
    std::size_t body = 0;
    if (const auto end = greetingEnd(tokens); end && *end < tokens.size()) {
        endLine(tokens[*end - 1], ",");
        tokens[*end].gap = Gap::paragraph;
        body = *end;
    }
    const auto start = farewellStart(tokens, body);
    if (!start || *start == body) return;
    endLine(tokens[*start - 1], ".");
    tokens[*start].gap = Gap::paragraph;
    const auto name = *start + farewells().wordsAt(tokens, *start);
    if (name >= tokens.size()) return;
    endLine(tokens[name - 1], ",");
    tokens[name].gap = Gap::line;
    endLine(tokens.back(), "");
}

}  // namespace dorix::service
