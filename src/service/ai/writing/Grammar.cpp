#include "service/ai/writing/Grammar.h"

#include "service/ai/WordSet.h"
#include "service/ai/writing/WritingWords.h"

namespace dorix::service {

namespace {

constexpr std::size_t farthestArticle = 8;  // words from a verb back to the article of its subject

}  // namespace

bool Grammar::isConjunction(std::size_t at) const {
    static const WordSet set({"y", "e", "o", "u", "ni", "and", "or", "so"});
    return set.contains(key(at));
}

std::optional<std::size_t> Grammar::articleBefore(std::size_t verb, std::size_t begin) const {
    static const WordSet prepositions({"a",   "al",    "de",    "del",   "en",   "para",  "por",
                                       "con", "sobre", "desde", "hasta", "at",   "in",    "on",
                                       "to",  "from",  "for",   "by",    "with", "until", "of"});
    for (auto at = verb; at-- > begin + 1 && verb - at <= farthestArticle;) {
        if (!words::determiners().contains(key(at))) {
            if (governs(at) && !prepositions.contains(key(at))) return std::nullopt;
            continue;
        }
        if (prepositions.contains(key(at - 1))) continue;
        return governs(at - 1) ? std::nullopt : std::optional(at);
    }
    return std::nullopt;
}

}  // namespace dorix::service
