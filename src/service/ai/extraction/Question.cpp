#include "service/ai/extraction/Question.h"

#include "base/text/Text.h"
#include "service/ai/extraction/ExtractionWords.h"
#include "service/ai/extraction/Terms.h"

#include <algorithm>

namespace dorix::service {

namespace {

constexpr double ofOneMeaning = 0.9;
constexpr double ofOneBeginning = 0.6;
constexpr std::size_t beginning = 5;   // bytes, folded
constexpr std::size_t mostTerms = 48;  // what is asked at more length is no question any more

bool hasDigit(std::string_view word) { return word.find_first_of("0123456789") != std::string_view::npos; }

// No stem holds a blank, so the keys of each kind keep apart.
std::string stemKey(std::string_view stem) { return "s " + std::string(stem); }
std::string meaningKey(std::uint16_t meaning) { return "m " + std::to_string(meaning); }
std::string beginningKey(std::string_view word) { return "b " + std::string(word.substr(0, beginning)); }

bool hasBeginning(std::string_view word) { return word.size() >= beginning && !hasDigit(word); }

/// A capital that no sentence begins with.
bool beginsWithCapital(std::string_view word) {
    const auto first = text::prefix(word, 1);
    return text::lowercase(first) != first;
}

}  // namespace

Question::Question(std::string_view text) {
    const auto whole = text::fold(text);
    asked_ = kindsAsked(whole);
    bool isFirst = true;
    for (const auto raw : text::words(text)) {
        const auto folded = text::fold(raw);
        for (const auto word : foldedWords(folded)) {
            add(word, hasDigit(word) || (!isFirst && beginsWithCapital(raw)));
            isFirst = false;
        }
    }
    if (asked_ == 0) findFocus(foldedWords(whole));
}

void Question::findFocus(const std::vector<std::string_view>& words) {
    static const WordSet openings({"which", "what", "que", "cual", "cuales"});
    auto word = std::ranges::find_if(words, [](const auto each) { return openings.contains(each); });
    while (word != words.end()) {
        if (++word == words.end()) return;
        const auto found = byKey_.find(stemKey(stemOf(*word)));
        if (found == byKey_.end()) continue;
        focus_ = found->second.front().term;
        return;
    }
}

void Question::add(std::string_view word, bool isName) {
    const auto stem = stemOf(word);
    if (stem.empty() || terms_.size() == mostTerms || byKey_.contains(stemKey(stem))) return;
    const auto term = terms_.size();
    terms_.push_back({.isName = isName});
    addKey(stemKey(stem), term, 1);
    for (const auto meaning : meaningsOf(stem)) addKey(meaningKey(meaning), term, ofOneMeaning);
    if (hasBeginning(word)) addKey(beginningKey(word), term, ofOneBeginning);
}

void Question::addKey(std::string key, std::size_t term, double nearness) {
    byKey_[std::move(key)].push_back({.term = term, .nearness = nearness});
}

std::vector<Question::Match> Question::matches(std::string_view foldedWord) const {
    const auto stem = stemOf(foldedWord);
    if (stem.empty()) return {};
    std::vector<Match> found;
    const auto take = [&](const std::string& key) {
        const auto entry = byKey_.find(key);
        if (entry == byKey_.end()) return;
        for (const auto& match : entry->second) {
            const auto known = std::ranges::find(found, match.term, &Match::term);
            if (known == found.end()) found.push_back(match);
        }
    };
    // The nearest first.
    take(stemKey(stem));
    for (const auto meaning : meaningsOf(stem)) take(meaningKey(meaning));
    if (hasBeginning(foldedWord)) take(beginningKey(foldedWord));
    return found;
}

}  // namespace dorix::service
