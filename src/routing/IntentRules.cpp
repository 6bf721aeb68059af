#include "routing/IntentRules.h"

#include "base/text/Regex.h"
#include "base/text/Text.h"
#include "routing/IntentPatterns.h"
#include "routing/IntentWords.h"
#include "routing/PatternSet.h"

#include <algorithm>
#include <span>
#include <string_view>

namespace dorix::IntentRules {

// The lists of phrases are searched for like patterns: they hold letters, blanks and apostrophes alone.

namespace {

using Rows = std::span<const std::string_view>;

constexpr std::size_t mostWordsOfTransform = 12;

bool startsWithAny(std::string_view text, Rows openings) {
    return std::ranges::any_of(openings, [&](const auto opening) { return text.starts_with(opening); });
}

bool startsWithWords(std::string_view text, std::string_view words) {
    return text.starts_with(words) && (text.size() == words.size() || text[words.size()] == ' ');
}

}  // namespace

std::string normalise(std::string_view transcript) { return std::string(Utterance(transcript).normalised()); }

bool isTeach(const Utterance& utterance) {
    static const PatternSet patterns(intentpatterns::teach());
    return patterns.matches(utterance.ascii());
}

bool isSearch(const Utterance& utterance) {
    static const PatternSet patterns(intentpatterns::search());
    return patterns.matches(utterance.paddedAscii());
}

bool isAction(const Utterance& utterance) {
    static const PatternSet patterns(intentpatterns::action());
    return !isSearch(utterance) && patterns.matches(utterance.ascii());
}

bool isRecap(const Utterance& utterance) {
    static const PatternSet phrases(intentwords::recapPhrases());
    return phrases.matches(utterance.ascii());
}

bool refersToSelection(const Utterance& utterance) {
    static const PatternSet phrases(intentwords::selectionPhrases());
    const auto text = utterance.normalised();
    const auto firstWord = text.substr(0, text.find(' '));
    const auto isFirstWord = [&](const auto verb) { return verb == firstWord; };
    return std::ranges::any_of(intentwords::selectionVerbs(), isFirstWord) ||
           phrases.matches(utterance.paddedAscii());
}

bool isTransform(const Utterance& utterance) {
    static const PatternSet phrases(intentwords::transformPhrases());
    const auto text = utterance.normalised();
    const auto startsWith = [&](const auto verb) { return startsWithWords(text, verb); };
    if (std::ranges::any_of(intentwords::transformVerbs(), startsWith)) return true;
    return utterance.wordCount() <= mostWordsOfTransform && phrases.matches(utterance.ascii());
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
    static const PatternSet phrases(intentwords::screenPhrases());
    return phrases.matches(utterance.paddedAscii());
}

bool isScreenQuestion(const Utterance& utterance) {
    return refersToScreen(utterance) && !isReply(utterance) &&
           startsWithAny(utterance.normalised(), intentwords::screenQuestionOpenings());
}

bool matchesMeetingStart(const Utterance& utterance) {
    static const PatternSet patterns(intentpatterns::meetingStart());
    return patterns.matches(utterance.ascii());
}

bool matchesMeetingStop(const Utterance& utterance) {
    static const PatternSet patterns(intentpatterns::meetingStop());
    return patterns.matches(utterance.ascii());
}

bool matchesTeachDone(const Utterance& utterance) {
    static const PatternSet patterns(intentpatterns::teachDone());
    return patterns.matches(utterance.ascii());
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
