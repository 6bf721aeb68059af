#include "service/ai/writing/SpokenMarks.h"

#include "service/ai/writing/PhraseTable.h"
#include "service/ai/writing/WritingWords.h"

#include <algorithm>
#include <utility>

namespace dorix::service {

namespace {

using Certainty = SpokenMark::Certainty;
using Effect = SpokenMark::Effect;

constexpr std::size_t subjunctiveReach = 4;  // words from "que" to its verb

bool isAmong(std::span<const std::string_view> words, std::string_view word) {
    return std::ranges::find(words, word) != words.end();
}

/// Marks at the end of a word, without those that close a bracket or a quotation.
std::string withoutStops(std::string_view closing) {
    static constexpr std::string_view ellipsis = "…";
    while (!closing.empty()) {
        if (std::string_view(",.;:?!").contains(closing.back())) {
            closing.remove_suffix(1);
        } else if (closing.ends_with(ellipsis)) {
            closing.remove_suffix(ellipsis.size());
        } else {
            break;
        }
    }
    return std::string(closing);
}

/// Walks a dictation, and knows at each word whether a mark is dictated there.
class Marks {
 public:
    explicit Marks(const Tokens& tokens) : tokens_(tokens) { dictatesMarks_ = showsHabit(); }

    const SpokenMark* at(std::size_t at) const {
        static const PhraseTable<SpokenMark> table(spokenMarks());
        const auto* mark = table.longestAt(tokens_, at);
        return mark != nullptr && isCommand(*mark, at) ? mark : nullptr;
    }

 private:
    /// Whether a mark was dictated that is nothing else, or two that hardly are.
    bool showsHabit() const {
        int likely = 0;
        for (std::size_t at = 0; at < tokens_.size(); ++at) {
            const auto* mark = this->at(at);
            if (mark == nullptr) continue;
            if (mark->certainty == Certainty::clear || ++likely == 2) return true;
        }
        return false;
    }

    bool isCommand(const SpokenMark& mark, std::size_t at) const {
        const std::size_t next = at + wordsIn(mark.phrase);
        if (at == 0 && mark.effect != Effect::opening) return false;  // there is nothing that it could end
        if (next >= tokens_.size() && mark.effect == Effect::opening) return false;
        const auto last = at == 0 ? std::string_view() : std::string_view(tokens_[at - 1].key);
        const auto following =
            next < tokens_.size() ? std::string_view(tokens_[next].key) : std::string_view();
        const bool isApart = at > 0 && tokens_[at - 1].endsClause();
        const bool leads = words::determiners().contains(last) || words::leadWords().contains(last);
        if (!isApart && (leads || isAmong(mark.notAfter, last))) return false;
        const bool goesOn = !tokens_[next - 1].endsClause();
        if (goesOn && isAmong(mark.notBefore, following)) return false;
        if (mark.certainty == Certainty::weak) return dictatesMarks_;
        return mark.certainty == Certainty::clear || isLikely(mark, at, next);
    }

    bool isLikely(const SpokenMark& mark, std::size_t at, std::size_t next) const {
        if (mark.phrase == "coma") return !followsQue(at) || dictatesMarks_;
        if (mark.phrase != "period") return true;
        const bool namesSomething = at >= 2 && words::determiners().contains(tokens_[at - 2].key);
        return dictatesMarks_ || (next == tokens_.size() && !namesSomething);
    }

    /// In "que Juan coma" it is a verb.
    bool followsQue(std::size_t at) const {
        for (std::size_t back = 1; back <= subjunctiveReach && back <= at; ++back) {
            const auto& token = tokens_[at - back];
            if (token.endsClause()) return false;
            if (token.key == "que" || token.key == "cuando") return true;
        }
        return false;
    }

    const Tokens& tokens_;
    bool dictatesMarks_ = false;
};

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// Whether the mark is the one within a number, as in "3 coma 5".
bool isDecimal(const SpokenMark& mark, const Tokens& written, const Tokens& tokens, std::size_t next) {
    if (mark.phrase != "coma" && mark.phrase != "punto") return false;
    if (written.empty() || next >= tokens.size() || written.back().endsClause()) return false;
    const auto& before = written.back().text;
    const auto& behind = tokens[next].text;
    return !before.empty() && !behind.empty() && isDigit(before.back()) && isDigit(behind.front());
}

/// Puts words and marks together.
class Writing {
 public:
    void add(Token word) {
        handOver(waiting_, word);
        waiting_ = {};
        written_.push_back(std::move(word));
    }

    /// Writes a mark for the words from `first` up to `last`.
    void add(const SpokenMark& mark, const Token& first, const Token& last) {
        handOver(first, waiting_);
        if (mark.effect == Effect::opening) {
            waiting_.opening += mark.mark;
        } else if (!mark.mark.empty() && !written_.empty()) {
            written_.back().closing = withoutStops(written_.back().closing) + std::string(mark.mark);
        }
        if (mark.effect == Effect::line) waiting_.gap = std::max(waiting_.gap, Gap::line);
        if (mark.effect == Effect::paragraph) waiting_.gap = Gap::paragraph;
        if (!written_.empty()) written_.back().closing += withoutStops(last.closing);
    }

    void joinNumber(std::string_view mark, const Token& rest) {
        auto& number = written_.back();
        number.text += std::string(mark) + rest.text;
        number.key = keyOf(number.text);
        number.closing = rest.closing;
    }

    const Tokens& written() const { return written_; }
    Tokens take() { return std::move(written_); }

 private:
    Tokens written_;
    Token waiting_;  // what was dictated for the front of the next word
};

}  // namespace

Tokens withSpokenMarks(const Tokens& tokens) {
    const Marks marks(tokens);
    Writing writing;
    for (std::size_t at = 0; at < tokens.size();) {
        const auto* mark = marks.at(at);
        if (mark == nullptr) {
            writing.add(tokens[at++]);
            continue;
        }
        const auto next = at + wordsIn(mark->phrase);
        if (isDecimal(*mark, writing.written(), tokens, next)) {
            writing.joinNumber(mark->mark, tokens[next]);
            at = next + 1;
        } else {
            writing.add(*mark, tokens[at], tokens[next - 1]);
            at = next;
        }
    }
    return writing.take();
}

}  // namespace dorix::service
