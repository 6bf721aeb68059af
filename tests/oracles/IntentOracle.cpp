#include "oracles/IntentOracle.h"

#include "base/text/Regex.h"
#include "base/text/Text.h"
#include "routing/IntentPatterns.h"
#include "routing/IntentWords.h"

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <deque>
#include <span>

namespace dorix {

namespace {

struct Rule {
    const char* name;
    bool (*test)(const Utterance&);
    bool isPadded;
    std::deque<Regex> patterns;

    Rule(const char* called, auto tests, std::span<const std::string_view> sources, bool padded = false)
        : name(called), test(tests), isPadded(padded) {
        for (const auto source : sources) patterns.emplace_back(source);
    }
    bool matches(const std::string& text) const {
        const auto searched = isPadded ? " " + text + " " : text;
        return std::ranges::any_of(patterns, [&](const auto& one) { return one.matches(searched); });
    }
};

/// An action is what no search is: it comes right after it.
const std::deque<Rule>& allRules() {
    static const std::deque<Rule> all = [] {
        std::deque<Rule> made;
        made.emplace_back("search", rules::isSearch, intentpatterns::search(), true);
        made.emplace_back("action", rules::isAction, intentpatterns::action());
        made.emplace_back("teach", rules::isTeach, intentpatterns::teach());
        made.emplace_back("recap", rules::isRecap, intentwords::recapPhrases());
        made.emplace_back("screen", rules::refersToScreen, intentwords::screenPhrases(), true);
        made.emplace_back("meeting start", rules::matchesMeetingStart, intentpatterns::meetingStart());
        made.emplace_back("meeting stop", rules::matchesMeetingStop, intentpatterns::meetingStop());
        made.emplace_back("teach done", rules::matchesTeachDone, intentpatterns::teachDone());
        return made;
    }();
    return all;
}

/// By Unicode's definitions.
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

std::string normalise(std::string_view transcript) {
    static const Regex separators(R"([¿?¡!.,;:«»"\s]+)");
    const auto spaced = separators.replaceAll(fold(transcript), " ");
    std::string text(text::trimBlanks(text::replaceAll(spaced, "’", "'")));
    for (const auto filler : intentwords::fillerPrefixes()) {
        if (text.starts_with(filler)) text.erase(0, filler.size());
    }
    return text;
}

}  // namespace

std::string judged(std::string_view transcript) {
    const Utterance utterance(transcript);
    std::string out(utterance.normalised());
    for (const auto& rule : allRules()) {
        if (rule.test(utterance)) out.append(", ").append(rule.name);
    }
    return out;
}

std::string judgedByIcu(std::string_view transcript) {
    const auto text = normalise(transcript);
    std::string out = text;
    bool isSearch = false;
    for (const auto& rule : allRules()) {
        const bool isAction = rule.test == rules::isAction;
        if ((isAction && isSearch) || !rule.matches(text)) continue;
        isSearch = isSearch || rule.test == rules::isSearch;
        out.append(", ").append(rule.name);
    }
    return out;
}

}  // namespace dorix
