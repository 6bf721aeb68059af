#include "service/ai/writing/Names.h"

#include "base/text/Case.h"
#include "base/text/Text.h"
#include "service/ai/writing/ClauseWords.h"
#include "service/ai/writing/NameTables.h"
#include "service/ai/writing/PhraseTable.h"
#include "service/ai/writing/WritingWords.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace dorix::service {

namespace {

constexpr std::size_t mostNameWords = 4;

void capitalise(Token& token) { token.text = text::capitalizeFirst(token.text); }

std::string_view keyAt(const Tokens& tokens, std::size_t at) {
    return at < tokens.size() ? std::string_view(tokens[at].key) : std::string_view();
}

bool isTitle(const Tokens& tokens, std::size_t at) { return names::titles().contains(keyAt(tokens, at)); }

bool isDay(std::string_view key) {
    static const WordSet ordinals({"first", "second", "third", "fourth", "fifth", "sixth", "seventh",
                                   "eighth", "ninth", "tenth", "eleventh", "twelfth"});
    if (key.empty()) return false;
    return (key.front() >= '0' && key.front() <= '9') || words::numbers().contains(key) ||
           ordinals.contains(key) || (key.ends_with("teenth") || key.ends_with("tieth"));
}

/// "March" and "may" are also verbs: a day beside them tells, or what leads to a time.
bool isMonthByContext(const Tokens& tokens, std::size_t at) {
    const auto key = keyAt(tokens, at);
    if (key != "march" && key != "may") return false;
    static const WordSet before({"in", "of", "since", "until", "till"});
    static const WordSet beforeMarch({"by", "last", "next", "early", "late", "dated", "mid"});
    const auto last = at == 0 ? std::string_view() : keyAt(tokens, at - 1);
    if (before.contains(last) || (key == "march" && beforeMarch.contains(last))) return true;
    return isDay(keyAt(tokens, at + 1)) && !words::subjects().contains(last);
}

/// Days and months in the plural, "on Fridays".
bool isPluralDay(std::string_view key) {
    if (!key.ends_with('s')) return false;
    key.remove_suffix(1);
    return key.ends_with("day") && words::weekdays().contains(key);
}

bool isEnglishName(const Tokens& tokens, std::size_t at) {
    const auto key = keyAt(tokens, at);
    return words::alwaysCapital().contains(key) || names::englishPeoples().contains(key) ||
           isPluralDay(key) || isMonthByContext(tokens, at) || names::englishPlaces().contains(key) ||
           names::englishGiven().contains(key);
}

bool isSpanishName(const Tokens& tokens, std::size_t at) {
    const auto key = keyAt(tokens, at);
    return names::spanishPlaces().contains(key) || names::spanishGiven().contains(key);
}

/// A name of the same spelling as a noun stands behind no article: "los lucas" are no people.
bool isNamed(const Tokens& tokens, std::size_t at, Spoken spoken) {
    static const WordSet articles({"el", "la", "los", "las", "un", "una", "unos", "unas", "esa", "esta"});
    if (spoken.english && isEnglishName(tokens, at)) return true;
    return spoken.spanish && isSpanishName(tokens, at) && (at == 0 || !articles.contains(tokens[at - 1].key));
}

bool isPerson(const Token& token, Spoken spoken) {
    return (spoken.spanish && names::spanishGiven().contains(token.key)) ||
           (spoken.english && names::englishGiven().contains(token.key));
}

/// A family name behind a given name, and any word behind the title of whoever is greeted.
void capitaliseFamily(Tokens& tokens, std::size_t at) {
    if (at < tokens.size() && !tokens[at - 1].endsClause() && names::family().contains(tokens[at].key))
        capitalise(tokens[at]);
}

void capitaliseGreeted(Tokens& tokens) {
    static const Phrases greetings(words::greetings());
    const auto at = greetings.wordsAt(tokens, 0);
    if (at == 0 || at + 1 >= tokens.size() || !isTitle(tokens, at) || tokens[at].closing.find(',') == 0)
        return;
    const auto& key = tokens[at + 1].key;
    if (!words::leadWords().contains(key) && !names::offices().contains(key)) capitalise(tokens[at + 1]);
}

/// "Me llamo Rosa": a name, whatever else the word means.
void capitaliseOwnName(Tokens& tokens) {
    static constexpr auto rows = std::to_array<std::string_view>({"me llamo", "mi nombre es", "my name is"});
    static const Phrases openings(rows);
    for (std::size_t at = 0; at + 2 < tokens.size(); ++at) {
        const auto name = at + openings.wordsAt(tokens, at);
        if (name == at || name >= tokens.size() || tokens[name - 1].endsClause()) continue;
        if (words::determiners().contains(tokens[name].key) || words::leadWords().contains(tokens[name].key))
            continue;
        capitalise(tokens[name]);
        capitaliseFamily(tokens, name + 1);
    }
}

/// Before a name: "Mr. Whitfield" keeps its capital wherever it stands.
bool isEnglishTitle(std::string_view key) { return key == "mr" || key == "mrs" || key == "dr"; }

}  // namespace

bool isCapital(const Token& token) {
    const auto& text = token.text;
    if (text.empty()) return false;
    const auto lead = static_cast<unsigned char>(text.front());
    if (lead != 0xC3) return lead >= 'A' && lead <= 'Z';
    return text.size() > 1 && static_cast<unsigned char>(text[1]) < 0x9F;  // "Á" and not "á"
}

void capitaliseNames(Tokens& tokens, Spoken spoken) {
    static const Phrases places(names::longPlaces());
    for (std::size_t at = 0; at < tokens.size(); ++at) {
        auto& token = tokens[at];
        for (auto end = at + places.wordsAt(tokens, at), word = at; word < end; ++word)
            capitalise(tokens[word]);
        if (isNamed(tokens, at, spoken)) capitalise(token);
        if (names::abbreviations().contains(token.key)) token.text = text::uppercase(token.text);
        if (spoken.english && token.key == "apis") token.text = "APIs";
        if (isPerson(token, spoken)) capitaliseFamily(tokens, at + 1);
        if (spoken.english && isEnglishTitle(token.key) && at + 1 < tokens.size()) {
            capitalise(token);
            capitalise(tokens[at + 1]);
        }
    }
    capitaliseGreeted(tokens);
    capitaliseOwnName(tokens);
}

std::size_t addresseeAt(const Tokens& tokens, std::size_t at) {
    if (at >= tokens.size()) return 0;
    if (names::addressees().contains(tokens[at].key)) return 1;
    if (isPhraseAt(tokens, at, "a todos") || isPhraseAt(tokens, at, "a todas")) return 2;
    auto end = at + (isTitle(tokens, at) ? 1 : 0);
    if (end > at && names::offices().contains(keyAt(tokens, end))) return 2;
    const auto limit = std::min(tokens.size(), at + mostNameWords);
    while (end < limit && isCapital(tokens[end]) && !words::subjects().contains(tokens[end].key)) {
        ++end;
        if (tokens[end - 1].endsClause() && !isAbbreviation(tokens[end - 1])) break;
    }
    return end - at;
}

}  // namespace dorix::service
