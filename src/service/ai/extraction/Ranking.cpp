#include "service/ai/extraction/Ranking.h"

#include "base/text/Text.h"
#include "service/ai/extraction/ExtractionWords.h"
#include "service/ai/extraction/Names.h"
#include "service/ai/extraction/Question.h"
#include "service/ai/extraction/Terms.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <unordered_map>

namespace dorix::service {

namespace {

// What a word of the question counts for where it does not stand in the sentence itself.
constexpr double inLabel = 0.9;
constexpr double inHeading = 0.6;
constexpr double inTitle = 0.9;
constexpr double inSentenceBefore = 0.45;
constexpr double inSource = 0.3;

constexpr double weightOfName = 1.5;
constexpr double leastWeight = 0.4;  // of the heaviest: of a word that is in every sentence

// What becomes of the score of a sentence ...
constexpr double holdingKind = 1.3;  // with the time, amount or name that is asked for
constexpr double lackingKind = 0.62;
constexpr double lackingFocus = 0.75;     // with nothing of what the answer is to be
constexpr double lackingName = 0.6;       // of a source that lacks a name of the question
constexpr double near = 0.7;              // enough for a name to be there
constexpr double asking = 0.5;            // that is a question itself
constexpr double announcing = 0.6;        // that is a heading
constexpr std::size_t longSentence = 40;  // words
constexpr double tooLong = 0.85;

constexpr double leastOwn = 0.2;  // of what the title does not say, in the sentence itself
constexpr double leastScore = 0.47;
constexpr double leastOfBest = 0.85;
constexpr std::size_t mostQuoted = 3;
constexpr std::size_t shortestCentral = 5;  // words; what is shorter is a heading

/// How near each word of the question is found, by its number; empty where none is.
using Nearness = std::vector<double>;

void takeNearest(Nearness& nearness, const Nearness& other, double factor) {
    if (nearness.size() < other.size()) nearness.resize(other.size());
    for (std::size_t term = 0; term < other.size(); ++term)
        nearness[term] = std::max(nearness[term], other[term] * factor);
}

double nearnessOf(const Nearness& nearness, std::size_t term) {
    return nearness.empty() ? 0 : nearness[term];
}

/// Judges passages by a question.
class Ranking {
 public:
    Ranking(const Question& question, const std::vector<Source>& sources,
            const std::vector<Passage>& passages)
        : question_(question),
          passages_(passages),
          names_(question.asked() & (kinds::person | kinds::place) ? Names(passages) : Names()) {
        for (const auto& source : sources) {
            titles_.push_back(found(source.title));
            inSources_.push_back(titles_.back());
        }
        for (const auto& passage : passages) {
            own_.push_back(found(passage.text));
            takeNearest(inSources_[passage.source], own_.back(), 1);
        }
        weigh();
        for (std::size_t source = 0; source < sources.size(); ++source) {
            leftByTitles_.push_back(std::max(1e-9, total_ - inTitle * sum(titles_[source])));
            // What is in front of the user need not name itself.
            const bool isFound = sources[source].kind == Source::Kind::memory;
            lacksName_.push_back(isFound && lacksName(inSources_[source]));
        }
    }

    /// How well each passage answers, 0 where it does not.
    std::vector<double> scores() const {
        const Nearness nothing;
        std::vector<double> scores;
        Nearness heading = nothing;
        Nearness label = nothing;
        for (std::size_t at = 0; at < passages_.size(); ++at) {
            const auto& passage = passages_[at];
            const bool isNewSource = at == 0 || passages_[at - 1].source != passage.source;
            if (isNewSource) heading = nothing;
            if (passage.beginsLine) label = nothing;
            const auto& before = isNewSource ? nothing : own_[at - 1];
            scores.push_back(score(at, label, heading, before));
            if (passage.role == Passage::Role::label) takeNearest(label, own_[at], 1);
            if (passage.role == Passage::Role::heading) heading = own_[at];
        }
        return scores;
    }

 private:
    Nearness found(std::string_view text) {
        Nearness nearness;
        const auto folded = text::fold(text);
        for (const auto word : foldedWords(folded)) {
            for (const auto& match : matchesOf(word)) {
                nearness.resize(question_.terms().size());
                nearness[match.term] = std::max(nearness[match.term], match.nearness);
            }
        }
        return nearness;
    }

    /// The same words come again and again.
    const std::vector<Question::Match>& matchesOf(std::string_view word) {
        const auto known = known_.find(word);
        if (known != known_.end()) return known->second;
        return known_.emplace(std::string(word), question_.matches(word)).first->second;
    }

    /// A word that few passages have says most. One that none has counts as the others do on average: it may
    /// be said in words that are not known.
    void weigh() {
        const auto count = question_.terms().size();
        std::vector<double> frequencies(count);
        for (const auto& own : own_) {
            for (std::size_t term = 0; term < own.size(); ++term) frequencies[term] += own[term];
        }
        const double heaviest = std::log(1 + static_cast<double>(passages_.size()) / 1.5);
        double known = 0;
        double sum = 0;
        for (const auto frequency : frequencies) {
            const double rarity = std::log(1 + static_cast<double>(passages_.size()) / (frequency + 0.5));
            weights_.push_back(std::max(leastWeight, std::min(1.0, rarity / heaviest)));
            isKnown_.push_back(frequency > 0);
            if (frequency == 0) continue;
            ++known;
            sum += weights_.back();
        }
        for (std::size_t term = 0; term < count; ++term) {
            if (!isKnown_[term]) weights_[term] = known > 0 ? sum / known : 1;
            if (question_.terms()[term].isName) weights_[term] *= weightOfName;
        }
        for (const auto weight : weights_) total_ += weight;
    }

    double sum(const Nearness& nearness) const {
        double sum = 0;
        for (std::size_t term = 0; term < nearness.size(); ++term) sum += weights_[term] * nearness[term];
        return sum;
    }

    bool lacksName(const Nearness& nearness) const {
        for (std::size_t term = 0; term < question_.terms().size(); ++term) {
            if (question_.terms()[term].isName && nearnessOf(nearness, term) < near) return true;
        }
        return false;
    }

    double score(std::size_t at, const Nearness& label, const Nearness& heading,
                 const Nearness& before) const {
        const auto& passage = passages_[at];
        auto own = own_[at];
        takeNearest(own, label, inLabel);
        auto nearness = own;
        takeNearest(nearness, heading, inHeading);
        takeNearest(nearness, before, inSentenceBefore);
        if (nearness.empty()) return 0;
        // What is asked for may come right behind the words of the question.
        const bool holds = holdsAsked(passage);
        const bool isTold = holds && (question_.asked() & kinds::telling) != 0;
        if (sum(isTold ? nearness : own) < leastOwn * leftByTitles_[passage.source]) return 0;
        double factor = fitness(passage, holds);
        const auto focus = question_.focus();
        if (focus && isKnown_[*focus] && nearness[*focus] == 0) factor *= lackingFocus;
        takeNearest(nearness, titles_[passage.source], inTitle);
        takeNearest(nearness, inSources_[passage.source], inSource);
        return factor * sum(nearness) / total_;
    }

    bool holdsAsked(const Passage& passage) const {
        if (question_.asked() == 0) return false;
        const auto folded = text::fold(passage.text);
        return (kindsIn(passage.text, foldedWords(folded), names_.areIn(passage.text)) & question_.asked()) !=
               0;
    }

    /// What a sentence is, apart from its words.
    double fitness(const Passage& passage, bool holdsAsked) const {
        double factor = 1;
        if (question_.asked() != 0) factor = holdsAsked ? holdingKind : lackingKind;
        if (lacksName_[passage.source]) factor *= lackingName;
        if (passage.text.ends_with('?')) factor *= asking;
        if (passage.role != Passage::Role::sentence) factor *= announcing;
        if (text::words(passage.text).size() > longSentence) factor *= tooLong;
        return factor;
    }

    const Question& question_;
    const std::vector<Passage>& passages_;
    Names names_;
    std::unordered_map<std::string, std::vector<Question::Match>, Hash, std::equal_to<>> known_;
    std::vector<Nearness> titles_;
    std::vector<Nearness> inSources_;
    std::vector<Nearness> own_;
    std::vector<double> weights_;
    std::vector<bool> isKnown_;         // whether a sentence has the term
    std::vector<double> leftByTitles_;  // of the weights, for each source
    std::vector<bool> lacksName_;       // for each source
    double total_ = 0;
};

struct Scored {
    std::size_t passage = 0;
    double score = 0;
};

/// The one that comes first where two are as good.
bool isBetter(const Scored& one, const Scored& other) {
    return one.score != other.score ? one.score > other.score : one.passage < other.passage;
}

void sortByScore(std::vector<Scored>& scored) { std::ranges::sort(scored, isBetter); }

}  // namespace

std::vector<std::size_t> bestPassages(std::string_view question, const std::vector<Source>& sources,
                                      const std::vector<Passage>& passages) {
    const Question asked(question);
    if (asked.terms().empty() || passages.empty()) return {};
    const auto scores = Ranking(asked, sources, passages).scores();
    std::vector<Scored> scored;
    for (std::size_t at = 0; at < passages.size(); ++at) {
        if (scores[at] >= leastScore) scored.push_back({.passage = at, .score = scores[at]});
    }
    sortByScore(scored);
    std::vector<std::size_t> best;
    for (const auto& row : scored) {
        if (best.size() == mostQuoted || row.score < leastOfBest * scored.front().score) break;
        best.push_back(row.passage);
    }
    return best;
}

std::vector<std::size_t> centralPassages(const std::vector<Passage>& passages, std::size_t most) {
    std::unordered_map<std::string, double> frequencies;
    std::vector<std::vector<std::string>> terms;
    for (const auto& passage : passages) {
        auto& own = terms.emplace_back();
        const auto folded = text::fold(passage.text);
        for (const auto word : foldedWords(folded)) {
            if (auto stem = stemOf(word); !stem.empty()) own.push_back(std::move(stem));
        }
        for (const auto& term : own) ++frequencies[term];
    }
    std::vector<Scored> scored;
    for (std::size_t at = 0; at < passages.size(); ++at) {
        if (terms[at].size() < shortestCentral) continue;
        double sum = 0;
        for (const auto& term : terms[at]) sum += frequencies[term] - 1;
        scored.push_back({.passage = at, .score = sum / std::sqrt(static_cast<double>(terms[at].size()))});
    }
    sortByScore(scored);
    if (scored.size() > most) scored.resize(most);
    std::vector<std::size_t> central;
    for (const auto& row : scored) central.push_back(row.passage);
    std::ranges::sort(central);
    return central;
}

}  // namespace dorix::service
