#include "oracles/UtteranceGenerator.h"

#include "base/text/Regex.h"
#include "base/text/Text.h"
#include "routing/IntentPatterns.h"
#include "routing/IntentWords.h"

#include <array>
#include <set>

namespace dorix {

namespace {

/// Phrases are patterns of letters alone.
const std::vector<std::string_view>& allPatterns() {
    using namespace intentpatterns;
    using namespace intentwords;
    static const std::vector<std::string_view> all = [] {
        std::vector<std::string_view> rows;
        for (const auto some :
             {teach(), search(), action(), meetingStart(), meetingStop(), teachDone(), fillerPrefixes(),
              recapPhrases(), selectionPhrases(), transformPhrases(), screenPhrases()}) {
            rows.insert(rows.end(), some.begin(), some.end());
        }
        return rows;
    }();
    return all;
}

// What speech engines and odd keyboards put between and into words.
constexpr auto oddities = std::to_array<std::string_view>({
    " ",      ".",      ",",  "?",    "¿",        "¡",      "«",      "»",      "’",      "'",      "-",
    "/",      "#",      "_",  "7",    "Á",        "ñ",      "ü",      "ß",      "ø",      "Ω",      "я",
    "日",     "한",     "ᄒ", "ᅡ",    "\u0301",   "\u0308", "\u20DD", "\u200D", "\u00AD", "\u00A0", "\u2028",
    "\u037E", "\u0130", "ﬁ",  "\xFF", "\xE2\x80", "\t",     "\n",     "\u0903", "\u0345", "X",      "e",
});

}  // namespace

const std::vector<std::string>& intentVocabulary() {
    static const std::vector<std::string> vocabulary = [] {
        const Regex others(R"(\\.|[^a-z])");  // also the letter that names a class of characters
        std::set<std::string> words;
        for (const auto pattern : allPatterns()) {
            const auto letters = others.replaceAll(pattern, " ");
            for (const auto word : text::words(letters)) words.emplace(word);
        }
        return std::vector<std::string>(words.begin(), words.end());
    }();
    return vocabulary;
}

std::string UtteranceGenerator::next() {
    std::string text;
    if (happens(30)) text += pick(intentwords::fillerPrefixes());
    if (happens(15)) text += words(1 + random_() % 3) + " ";
    std::size_t start = 0;
    text += choice(pick(allPatterns()), start);
    if (happens(60)) text += " " + words(1 + random_() % 10);
    while (happens(40)) mutate(text);
    return text;
}

std::string UtteranceGenerator::words(std::size_t count) {
    std::string text = pick(intentVocabulary());
    for (std::size_t i = 1; i < count; ++i) text += " " + pick(intentVocabulary());
    return text;
}

void UtteranceGenerator::mutate(std::string& text) {
    const auto at = random_() % (text.size() + 1);
    const auto way = random_() % 4;
    if (way == 0) text.insert(at, " " + pick(intentVocabulary()) + " ");
    if (way == 1) text.erase(at, 1 + random_() % 4);
    if (way >= 2) text.insert(at, pick(oddities));
    if (way == 3) text.insert(0, pick(oddities));
}

/// A text that the alternatives from `at` on match, conditions apart: each way is taken as likely as the
/// next.
std::string UtteranceGenerator::choice(std::string_view pattern, std::size_t& at) {
    std::vector<std::string> ways{sequence(pattern, at)};
    while (at < pattern.size() && pattern[at] == '|') ways.push_back(sequence(pattern, ++at));
    return pick(ways);
}

std::string UtteranceGenerator::sequence(std::string_view pattern, std::size_t& at) {
    std::string text;
    while (at < pattern.size() && pattern[at] != '|' && pattern[at] != ')') {
        const std::size_t start = at;
        std::string piece = single(pattern, at);
        const char repetition = at < pattern.size() ? pattern[at] : ' ';
        if (repetition == '?' || repetition == '*' || repetition == '+') ++at;
        if (repetition == '?' && happens(50)) continue;
        while ((repetition == '*' || repetition == '+') && happens(60)) {
            std::size_t again = start;
            piece += single(pattern, again);
        }
        text += piece;
    }
    return text;
}

std::string UtteranceGenerator::single(std::string_view pattern, std::size_t& at) {
    static constexpr std::string_view classSamples = "az09_-q";
    const char c = pattern[at++];
    if (c == '\\') ++at;
    if (c == '\\' || c == '^' || c == '$') return {};
    if (c == '.') return " " + words(1);
    if (c == '(') {
        std::string inside = choice(pattern, at);
        ++at;
        return inside;
    }
    if (c == '[') {
        const auto close = pattern.find(']', at);
        const bool isDigits = pattern.substr(at, close - at) == "0-9";
        at = close + 1;
        return {isDigits ? '7' : pick(classSamples)};
    }
    return {c};
}

}  // namespace dorix
