#include "routing/IntentRules.h"

#include "base/text/LinearRegex.h"
#include "base/text/Regex.h"
#include "base/text/Text.h"
#include "routing/IntentPatterns.h"
#include "routing/IntentWords.h"

#include <algorithm>
#include <deque>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace dorix::IntentRules {

// The lists of phrases are searched for like patterns: they hold letters, blanks and apostrophes alone.

namespace {

using Rows = std::span<const std::string_view>;

constexpr std::size_t mostWordsOfTransform = 12;

/// Whether a text matches one of many patterns.
class AnyPattern {
 public:
    explicit AnyPattern(Rows patterns) {
        std::vector<std::string_view> shortSighted;
        std::vector<std::string_view> heads;
        for (const auto& pattern : patterns) {
            const auto gap = pattern.find(".*");
            if (gap == std::string_view::npos) {
                shortSighted.push_back(pattern);
            } else {
                heads.push_back(pattern.substr(0, gap));
                farSighted_.emplace_back(Rows(&pattern, 1));
            }
        }
        shortSighted_.emplace(shortSighted);
        if (!heads.empty()) heads_.emplace(heads);
    }

    bool matches(std::string_view symbols) const {
        const auto isFound = [&](const auto& search) { return search.matches(symbols); };
        return isFound(*shortSighted_) ||
               (heads_ && isFound(*heads_) && std::ranges::any_of(farSighted_, isFound));
    }

 private:
    std::optional<LinearRegex> shortSighted_;
    /// Patterns that remember a word until a later one comes are searched for one by one, as an automaton for
    /// several had to remember every combination; and only where the first part of one is found.
    std::deque<LinearRegex> farSighted_;
    std::optional<LinearRegex> heads_;
};

bool startsWithAny(std::string_view text, Rows openings) {
    return std::ranges::any_of(openings, [&](const auto opening) { return text.starts_with(opening); });
}

bool startsWithWords(std::string_view text, std::string_view words) {
    return text.starts_with(words) && (text.size() == words.size() || text[words.size()] == ' ');
}

}  // namespace

std::string normalise(std::string_view transcript) { return std::string(Utterance(transcript).normalised()); }

bool isTeach(const Utterance& utterance) {
    static const AnyPattern patterns(intentpatterns::teach());
    return patterns.matches(utterance.symbols());
}

bool isSearch(const Utterance& utterance) {
    static const AnyPattern patterns(intentpatterns::search());
    return patterns.matches(utterance.paddedSymbols());
}

bool isAction(const Utterance& utterance) {
    static const AnyPattern patterns(intentpatterns::action());
    // A search is told at more cost than most utterances need to be no action.
    return patterns.matches(utterance.symbols()) && !isSearch(utterance);
}

bool isRecap(const Utterance& utterance) {
    static const LinearRegex phrases(intentwords::recapPhrases());
    return phrases.matches(utterance.symbols());
}

bool refersToSelection(const Utterance& utterance) {
    static const LinearRegex phrases(intentwords::selectionPhrases());
    const auto text = utterance.normalised();
    const auto firstWord = text.substr(0, text.find(' '));
    const auto isFirstWord = [&](const auto verb) { return verb == firstWord; };
    return std::ranges::any_of(intentwords::selectionVerbs(), isFirstWord) ||
           phrases.matches(utterance.paddedSymbols());
}

bool isTransform(const Utterance& utterance) {
    static const LinearRegex phrases(intentwords::transformPhrases());
    const auto text = utterance.normalised();
    const auto startsWith = [&](const auto verb) { return startsWithWords(text, verb); };
    if (std::ranges::any_of(intentwords::transformVerbs(), startsWith)) return true;
    return utterance.wordCount() <= mostWordsOfTransform && phrases.matches(utterance.symbols());
}

bool isReply(const Utterance& utterance) {
    return startsWithAny(utterance.normalised(), intentwords::replyOpenings());
}

bool isSelectionCommand(const Utterance& utterance) {
    if (isReply(utterance)) return false;
    return utterance.isPunctuatedAsQuestion() ||
           startsWithAny(utterance.normalised(), intentwords::selectionOpenings()) ||
           refersToSelection(utterance);
}

bool refersToScreen(const Utterance& utterance) {
    static const LinearRegex phrases(intentwords::screenPhrases());
    return phrases.matches(utterance.paddedSymbols());
}

bool isScreenQuestion(const Utterance& utterance) {
    return startsWithAny(utterance.normalised(), intentwords::screenQuestionOpenings()) &&
           !isReply(utterance) && refersToScreen(utterance);
}

bool matchesMeetingStart(const Utterance& utterance) {
    static const AnyPattern patterns(intentpatterns::meetingStart());
    return patterns.matches(utterance.symbols());
}

bool matchesMeetingStop(const Utterance& utterance) {
    static const AnyPattern patterns(intentpatterns::meetingStop());
    return patterns.matches(utterance.symbols());
}

bool matchesTeachDone(const Utterance& utterance) {
    static const AnyPattern patterns(intentpatterns::teachDone());
    return patterns.matches(utterance.symbols());
}

bool isSecretName(std::string_view name) {
    static const Regex pattern(intentpatterns::secretName().front());
    return pattern.matches(text::fold(name));
}

bool holdsSecret(std::string_view content) {
    static const Regex pattern(intentpatterns::secretContent().front());
    return pattern.matches(content);
}

}  // namespace dorix::IntentRules
