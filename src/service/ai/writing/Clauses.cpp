#include "service/ai/writing/Clauses.h"

#include "base/text/Text.h"
#include "service/ai/writing/ClauseWords.h"
#include "service/ai/writing/Grammar.h"
#include "service/ai/writing/Names.h"
#include "service/ai/writing/WritingWords.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace dorix::service {

namespace {

constexpr std::size_t leastWords = 2;       // of a dictation that is looked at
constexpr std::size_t longestFronted = 12;  // words of a clause that comes first
constexpr std::size_t farthestJoined = 5;   // words from "y" to the verb that it joins
constexpr std::size_t mostNameWords = 3;    // behind a farewell

/// Walks a dictation of one language from sentence to sentence.
class Walk {
 public:
    Walk(Tokens& tokens, const Grammar& grammar) : tokens_(tokens), grammar_(grammar) {}

    void run(std::size_t from, std::size_t to) {
        begin(from);
        for (std::size_t at = from; at < to;) {
            const auto opened = at == begin_ ? openingAt(at, to) : 0;
            at += opened > 0 ? opened : stepAt(at);
        }
    }

 private:
    void begin(std::size_t at) {
        begin_ = at;
        free_ = 1;
        verbs_ = 0;
        conjunction_.reset();
        condition_.reset();
        isFronted_ = isSubordinate(at);
        if (isFronted_ || grammar_.isLink(at, at)) free_ = 2;
    }

    bool isSubordinate(std::size_t at) const {
        static const WordSet set({"si", "cuando", "aunque", "mientras", "if", "when", "while", "although",
                                  "though", "unless", "once"});
        return at < tokens_.size() && set.contains(tokens_[at].key) &&
               tokens_[at].key == text::lowercase(tokens_[at].text);
    }

    void mark(std::size_t at, std::string_view mark) {
        if (at > 0 && tokens_[at - 1].closing.empty()) tokens_[at - 1].closing = mark;
    }

    /// What a sentence may open with that has punctuation of its own; so many words.
    std::size_t openingAt(std::size_t at, std::size_t to) {
        static const Phrases talk(words::smallTalk());
        static const WordSet goOn({"a", "de", "del", "que", "of", "to"});  // "además de"
        if (const auto words = talk.wordsAt(tokens_, at);
            words > 0 && at + words < to && isSentence(at + words)) {
            mark(at + words, "?");
            begin(at + words);
            return words;
        }
        if (const auto words = grammar_.introductions().wordsAt(tokens_, at);
            words > 0 && at + words < to && !goOn.contains(tokens_[at + words].key)) {
            mark(at + words, ",");
            begin(at + words);
            return words;
        }
        const auto words = grammar_.formulas().wordsAt(tokens_, at);
        if (words > 0) free_ = 0;
        return words;
    }

    bool isSentence(std::size_t at) const {
        static const WordSet openers({"mira", "oye", "gracias", "thanks"});
        return grammar_.verbAt(at) || grammar_.startAt(at) > 0 || openers.contains(tokens_[at].key);
    }

    std::size_t stepAt(std::size_t at) {
        static const Phrases turns(words::turns());
        if (at > begin_ + 1 && turns.wordsAt(tokens_, at) > 0 && !grammar_.isConjunction(at - 1)) {
            mark(at, ".");
            begin(at);
            return 0;
        }
        if (const auto words = at > begin_ + 1 ? grammar_.startAt(at) : 0) {
            mark(at, isFronted_ || tokens_[begin_].key == "to" ? "," : ".");
            begin(at);
            free_ = 0;
            return words;
        }
        if (grammar_.asksAnew(at, begin_)) {
            mark(at, ".");
            begin(at);
            return 1;
        }
        if (const auto verb = grammar_.verbAt(at)) {
            take(*verb);
            return verb->end - at;
        }
        if (at != begin_ && grammar_.isLink(at, begin_)) {
            ++free_;
            if (grammar_.isCondition(tokens_[at].key)) condition_ = Condition{.at = at, .verbs = verbs_};
        }
        if (grammar_.isConjunction(at)) conjunction_ = at;
        return 1;
    }

    void take(const Verb& verb) {
        if (grammar_.isOfNoun(verb, begin_)) return;
        if (isJoined(verb)) {
            conjunction_.reset();
            return;
        }
        if (free_ > 0) {
            --free_;
            if (++verbs_ == 2 && isFronted_) separate(verb);
            return;
        }
        if (verb.isDependent || !grammar_.mayBegin(verb)) return;
        const bool isConditional = condition_ && verbs_ == condition_->verbs + 1;
        const auto start = isConditional ? std::optional(condition_->at) : grammar_.clauseStart(verb, begin_);
        if (!start || *start <= begin_) return;
        mark(*start, ".");
        begin(*start);
        free_ = 0;
        verbs_ = 1;
        if (isConditional) separate(verb);
    }

    /// Puts a comma between a clause that comes first and the one that it belongs to.
    void separate(const Verb& verb) {
        isFronted_ = false;
        auto start = grammar_.clauseStart(verb, begin_);
        if (!start || *start <= begin_ + 1 || *start > begin_ + longestFronted) return;
        if (tokens_[*start - 1].key == "entonces" || tokens_[*start - 1].key == "then") --*start;
        if (!grammar_.isLink(*start - 1, begin_)) mark(*start, ",");
    }

    /// Whether "y" joins the verb, and not two words of one kind that stand before it.
    bool isJoined(const Verb& verb) const {
        if (!conjunction_ || verb.begin - *conjunction_ > farthestJoined) return false;
        const auto next = *conjunction_ + 1;
        if (verb.begin == next || *conjunction_ == 0) return true;
        const auto& one = tokens_[*conjunction_ - 1];
        const auto& other = tokens_[next];
        if (one.key == "so" || tokens_[*conjunction_].key == "so") return false;
        const auto areBoth = [&](const WordSet& set) {
            return set.contains(one.key) && set.contains(other.key);
        };
        return !areBoth(words::months()) && !areBoth(words::weekdays()) && !areBoth(words::numbers());
    }

    struct Condition {
        std::size_t at = 0;
        int verbs = 0;  // of the sentence before it
    };

    Tokens& tokens_;
    const Grammar& grammar_;
    std::size_t begin_ = 0;
    int free_ = 1;  // finite verbs that may still come
    int verbs_ = 0;
    bool isFronted_ = false;  // the sentence begins with a subordinate clause
    std::optional<std::size_t> conjunction_;
    std::optional<Condition> condition_;
};

bool isUnmarked(const Tokens& tokens) {
    const auto isPlain = [](const Token& token) {
        return token.closing.empty() && token.opening.empty() && token.gap == Gap::blank &&
               token.marker.empty();
    };
    return tokens.size() >= leastWords && std::all_of(tokens.begin(), tokens.end() - 1, isPlain);
}

/// The greeting gets its comma; where what follows begins.
std::size_t endGreeting(Tokens& tokens, const Grammar& grammar) {
    static const Phrases talk(words::smallTalk());
    static const Phrases greetings(words::greetings());
    const auto words = greetings.wordsAt(tokens, 0);
    const auto end = words == 0 ? 0 : words + addresseeAt(tokens, words);
    if (words == 0 || end >= tokens.size()) return 0;
    if (end == words) {  // nobody is named, or somebody by a word that may be anything
        if (!grammar.verbAt(end) && talk.wordsAt(tokens, end) == 0) return 0;
        tokens[end - 1].closing = ",";
        return end;
    }
    // "Buenos días, Ana": a vocative has a comma; behind "hola" and "hi" most people leave it out.
    if (words > 1 && tokens[0].key.starts_with("buen")) tokens[words - 1].closing = ",";
    tokens[end - 1].closing = words > 1 ? "." : ",";
    return end;
}

/// "Gracias, un saludo": the thanks before a farewell belong to it.
std::size_t endBeforeThanks(Tokens& tokens, std::size_t from, std::size_t farewell) {
    static const Phrases thanks(words::thanks());
    for (std::size_t words = 1; words <= 2 && farewell > from + words; ++words) {
        const auto at = farewell - words;
        if (thanks.wordsAt(tokens, at) != words || tokens[at - 1].key == "muchas") continue;
        tokens[at - 1].closing = ".";
        return at;
    }
    return farewell;
}

/// The farewell at the very end, with a name or without; where it begins.
std::size_t endBeforeFarewell(Tokens& tokens, std::size_t from) {
    static const Phrases farewells(words::farewells());
    static const WordSet partOfIt(
        {"decir", "di",   "dile", "da",     "dale", "dar",   "doy",  "dio",  "das",    "dando", "mando",
         "manda", "las",  "los",  "de",     "por",  "y",     "con",  "un",   "muchas", "mil",   "dice",
         "say",   "says", "said", "saying", "of",   "the",   "to",   "no",   "with",   "and",   "many",
         "her",   "his",  "my",   "your",   "send", "sends", "give", "gives"});
    for (auto at = from + 1; at < tokens.size(); ++at) {
        const auto words = farewells.wordsAt(tokens, at);
        if (words == 0 || partOfIt.contains(tokens[at - 1].key)) continue;
        const auto name = at + words;
        if (tokens.size() - name > mostNameWords) continue;
        if (!std::all_of(tokens.begin() + static_cast<std::ptrdiff_t>(name), tokens.end(), isCapital))
            continue;
        tokens[at - 1].closing = at > 1 ? "." : ",";
        if (name < tokens.size()) tokens[name - 1].closing = ",";
        return endBeforeThanks(tokens, from, at);
    }
    return tokens.size();
}

}  // namespace

void breakSentences(Tokens& tokens, Spoken spoken) {
    if (spoken.spanish == spoken.english || !isUnmarked(tokens)) return;
    const auto grammar = spoken.spanish ? spanishGrammar(tokens) : englishGrammar(tokens);
    const auto body = endGreeting(tokens, *grammar);
    const auto end = endBeforeFarewell(tokens, body);
    Walk(tokens, *grammar).run(body, end);
}

}  // namespace dorix::service
