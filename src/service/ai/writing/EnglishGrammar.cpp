#include "service/ai/writing/ClauseWords.h"
#include "service/ai/writing/Grammar.h"
#include "service/ai/writing/WritingWords.h"

namespace dorix::service {

namespace {

class English final : public Grammar {
 public:
    using Grammar::Grammar;

    std::optional<Verb> verbAt(std::size_t at) const override {
        if (const auto question = inversion(at)) return question;
        if (isSubject(at)) return Verb{.begin = at, .end = at + 2};
        static const WordSet behindNouns({"is", "are", "was", "were", "isn't", "aren't", "wasn't", "weren't",
                                          "has", "hasn't", "haven't", "doesn't", "didn't", "won't"});
        if (behindNouns.contains(key(at)) || (words::englishPasts().contains(key(at)) && isLink(at - 1, at)))
            return Verb{.begin = at, .end = at + 1, .isThird = true};
        return std::nullopt;
    }

    bool isLink(std::size_t at, std::size_t begin) const override {
        return at != begin && words::englishLinks().contains(key(at));
    }

    bool mayBegin(const Verb& verb) const override {
        if (verb.asks) return !words::englishAuxiliaries().contains(key(verb.begin - 1));
        if (key(verb.begin) == "that's") return false;  // "the file that's broken"
        return !isClauseHead(verb.begin - 1) && (verb.isThird || !maySpecify(verb));
    }

    std::optional<std::size_t> clauseStart(const Verb& verb, std::size_t begin) const override {
        if (!verb.isThird) return verb.begin;
        if (repeats(verb.begin, begin)) return verb.begin - 1;
        const auto article = articleBefore(verb.begin, begin);
        return article && !key(*article - 1).ends_with("ed") ? article : std::nullopt;
    }

    const Phrases& formulas() const override {
        static const Phrases table(words::englishFormulas());
        return table;
    }
    const Phrases& introductions() const override {
        static const Phrases table(words::englishIntroductions());
        return table;
    }
    /// "Please", "see you", where nobody is said to do so.
    std::size_t startAt(std::size_t at) const override {
        static const Phrases table(words::englishStarts());
        static const WordSet before({"to",   "and",  "or",   "not",    "never", "you",  "we",
                                     "they", "just", "also", "always", "then",  "will", "please",
                                     "who",  "that", "but",  "so",     "if",    "when", "because"});
        if (at == 0 || before.contains(key(at - 1)) || words::subjects().contains(key(at - 1)) ||
            words::englishAuxiliaries().contains(key(at - 1)) || words::determiners().contains(key(at - 1)))
            return 0;
        return table.wordsAt(tokens(), at);
    }
    bool isOfNoun(const Verb& verb, std::size_t begin) const override {
        static const WordSet nouns({"all", "anything", "everyone", "everything", "nothing", "something"});
        if (verb.isThird || verb.asks || verb.begin <= begin) return false;
        return nouns.contains(key(verb.begin - 1)) ||
               (verb.begin > begin + 1 && !isLink(verb.begin - 1, begin) && key(begin) == "the" &&
                maySpecify(verb));
    }
    bool asksAnew(std::size_t, std::size_t) const override { return false; }

    bool isCondition(std::string_view word) const override { return word == "if"; }

 protected:
    bool governs(std::size_t at) const override {
        return words::leadWords().contains(key(at)) || isLink(at, at + 1) || isConjunction(at) ||
               isSubject(at) || words::englishAuxiliaries().contains(key(at)) || key(at).ends_with("ing") ||
               isSubject(at - 1) || isClauseHead(at);
    }

 private:
    /// "What is inflation inflation is…"
    bool repeats(std::size_t verb, std::size_t begin) const {
        return verb >= begin + 2 && key(verb - 1) == key(verb - 2);
    }

    bool isSubject(std::size_t at) const {
        if (!isWithin(at)) return false;
        if (words::subjects().contains(key(at))) return true;
        static const WordSet others({"it", "you", "this", "these", "there", "mine", "ours", "yours"});
        return others.contains(key(at)) && words::englishAuxiliaries().contains(key(at + 1));
    }

    bool isClauseHead(std::size_t at) const {
        const auto word = key(at);
        return words::englishClauseHeads().contains(word) || words::leadWords().contains(word) ||
               words::determiners().contains(word) || words::englishAuxiliaries().contains(word) ||
               words::englishLinks().contains(word) || isConjunction(at) || word == "about" || word == "of";
    }

    /// "Can you", "could someone", also behind a question word.
    std::optional<Verb> inversion(std::size_t at) const {
        static const WordSet asking({"what", "who", "where", "when", "why", "how"});
        static const WordSet asked(
            {"i", "we", "you", "he", "she", "they", "it", "someone", "anyone", "somebody", "anybody"});
        const auto verb = at + (asking.contains(key(at)) ? 1 : 0);
        if (!words::englishAuxiliaries().contains(key(verb)) || !asked.contains(key(verb + 1)))
            return std::nullopt;
        return Verb{.begin = at, .end = verb + 2, .asks = true};
    }

    /// Behind "the offer" a clause may say which one: "the offer I really like". Not with a form of "be" that
    /// no verb follows: "the late reply, I was on leave".
    bool maySpecify(const Verb& verb) const {
        static const WordSet openers(
            {"the", "every", "any", "those", "these", "some", "all", "best", "my", "our", "a", "an"});
        bool isDefinite = false;
        for (std::size_t back = 1; back <= 3 && back <= verb.begin; ++back)
            isDefinite |= openers.contains(key(verb.begin - back));
        if (!isDefinite) return false;
        static const WordSet contracted(
            {"i'm", "it's", "that's", "there's", "we're", "they're", "he's", "she's"});
        static const WordSet forms({"am", "is", "are", "was", "were"});
        const bool isForm = contracted.contains(key(verb.begin));
        const auto next = verb.begin + (isForm ? 1 : 2);
        const bool isBeing = isForm || forms.contains(key(verb.begin + 1));
        return !isBeing || !isWithin(next) || key(next).ends_with("ing");
    }
};

}  // namespace

std::unique_ptr<Grammar> englishGrammar(const Tokens& tokens) { return std::make_unique<English>(tokens); }

}  // namespace dorix::service
