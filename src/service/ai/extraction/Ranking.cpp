#include "service/ai/extraction/Ranking.h"

#include "base/text/Text.h"
#include "service/ai/extraction/ExtractionWords.h"
#include "service/ai/extraction/Terms.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

namespace dorix::service {

namespace {

// Okapi BM25, as it is used for short texts.
constexpr double saturation = 1.2;
constexpr double lengthWeight = 0.4;

constexpr double contextWeight =
    0.5;  // of a word that is in the title or the sentence before, and not in its own
constexpr double lackingKind =
    0.6;  // of the worth of a sentence without the time or amount that is asked for
constexpr double leastCoverage = 0.55;
constexpr double leastOfBest = 0.75;
constexpr std::size_t mostQuoted = 3;
constexpr std::size_t shortestCentral = 5;  // words; what is shorter is a heading

/// What the answer to a question holds.
enum class Asked : std::uint8_t { anything, time, amount, person };

struct Question {
    std::unordered_map<std::string, std::size_t> terms;  // and the place of each
    Asked asked = Asked::anything;
};

Question questionOf(std::string_view text) {
    Question question;
    const auto folded = text::fold(text);
    for (const auto word : foldedWords(folded)) {
        if (words::timeQuestions().contains(word))
            question.asked = Asked::time;
        else if (question.asked == Asked::anything && words::amountQuestions().contains(word))
            question.asked = Asked::amount;
        else if (question.asked == Asked::anything && words::personQuestions().contains(word))
            question.asked = Asked::person;
        if (auto term = termOf(word); !term.empty())
            question.terms.emplace(std::move(term), question.terms.size());
    }
    return question;
}

bool hasDigit(std::string_view text) { return text.find_first_of("0123456789") != std::string_view::npos; }

bool hasAny(const std::vector<std::string_view>& words, const WordSet& set) {
    return std::ranges::any_of(words, [&](const auto word) { return set.contains(word); });
}

/// A capital behind a blank.
bool hasName(std::string_view text) {
    for (std::size_t at = 1; at < text.size(); ++at) {
        if (text[at - 1] == ' ' && text[at] >= 'A' && text[at] <= 'Z') return true;
    }
    return false;
}

bool holds(Asked asked, std::string_view text, const std::vector<std::string_view>& folded) {
    switch (asked) {
        case Asked::anything:
            return false;
        case Asked::time:
            return hasDigit(text) || hasAny(folded, words::timeWords());
        case Asked::amount:
            return hasDigit(text) || hasAny(folded, words::amountWords());
        case Asked::person:
            return hasName(text);
    }
    return false;
}

/// How often the words of the question are in a text; places of terms, and counts.
using Counts = std::unordered_map<std::size_t, double>;

struct Measured {
    Counts counts;
    std::size_t words = 0;
    bool holdsAsked = false;
};

Measured measured(std::string_view text, const Question& question) {
    const auto folded = text::fold(text);
    const auto words = foldedWords(folded);
    Measured result{.words = words.size(), .holdsAsked = holds(question.asked, text, words)};
    for (const auto word : words) {
        const auto term = question.terms.find(termOf(word));
        if (term != question.terms.end()) ++result.counts[term->second];
    }
    return result;
}

/// Judges passages by a question.
class Ranking {
 public:
    Ranking(const Question& question, const std::vector<Source>& sources,
            const std::vector<Passage>& passages)
        : question_(question), passages_(passages), weights_(question.terms.size()) {
        for (const auto& source : sources) titles_.push_back(measured(source.title, question));
        for (const auto& passage : passages) measured_.push_back(measured(passage.text, question));
        weigh();
    }

    /// How well a passage answers; none when it lacks too much of what is asked.
    std::optional<double> score(std::size_t at) const {
        const auto& own = measured_[at];
        if (own.counts.empty()) return std::nullopt;
        double sum = 0;
        for (const auto& [term, count] : own.counts) sum += weights_[term] * saturated(count, own.words);
        double matched = static_cast<double>(own.counts.size());
        for (const auto term : contextOf(at)) {
            if (own.counts.contains(term)) continue;
            sum += contextWeight * weights_[term];
            ++matched;
        }
        auto expected = static_cast<double>(question_.terms.size());
        if (question_.asked != Asked::anything) ++expected;
        if (own.holdsAsked) ++matched;
        if (matched / expected < leastCoverage) return std::nullopt;
        return question_.asked == Asked::anything || own.holdsAsked ? sum : lackingKind * sum;
    }

 private:
    void weigh() {
        std::vector<double> frequencies(weights_.size());
        double words = 0;
        for (const auto& passage : measured_) {
            for (const auto& [term, count] : passage.counts) ++frequencies[term];
            words += static_cast<double>(passage.words);
        }
        const auto count = static_cast<double>(passages_.size());
        averageWords_ = std::max(1.0, words / count);
        for (std::size_t term = 0; term < weights_.size(); ++term) {
            weights_[term] = std::log(1 + (count - frequencies[term] + 0.5) / (frequencies[term] + 0.5));
        }
    }

    double saturated(double count, std::size_t words) const {
        const double length = 1 - lengthWeight + lengthWeight * static_cast<double>(words) / averageWords_;
        return count * (saturation + 1) / (count + saturation * length);
    }

    /// The words of the question in the title and in the sentence before.
    std::vector<std::size_t> contextOf(std::size_t at) const {
        Counts context = titles_[passages_[at].source].counts;
        if (at > 0 && passages_[at - 1].source == passages_[at].source)
            context.insert(measured_[at - 1].counts.begin(), measured_[at - 1].counts.end());
        std::vector<std::size_t> terms;
        for (const auto& [term, count] : context) terms.push_back(term);
        return terms;
    }

    const Question& question_;
    const std::vector<Passage>& passages_;
    std::vector<double> weights_;
    std::vector<Measured> titles_;
    std::vector<Measured> measured_;
    double averageWords_ = 1;
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
    const auto asked = questionOf(question);
    if (asked.terms.empty() || passages.empty()) return {};
    const Ranking ranking(asked, sources, passages);
    std::vector<Scored> scored;
    for (std::size_t at = 0; at < passages.size(); ++at) {
        if (const auto score = ranking.score(at)) scored.push_back({.passage = at, .score = *score});
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
            if (auto term = termOf(word); !term.empty()) own.push_back(std::move(term));
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
