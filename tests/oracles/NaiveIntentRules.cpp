#include "oracles/NaiveIntentRules.h"

#include "base/text/Text.h"
#include "routing/IntentPatterns.h"
#include "routing/IntentRules.h"
#include "routing/IntentWords.h"

#include <unicode/normalizer2.h>
#include <unicode/regex.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <span>
#include <stdexcept>
#include <vector>

namespace dorix {

namespace {

using Rows = std::span<const std::string_view>;

icu::UnicodeString wide(std::string_view text) {
    return icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}

std::string narrow(const icu::UnicodeString& text) {
    std::string out;
    text.toUTF8String(out);
    return out;
}

void check(UErrorCode status) {
    if (U_FAILURE(status)) throw std::runtime_error(u_errorName(status));
}

using Pattern = std::unique_ptr<icu::RegexPattern>;

Pattern compile(std::string_view source) {
    UErrorCode status = U_ZERO_ERROR;
    UParseError where{};
    Pattern pattern(icu::RegexPattern::compile(wide(source), 0, where, status));
    check(status);
    return pattern;
}

std::vector<Pattern> compileAll(Rows sources) {
    std::vector<Pattern> patterns;
    for (const auto source : sources) patterns.push_back(compile(source));
    return patterns;
}

bool anyMatches(const std::vector<Pattern>& patterns, std::string_view text) {
    const auto subject = wide(text);
    return std::ranges::any_of(patterns, [&](const auto& pattern) {
        UErrorCode status = U_ZERO_ERROR;
        const std::unique_ptr<icu::RegexMatcher> matcher(pattern->matcher(subject, status));
        const bool found = matcher->find(status) != 0;
        check(status);
        return found;
    });
}

icu::UnicodeString replaced(const Pattern& pattern, const icu::UnicodeString& text) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::RegexMatcher> matcher(pattern->matcher(text, status));
    auto out = matcher->replaceAll(icu::UnicodeString(u" "), status);
    check(status);
    return out;
}

/// The whole text at once, by Unicode's definitions.
icu::UnicodeString fold(std::string_view text) {
    UErrorCode status = U_ZERO_ERROR;
    icu::UnicodeString folded = wide(text);
    folded.foldCase();
    const auto decomposed = icu::Normalizer2::getNFDInstance(status)->normalize(folded, status);
    icu::UnicodeString kept;
    for (int32_t i = 0; i < decomposed.length(); i = decomposed.moveIndex32(i, 1)) {
        const UChar32 c = decomposed.char32At(i);
        if (u_charType(c) != U_NON_SPACING_MARK) kept.append(c);
    }
    auto out = icu::Normalizer2::getNFCInstance(status)->normalize(kept, status);
    check(status);
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
    if (!words.empty()) {
        for (const auto verb : intentwords::selectionVerbs()) {
            if (words.front() == verb) return true;
        }
    }
    return containsAny(" " + std::string(text), intentwords::selectionPhrases());
}

bool isTransform(std::string_view text) {
    for (const auto verb : intentwords::transformVerbs()) {
        if (text == verb || text.starts_with(std::string(verb) + " ")) return true;
    }
    if (blankSeparated(text).size() > 12) return false;
    return containsAny(text, intentwords::transformPhrases());
}

bool isSelectionCommand(std::string_view text, std::string_view transcript) {
    if (startsWithAny(text, intentwords::replyOpenings())) return false;
    const auto raw = text::trim(transcript);
    if (raw.starts_with("¿") || raw.ends_with("?")) return true;
    return startsWithAny(text, intentwords::selectionOpenings()) || refersToSelection(text);
}

}  // namespace

struct NaiveIntentRules::Patterns {
    Pattern punctuation = compile(R"([¿?¡!.,;:«»"])");
    Pattern whiteSpace = compile(R"(\s+)");
    std::vector<Pattern> teach = compileAll(intentpatterns::teach());
    std::vector<Pattern> search = compileAll(intentpatterns::search());
    std::vector<Pattern> action = compileAll(intentpatterns::action());
    std::vector<Pattern> meetingStart = compileAll(intentpatterns::meetingStart());
    std::vector<Pattern> meetingStop = compileAll(intentpatterns::meetingStop());
    std::vector<Pattern> teachDone = compileAll(intentpatterns::teachDone());
};

NaiveIntentRules::NaiveIntentRules() : patterns_(std::make_unique<Patterns>()) {}
NaiveIntentRules::~NaiveIntentRules() = default;

std::string NaiveIntentRules::normalise(std::string_view transcript) const {
    auto folded = fold(transcript);
    folded.findAndReplace(icu::UnicodeString(u"’"), icu::UnicodeString(u"'"));
    const auto spaced = replaced(patterns_->whiteSpace, replaced(patterns_->punctuation, folded));
    std::string text(text::trimBlanks(narrow(spaced)));
    for (const auto filler : intentwords::fillerPrefixes()) {
        if (text.starts_with(filler)) text.erase(0, filler.size());
    }
    return text;
}

Intents NaiveIntentRules::judge(std::string_view transcript) const {
    return judgeNormalised(normalise(transcript), transcript);
}

Intents NaiveIntentRules::judgeNormalised(std::string normalised, std::string_view transcript) const {
    const std::string& text = normalised;
    const bool isSearch = anyMatches(patterns_->search, " " + text + " ");
    const bool isReply = startsWithAny(text, intentwords::replyOpenings());
    const bool refersToScreen = containsAny(" " + text, intentwords::screenPhrases());
    Intents intents{.isTeach = anyMatches(patterns_->teach, text),
                    .isSearch = isSearch,
                    .isAction = !isSearch && anyMatches(patterns_->action, text),
                    .isRecap = containsAny(text, intentwords::recapPhrases()),
                    .refersToSelection = refersToSelection(text),
                    .isTransform = isTransform(text),
                    .isReply = isReply,
                    .isSelectionCommand = isSelectionCommand(text, transcript),
                    .refersToScreen = refersToScreen,
                    .isScreenQuestion = refersToScreen && !isReply &&
                                        startsWithAny(text, intentwords::screenQuestionOpenings()),
                    .meetingStart = anyMatches(patterns_->meetingStart, text),
                    .meetingStop = anyMatches(patterns_->meetingStop, text),
                    .teachDone = anyMatches(patterns_->teachDone, text)};
    intents.normalised = std::move(normalised);
    return intents;
}

Intents judge(std::string_view transcript) {
    using namespace IntentRules;
    const Utterance utterance(transcript);
    return {.normalised = std::string(utterance.normalised()),
            .isTeach = isTeach(utterance),
            .isSearch = isSearch(utterance),
            .isAction = isAction(utterance),
            .isRecap = isRecap(utterance),
            .refersToSelection = IntentRules::refersToSelection(utterance),
            .isTransform = IntentRules::isTransform(utterance),
            .isReply = isReply(utterance),
            .isSelectionCommand = IntentRules::isSelectionCommand(utterance),
            .refersToScreen = refersToScreen(utterance),
            .isScreenQuestion = isScreenQuestion(utterance),
            .meetingStart = matchesMeetingStart(utterance),
            .meetingStop = matchesMeetingStop(utterance),
            .teachDone = matchesTeachDone(utterance)};
}

std::string describe(const Intents& intents) {
    std::string out = "\"" + intents.normalised + "\"";
    const auto add = [&](bool holds, const char* name) {
        if (holds) out += std::string(" ") + name;
    };
    add(intents.isTeach, "isTeach");
    add(intents.isSearch, "isSearch");
    add(intents.isAction, "isAction");
    add(intents.isRecap, "isRecap");
    add(intents.refersToSelection, "refersToSelection");
    add(intents.isTransform, "isTransform");
    add(intents.isReply, "isReply");
    add(intents.isSelectionCommand, "isSelectionCommand");
    add(intents.refersToScreen, "refersToScreen");
    add(intents.isScreenQuestion, "isScreenQuestion");
    add(intents.meetingStart, "meetingStart");
    add(intents.meetingStop, "meetingStop");
    add(intents.teachDone, "teachDone");
    return out;
}

}  // namespace dorix
