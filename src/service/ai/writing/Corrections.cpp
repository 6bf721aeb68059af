#include "service/ai/writing/Corrections.h"

#include "service/ai/writing/PhraseTable.h"
#include "service/ai/writing/Phrases.h"
#include "service/ai/writing/WritingWords.h"

#include <algorithm>
#include <optional>

namespace dorix::service {

namespace {

constexpr std::size_t reach = 12;  // words that a correction goes back at most
constexpr std::size_t longestStruckClause = 10;
constexpr int mostCuesInARow = 4;

/// A word that takes something back, or several in a row.
struct Found {
    std::size_t end = 0;  // of its words
    bool isClear = false;
    bool isApart = false;     // with a pause at either side
    bool isSentence = false;  // what was taken back ended in a full stop
};

/// The cue at `at`; `written` is what was said before it.
std::optional<Found> cueAt(const Tokens& tokens, std::size_t at, const Tokens& written) {
    static const PhraseTable<words::Cue> cues(words::cues());
    Found found{.end = at};
    bool pauses = true;
    for (int row = 0; row < mostCuesInARow && found.end < tokens.size(); ++row) {
        const auto* cue = cues.longestAt(tokens, found.end);
        if (cue == nullptr) break;
        found.end += wordsIn(cue->phrase);
        found.isClear |= cue->isClear;
        const auto& last = tokens[found.end - 1];
        if (last.endsClause() && !isPause(last)) return std::nullopt;
        pauses = isPause(last);
    }
    if (found.end == at || found.end == tokens.size() || tokens[at].gap != Gap::blank) return std::nullopt;
    const auto& before = written.back();
    found.isSentence = before.closing == ".";
    found.isApart = pauses && (isPause(before) || found.isSentence);
    if (!found.isApart && (before.endsClause() || !found.isClear)) return std::nullopt;
    return found;
}

bool isNegated(const Tokens& written, std::size_t begin, std::size_t end) {
    return std::any_of(written.begin() + static_cast<std::ptrdiff_t>(begin),
                       written.begin() + static_cast<std::ptrdiff_t>(end),
                       [](const auto& token) { return words::negations().contains(token.key); });
}

/// Where the clause begins to which the last word belongs, or the farthest word that is looked at.
std::size_t clauseStart(const Tokens& written) {
    std::size_t start = written.size() - 1;
    const auto farthest = written.size() > reach ? written.size() - reach : 0;
    while (start > farthest && !written[start - 1].endsClause() && written[start].gap == Gap::blank) --start;
    return start;
}

bool hasSameWords(const Tokens& some, std::size_t at, const Tokens& others, std::size_t other,
                  std::size_t count) {
    if (at + count > some.size() || other + count > others.size()) return false;
    for (std::size_t i = 0; i < count; ++i) {
        if (some[at + i].key != others[other + i].key) return false;
    }
    return true;
}

/// Where a taken back phrase begins, given the one that takes its place: with the same small words, or
/// without those that only one of them has.
std::optional<std::size_t> startOf(const Phrase& gone, const Tokens& written, const Phrase& next,
                                   const Tokens& tokens) {
    const auto leadsGone = gone.head - gone.begin;
    const auto leadsNext = next.head - next.begin;
    if (gone.kind == Phrase::Kind::number && leadsGone == 0 && leadsNext > 0) return std::nullopt;
    const auto common = std::min(leadsGone, leadsNext);
    if (!hasSameWords(written, gone.head - common, tokens, next.head - common, common)) return std::nullopt;
    return gone.head - common;
}

bool isOneKind(const Phrase& gone, const Tokens& written, const Phrase& next, const Tokens& tokens) {
    if (gone.kind != next.kind) return false;
    if (gone.kind == Phrase::Kind::name) return gone.words() == next.words();
    return gone.kind != Phrase::Kind::unit || written[gone.head].key == tokens[next.head].key;
}

/// Whether the words up to `end` can stand for what was taken back. What follows must not be the verb of
/// another statement, as in "el lunes, no, el martes tengo médico".
bool mayReplace(const Tokens& tokens, std::size_t end, const Found& cue, bool beginsStatement) {
    if (end == tokens.size() || tokens[end - 1].endsSentence()) return true;
    if (cue.isSentence) return false;
    if (tokens[end - 1].endsClause() || words::leadWords().contains(tokens[end].key)) return true;
    return words::followers().contains(tokens[end].key) || (cue.isClear && beginsStatement);
}

/// Where what is taken back begins, when it and what follows name times, amounts or people.
std::optional<std::size_t> takenBackByKind(const Tokens& written, const Tokens& tokens, const Found& cue) {
    const auto next = phrasesFrom(tokens, cue.end);
    const auto window = clauseStart(written);
    const auto gone = phrasesIn(written, window, written.size());
    if (gone.empty() || gone.back().end != written.size() || isNegated(written, window, written.size()))
        return std::nullopt;
    for (std::size_t count = std::min(next.size(), gone.size()); count > 0; --count) {
        const auto first = gone.size() - count;
        // A unit or a further time that is said along goes with what stays.
        const auto end = count < next.size() ? next.back().end : next[count - 1].end;
        bool fits = mayReplace(tokens, end, cue, beginsSentence(written, gone[first].begin));
        for (std::size_t i = 0; fits && i < count; ++i) {
            fits = isOneKind(gone[first + i], written, next[i], tokens) &&
                   (i == 0 || gone[first + i].begin == gone[first + i - 1].end);
        }
        if (fits) return startOf(gone[first], written, next.front(), tokens);
    }
    return std::nullopt;
}

/// The same of things without a kind: one word behind the same small word, where the clause has said nothing
/// else yet or ends with it.
std::optional<std::size_t> takenBackByShape(const Tokens& written, const Tokens& tokens, const Found& cue) {
    if (!cue.isClear || !cue.isApart || cue.isSentence) return std::nullopt;
    if (written.size() < 2 || cue.end + 1 >= tokens.size()) return std::nullopt;
    const auto start = written.size() - 2;
    const auto& thing = tokens[cue.end + 1];
    const auto leads = [](const Token& token) {
        return words::leadWords().contains(token.key) && !token.endsClause();
    };
    if (!leads(written[start]) || !hasSameWords(written, start, tokens, cue.end, 1)) return std::nullopt;
    if (words::leadWords().contains(thing.key) || words::leadWords().contains(written.back().key))
        return std::nullopt;
    const auto window = clauseStart(written);
    const bool fits = cue.end + 2 == tokens.size() || thing.endsClause() || beginsSentence(written, start);
    if (!fits || isNegated(written, window, written.size())) return std::nullopt;
    return start;
}

/// Where a whole clause begins that is struck and said anew from its first words on.
std::optional<std::size_t> struckClause(const Tokens& written, const Tokens& tokens, std::size_t at,
                                        std::size_t& end) {
    static const PhraseTable<words::Strike> strikes(words::strikes());
    const auto* strike = strikes.longestAt(tokens, at);
    if (strike == nullptr || !written.back().endsClause()) return std::nullopt;
    const auto words = wordsIn(strike->phrase);
    if (at + words >= tokens.size() || !tokens[at + words - 1].endsClause()) return std::nullopt;
    const auto start = clauseStart(written);
    const auto length = written.size() - start;
    if (length > longestStruckClause || length <= strike->repeatedWords) return std::nullopt;
    if (!hasSameWords(written, start, tokens, at + words, strike->repeatedWords)) return std::nullopt;
    end = at + words;
    return start;
}

}  // namespace

Tokens withoutCorrected(const Tokens& tokens) {
    Tokens written;
    for (std::size_t at = 0; at < tokens.size();) {
        std::optional<std::size_t> start;
        std::size_t next = at;
        if (!written.empty()) {
            if (const auto cue = cueAt(tokens, at, written)) {
                next = cue->end;
                start = takenBackByKind(written, tokens, *cue);
                if (!start) start = takenBackByShape(written, tokens, *cue);
            }
            if (!start) start = struckClause(written, tokens, at, next);
        }
        if (!start) {
            written.push_back(tokens[at++]);
            continue;
        }
        Token replacing = tokens[next];
        handOver(written[*start], replacing);
        written.resize(*start);
        written.push_back(std::move(replacing));
        at = next + 1;
    }
    return written;
}

}  // namespace dorix::service
