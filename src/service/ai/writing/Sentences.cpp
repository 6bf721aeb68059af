#include "service/ai/writing/Sentences.h"

#include "base/text/Text.h"
#include "service/ai/writing/PhraseTable.h"
#include "service/ai/writing/WritingWords.h"

#include <algorithm>
#include <string>
#include <vector>

namespace dorix::service {

namespace {

constexpr std::size_t leastWordsForPeriod = 3;
constexpr std::size_t leastWordsForTechnicalPeriod = 7;
constexpr std::size_t longestQuestion = 15;  // words, where nobody said that it is one

/// A sentence: the words from `begin` up to `end`.
struct Range {
    std::size_t begin = 0;
    std::size_t end = 0;
    std::size_t words() const { return end - begin; }
};

bool endsSentence(const Tokens& tokens, std::size_t at) {
    if (at + 1 == tokens.size() || tokens[at + 1].gap != Gap::blank) return true;
    return tokens[at].endsSentence() && !isAbbreviation(tokens[at]);
}

Range sentenceAt(const Tokens& tokens, std::size_t begin) {
    std::size_t last = begin;
    while (!endsSentence(tokens, last)) ++last;
    return {.begin = begin, .end = last + 1};
}

/// The opening of a question, as it is spelled and as it is looked up.
struct Opening {
    std::vector<std::string_view> words;
    std::string phrase;
};

const std::vector<Opening>& spanishOpenings() {
    static const std::vector<Opening> openings = [] {
        std::vector<Opening> rows;
        for (const auto phrase : words::spanishQuestions())
            rows.push_back({.words = text::words(phrase), .phrase = text::fold(phrase)});
        return rows;
    }();
    return openings;
}

/// Accents count: "qué" asks, and "que" does not.
bool opensSpanishQuestion(const Tokens& tokens, std::size_t at) {
    static const PhraseTable<Opening> table(spanishOpenings());
    const auto* opening = table.longestAt(tokens, at);
    if (opening == nullptr) return false;
    const auto isSpelled = [&](const auto word) { return text::lowercase(tokens[at++].text) == word; };
    return std::ranges::all_of(opening->words, isSpelled);
}

bool opensEnglishQuestion(const Tokens& tokens, std::size_t at) {
    static const Phrases table(words::englishQuestions());
    return table.longestAt(tokens, at) != nullptr;
}

/// Where a question begins within its sentence: behind "Hola, Ana," and the like.
std::size_t questionStart(const Tokens& tokens, Range sentence) {
    for (std::size_t at = sentence.begin; at < sentence.end; ++at) {
        const bool isClause = at == sentence.begin || tokens[at - 1].closing == ",";
        if (isClause && opensSpanishQuestion(tokens, at)) return at;
    }
    return sentence.begin;
}

bool hasInside(const Tokens& tokens, Range range, std::string_view mark) {
    return std::any_of(tokens.begin() + static_cast<std::ptrdiff_t>(range.begin),
                       tokens.begin() + static_cast<std::ptrdiff_t>(range.end),
                       [&](const Token& token) { return token.opening.find(mark) != std::string::npos; });
}

void endWith(Token& token, std::string_view mark) {
    while (token.closing.ends_with(',') || token.closing.ends_with('.')) token.closing.pop_back();
    token.closing += mark;
}

/// A Spanish text may hold a question in English.
bool hasEnglishWords(const Tokens& tokens, Range sentence) {
    static const WordSet english(
        {"the", "is", "are", "do", "does", "did", "you", "can", "will", "what", "how", "of"});
    return std::any_of(tokens.begin() + static_cast<std::ptrdiff_t>(sentence.begin),
                       tokens.begin() + static_cast<std::ptrdiff_t>(sentence.end),
                       [&](const Token& token) { return english.contains(token.key); });
}

/// Puts the marks of a question where it was said as one, and says whether it was.
bool markQuestion(Tokens& tokens, Range sentence, bool isSpanishText) {
    auto& last = tokens[sentence.end - 1];
    const auto start = questionStart(tokens, sentence);
    const bool opensSpanish = opensSpanishQuestion(tokens, start);
    if (last.closing.find('?') == std::string::npos) {
        const bool isSaid = opensSpanish || opensEnglishQuestion(tokens, sentence.begin);
        const bool isOpen = last.closing.empty() || last.closing == "." || last.closing == ",";
        const bool isShort = sentence.words() > 1 && sentence.words() <= longestQuestion;
        if (!isSaid || !isOpen || !isShort) return false;
        endWith(last, "?");
    }
    const bool isSpanish = opensSpanish || (isSpanishText && !hasEnglishWords(tokens, sentence));
    if (isSpanish && !hasInside(tokens, sentence, "¿")) tokens[start].opening += "¿";
    return true;
}

/// Names of files, functions and commands keep their case.
bool isCode(std::string_view word) {
    return word.find_first_of("_/\\.:=<>(){}#$@0123456789") != std::string::npos;
}

void capitalise(Token& token) {
    if (!isCode(token.text)) token.text = text::capitalizeFirst(token.text);
}

/// Whether the last line is the name below a letter.
bool isSigned(const Tokens& tokens) {
    const auto line = std::ranges::find_if(tokens.rbegin(), tokens.rend(),
                                           [](const Token& token) { return token.gap != Gap::blank; });
    return line != tokens.rend() && line + 1 != tokens.rend() && line->gap == Gap::line &&
           (line + 1)->closing == ",";
}

void endText(Tokens& tokens, std::size_t leastWords) {
    auto& last = tokens.back();
    const bool isItem = std::ranges::any_of(tokens, [](const auto& token) { return !token.marker.empty(); });
    if (last.closing.ends_with(',')) last.closing.pop_back();
    const bool isOpen =
        last.closing.empty() || last.closing == "\"" || last.closing == "»" || last.closing == ")";
    if (isOpen && !isItem && !isSigned(tokens) && tokens.size() >= leastWords) last.closing += '.';
}

}  // namespace

void capitaliseStart(Tokens& tokens) {
    if (!tokens.empty()) capitalise(tokens.front());
}

void punctuate(Tokens& tokens, Register manner, Spoken spoken) {
    if (tokens.empty()) return;
    const bool isProse = manner == Register::prose;
    for (std::size_t at = 0; at < tokens.size();) {
        const auto sentence = sentenceAt(tokens, at);
        // A question's first word is no name of a program.
        const bool asks = markQuestion(tokens, sentence, spoken.spanish && !spoken.english);
        if (isProse || asks) capitalise(tokens[at]);
        for (auto word = at; word < sentence.end; ++word) {
            if (isProse && words::alwaysCapital().contains(tokens[word].key)) capitalise(tokens[word]);
        }
        at = sentence.end;
    }
    endText(tokens, isProse ? leastWordsForPeriod : leastWordsForTechnicalPeriod);
}

}  // namespace dorix::service
