#include "service/ai/extraction/SpokenTime.h"

#include "base/text/Text.h"
#include "service/ai/extraction/MeetingWords.h"
#include "service/ai/writing/WritingWords.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace dorix::service {

namespace {

constexpr std::string_view punctuation = ".,;:!?()[]\"'";

struct Word {
    std::string_view raw;
    std::string folded;
};

std::vector<Word> wordsOf(std::string_view sentence) {
    std::vector<Word> words;
    for (const auto raw : text::words(sentence))
        words.push_back({.raw = raw, .folded = text::fold(text::trimAny(raw, punctuation))});
    return words;
}

bool startsWithDigit(std::string_view word) {
    return !word.empty() && word.front() >= '0' && word.front() <= '9';
}

bool isClock(std::string_view word) {
    const auto colon = word.find(':');
    return startsWithDigit(word) && colon != std::string_view::npos &&
           startsWithDigit(word.substr(colon + 1));
}

/// "may" and "march" are months only beside what leads to one.
bool isMonth(const std::vector<Word>& words, std::size_t at) {
    const auto& word = words[at].folded;
    if (!words::months().contains(word)) return false;
    if (word != "may" && word != "march") return true;
    const bool isLed = at > 0 && (startsWithDigit(words[at - 1].folded) ||
                                  words::timeLeads().contains(words[at - 1].folded));
    return isLed || (at + 1 < words.size() && startsWithDigit(words[at + 1].folded));
}

/// "next week", "la semana que viene", "fin de mes", "end of the month".
bool isPeriod(const std::vector<Word>& words, std::size_t at) {
    static const WordSet periods({"semana", "mes", "trimestre", "ano", "week", "month", "quarter", "year"});
    static const WordSet signs(
        {"next", "this", "end", "fin", "finales", "proxima", "proximo", "esta", "este", "viene"});
    if (!periods.contains(words[at].folded)) return false;
    const auto first = at > 3 ? at - 3 : 0;
    const auto last = std::min(words.size(), at + 3);
    return std::any_of(words.begin() + static_cast<std::ptrdiff_t>(first),
                       words.begin() + static_cast<std::ptrdiff_t>(last),
                       [](const auto& word) { return signs.contains(word.folded); });
}

bool isTime(const std::vector<Word>& words, std::size_t at) {
    const auto& word = words[at].folded;
    return words::weekdays().contains(word) || words::relativeDays().contains(word) || isMonth(words, at) ||
           isClock(word) || isPeriod(words, at);
}

bool leads(const Word& word) {
    return words::timeLeads().contains(word.folded) || startsWithDigit(word.folded) ||
           words::numbers().contains(word.folded);
}

bool goesOn(const std::vector<Word>& words, std::size_t at) {
    return words::timeFollowers().contains(words[at].folded) || startsWithDigit(words[at].folded) ||
           isTime(words, at);
}

/// Whether a mark behind the word ends what it is part of.
bool ends(const Word& word) {
    return word.raw.find_first_of(",;.!?)", word.raw.size() - 1) != std::string_view::npos;
}

}  // namespace

std::string_view timeIn(std::string_view sentence) {
    const auto words = wordsOf(sentence);
    std::size_t at = 0;
    while (at < words.size() && !isTime(words, at)) ++at;
    if (at == words.size()) return {};
    auto first = at;
    while (first > 0 && leads(words[first - 1]) && !ends(words[first - 1])) --first;
    auto last = at;
    for (auto next = at + 1; next < words.size() && !ends(words[next - 1]) && goesOn(words, next); ++next) {
        // What goes on has to arrive at something: not "el viernes a".
        if (startsWithDigit(words[next].folded) || isTime(words, next) ||
            words::dayParts().contains(words[next].folded) || words[next].folded == "viene")
            last = next;
    }
    const auto* begin = words[first].raw.data();
    const auto* end = words[last].raw.data() + words[last].raw.size();
    return text::trimAny({begin, static_cast<std::size_t>(end - begin)}, punctuation);
}

}  // namespace dorix::service
