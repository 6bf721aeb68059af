#include "service/ai/writing/Phrases.h"

#include "service/ai/writing/WritingWords.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace dorix::service {

namespace {

constexpr std::size_t mostLeadWords = 3;
constexpr std::size_t longestPhrase = 12;

bool isDigits(std::string_view word) { return !word.empty() && word.front() >= '0' && word.front() <= '9'; }

/// A capital where no sentence begins.
bool isName(const Tokens& tokens, std::size_t at) {
    const auto& token = tokens[at];
    if (token.text.empty() || beginsSentence(tokens, at) || words::alwaysCapital().contains(token.key))
        return false;
    const auto lead = static_cast<unsigned char>(token.text.front());
    const bool isAccented =
        token.text.size() > 1 && lead == 0xC3 && static_cast<unsigned char>(token.text[1]) < 0x9F;
    return (lead >= 'A' && lead <= 'Z') || isAccented;
}

std::optional<Phrase::Kind> kindOf(const Tokens& tokens, std::size_t at) {
    using enum Phrase::Kind;
    const auto& key = tokens[at].key;
    if (words::weekdays().contains(key)) return weekday;
    if (words::months().contains(key)) return month;
    if (key == "manana") return at > 0 && tokens[at - 1].key == "la" ? dayPart : relativeDay;
    if (words::relativeDays().contains(key)) return relativeDay;
    if (words::dayParts().contains(key)) return dayPart;
    if (words::units().contains(key)) return unit;
    if (isDigits(key) || words::numbers().contains(key)) return number;
    if (isName(tokens, at)) return name;
    return std::nullopt;
}

/// Whether the word goes on with a phrase of that kind, as in "tres y media" and "Ana Ruiz".
bool goesOn(const Tokens& tokens, Phrase::Kind kind, std::size_t at) {
    using enum Phrase::Kind;
    if (kind == number) return kindOf(tokens, at) == number || words::numberLinks().contains(tokens[at].key);
    return kind == name && kindOf(tokens, at) == name;
}

std::optional<Phrase> phraseAt(const Tokens& tokens, std::size_t begin, std::size_t end) {
    const auto leads = [&](std::size_t at) {
        return words::leadWords().contains(tokens[at].key) && !tokens[at].endsClause();
    };
    std::size_t head = begin;
    while (head < end && head - begin < mostLeadWords && leads(head)) ++head;
    if (head >= end) return std::nullopt;
    const auto kind = kindOf(tokens, head);
    if (!kind) return std::nullopt;
    Phrase phrase{.kind = *kind, .begin = begin, .head = head, .end = head + 1};
    const auto last = std::min(end, head + longestPhrase);
    while (phrase.end < last && !tokens[phrase.end - 1].endsClause() && goesOn(tokens, *kind, phrase.end))
        ++phrase.end;
    return phrase;
}

}  // namespace

std::vector<Phrase> phrasesIn(const Tokens& tokens, std::size_t begin, std::size_t end) {
    std::vector<Phrase> phrases;
    for (std::size_t at = begin; at < end;) {
        const auto phrase = phraseAt(tokens, at, end);
        if (phrase) phrases.push_back(*phrase);
        at = phrase ? phrase->end : at + 1;
    }
    return phrases;
}

std::vector<Phrase> phrasesFrom(const Tokens& tokens, std::size_t begin) {
    std::vector<Phrase> phrases;
    const auto end = std::min(tokens.size(), begin + longestPhrase);
    for (auto phrase = phraseAt(tokens, begin, end); phrase; phrase = phraseAt(tokens, phrase->end, end)) {
        phrases.push_back(*phrase);
        if (tokens[phrase->end - 1].endsClause()) break;
    }
    return phrases;
}

}  // namespace dorix::service
