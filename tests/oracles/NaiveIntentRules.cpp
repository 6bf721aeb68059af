#include "oracles/NaiveIntentRules.h"

#include "base/text/Regex.h"
#include "base/text/Text.h"
#include "routing/IntentPatterns.h"
#include "routing/IntentRules.h"
#include "routing/IntentWords.h"

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <deque>
#include <span>
#include <utility>
#include <vector>

namespace dorix {

namespace {

using Rows = std::span<const std::string_view>;

/// Each pattern by itself, run by ICU.
class Patterns {
 public:
    Patterns(Rows sources) {
        for (const auto source : sources) patterns_.emplace_back(source);
    }
    bool match(std::string_view text) const {
        return std::ranges::any_of(patterns_, [&](const auto& pattern) { return pattern.matches(text); });
    }

 private:
    std::deque<Regex> patterns_;
};

/// The whole text at once, by Unicode's definitions.
std::string fold(std::string_view text) {
    UErrorCode status = U_ZERO_ERROR;
    auto folded = icu::UnicodeString::fromUTF8(std::string(text)).foldCase();
    const auto decomposed = icu::Normalizer2::getNFDInstance(status)->normalize(folded, status);
    icu::UnicodeString kept;
    for (int32_t i = 0; i < decomposed.length(); i = decomposed.moveIndex32(i, 1)) {
        const UChar32 c = decomposed.char32At(i);
        if (u_charType(c) != U_NON_SPACING_MARK) kept.append(c);
    }
    std::string out;
    icu::Normalizer2::getNFCInstance(status)->normalize(kept, status).toUTF8String(out);
    return out;
}

bool containsAny(std::string_view text, Rows phrases) {
    return std::ranges::any_of(phrases, [&](const auto phrase) { return text.contains(phrase); });
}

bool startsWithAny(std::string_view text, Rows openings) {
    return std::ranges::any_of(openings, [&](const auto opening) { return text.starts_with(opening); });
}

std::vector<std::string_view> blankSeparated(std::string_view text) {
    auto pieces = text::split(text, ' ');
    std::erase(pieces, "");
    return pieces;
}

bool refersToSelection(std::string_view text) {
    const auto words = blankSeparated(text);
    const auto isFirst = [&](const auto verb) { return !words.empty() && words.front() == verb; };
    return std::ranges::any_of(intentwords::selectionVerbs(), isFirst) ||
           containsAny(" " + std::string(text), intentwords::selectionPhrases());
}

bool isTransform(std::string_view text) {
    for (const auto verb : intentwords::transformVerbs()) {
        if (text == verb || text.starts_with(std::string(verb) + " ")) return true;
    }
    return blankSeparated(text).size() <= 12 && containsAny(text, intentwords::transformPhrases());
}

bool isSelectionCommand(std::string_view text, std::string_view transcript) {
    if (startsWithAny(text, intentwords::replyOpenings())) return false;
    const auto raw = text::trim(transcript);
    if (raw.starts_with("¿") || raw.ends_with("?")) return true;
    return startsWithAny(text, intentwords::selectionOpenings()) || refersToSelection(text);
}

namespace rules = IntentRules;
constexpr std::array tests{rules::isTeach,
                           rules::isSearch,
                           rules::isAction,
                           rules::isRecap,
                           rules::refersToSelection,
                           rules::isTransform,
                           rules::isReply,
                           rules::isSelectionCommand,
                           rules::refersToScreen,
                           rules::isScreenQuestion,
                           rules::matchesMeetingStart,
                           rules::matchesMeetingStop,
                           rules::matchesTeachDone};
constexpr std::array names{"teach",     "search",          "action",        "recap",
                           "selection", "transform",       "reply",         "selection command",
                           "screen",    "screen question", "meeting start", "meeting stop",
                           "teach done"};
static_assert(tests.size() == Intents::count && names.size() == Intents::count);

}  // namespace

struct NaiveIntentRules::Compiled {
    Regex separators{R"([¿?¡!.,;:«»"\s]+)"};
    Patterns teach = intentpatterns::teach();
    Patterns search = intentpatterns::search();
    Patterns action = intentpatterns::action();
    Patterns meetingStart = intentpatterns::meetingStart();
    Patterns meetingStop = intentpatterns::meetingStop();
    Patterns teachDone = intentpatterns::teachDone();
};

NaiveIntentRules::NaiveIntentRules() : compiled_(std::make_unique<Compiled>()) {}
NaiveIntentRules::~NaiveIntentRules() = default;

std::string NaiveIntentRules::normalise(std::string_view transcript) const {
    const auto spaced = compiled_->separators.replaceAll(fold(transcript), " ");
    std::string text(text::trimBlanks(text::replaceAll(spaced, "’", "'")));
    for (const auto filler : intentwords::fillerPrefixes()) {
        if (text.starts_with(filler)) text.erase(0, filler.size());
    }
    return text;
}

Intents NaiveIntentRules::judge(std::string_view transcript) const {
    return judgeNormalised(normalise(transcript), transcript);
}

Intents NaiveIntentRules::judgeNormalised(std::string text, std::string_view transcript) const {
    const bool isSearch = compiled_->search.match(" " + text + " ");
    const bool isReply = startsWithAny(text, intentwords::replyOpenings());
    const bool refersToScreen = containsAny(" " + text, intentwords::screenPhrases());
    const std::array holds{
        compiled_->teach.match(text),
        isSearch,
        !isSearch && compiled_->action.match(text),
        containsAny(text, intentwords::recapPhrases()),
        refersToSelection(text),
        isTransform(text),
        isReply,
        isSelectionCommand(text, transcript),
        refersToScreen,
        refersToScreen && !isReply && startsWithAny(text, intentwords::screenQuestionOpenings()),
        compiled_->meetingStart.match(text),
        compiled_->meetingStop.match(text),
        compiled_->teachDone.match(text)};
    return {.normalised = std::move(text), .holds = holds};
}

Intents judge(std::string_view transcript) {
    const Utterance utterance(transcript);
    Intents intents{.normalised = std::string(utterance.normalised())};
    for (std::size_t i = 0; i < tests.size(); ++i) intents.holds.at(i) = tests.at(i)(utterance);
    return intents;
}

std::string describe(const Intents& intents) {
    std::string out = "\"" + intents.normalised + "\"";
    for (std::size_t i = 0; i < tests.size(); ++i) {
        if (intents.holds.at(i)) out += std::string(", ") + names.at(i);
    }
    return out;
}

}  // namespace dorix
