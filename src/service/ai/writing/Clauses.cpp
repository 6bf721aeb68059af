#include "service/ai/writing/Clauses.h"

#include "base/text/Text.h"
#include "service/ai/writing/ClauseWords.h"
#include "service/ai/writing/Names.h"
#include "service/ai/writing/PhraseTable.h"
#include "service/ai/writing/WritingWords.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace dorix::service {

namespace {

constexpr std::size_t leastWords = 3;       // of a dictation that is looked at
constexpr std::size_t farthestJoined = 5;   // words from "y" to the verb that it joins
constexpr std::size_t farthestArticle = 8;  // words from a verb back to the article of its subject
constexpr std::size_t mostNameWords = 3;    // behind a farewell

bool endsWithAny(std::string_view word, std::span<const std::string_view> endings) {
    return std::ranges::any_of(endings, [&](const auto ending) { return word.ends_with(ending); });
}

/// A finite verb with what belongs to it in front.
struct Verb {
    std::size_t begin = 0;
    std::size_t end = 0;
    bool isThird = false;  // a noun may be its subject
    bool asks = false;     // it stands before its subject
};

/// What the walk over a dictation does not know of the language.
class Grammar {
 public:
    explicit Grammar(const Tokens& tokens) : tokens_(tokens) {}
    virtual ~Grammar() = default;

    virtual std::optional<Verb> verbAt(std::size_t at) const = 0;
    /// Whether the word joins a clause; not the question word that opens the sentence from `begin` on.
    virtual bool isLink(std::size_t at, std::size_t begin) const = 0;
    /// Whether a sentence may end before the verb, given that nothing joins it.
    virtual bool mayBegin(const Verb& verb) const = 0;
    virtual const Phrases& formulas() const = 0;
    virtual const Phrases& introductions() const = 0;
    virtual std::size_t startAt(std::size_t) const { return 0; }
    virtual bool isCondition(std::string_view key) const = 0;

    bool isConjunction(std::size_t at) const {
        static const WordSet set({"y", "e", "o", "u", "ni", "and", "or", "so"});
        return set.contains(key(at));
    }

    std::string_view key(std::size_t at) const {
        return at < tokens_.size() ? std::string_view(tokens_[at].key) : std::string_view();
    }

    bool isWithin(std::size_t at) const { return at < tokens_.size(); }
    const Token& token(std::size_t at) const { return tokens_[at]; }
    const Tokens& tokens() const { return tokens_; }

    /// Where the clause of a verb begins that nothing joins, with its subject; none where that is not clear.
    virtual std::optional<std::size_t> clauseStart(const Verb& verb, std::size_t begin) const = 0;

 protected:
    /// Whether a noun behind the word is its object.
    virtual bool governs(std::size_t at) const = 0;

    /// The article of the noun before a verb that is nobody's object; or that there is none (`isObject`), as
    /// the noun is one of another verb.
    struct Article {
        std::optional<std::size_t> at;
        bool isObject = false;
    };
    Article articleBefore(std::size_t verb, std::size_t begin) const {
        static const WordSet prepositions({"a",   "al",    "de",    "del",   "en",   "para",  "por",
                                           "con", "sobre", "desde", "hasta", "at",   "in",    "on",
                                           "to",  "from",  "for",   "by",    "with", "until", "of"});
        for (auto at = verb; at-- > begin + 1 && verb - at <= farthestArticle;) {
            if (!words::determiners().contains(key(at))) {
                if (governs(at) && !prepositions.contains(key(at)))
                    return {.at = std::nullopt, .isObject = true};
                continue;
            }
            if (prepositions.contains(key(at - 1))) continue;
            if (governs(at - 1)) return {.at = std::nullopt, .isObject = true};
            return {.at = at};
        }
        return {};
    }

 private:
    const Tokens& tokens_;
};

class Spanish final : public Grammar {
 public:
    using Grammar::Grammar;

    std::optional<Verb> verbAt(std::size_t at) const override {
        auto head = at;
        while (isLead(head)) ++head;
        const auto clitics = cliticsAt(head);
        const auto verb = head + clitics;
        if (!isWithin(verb)) return std::nullopt;
        const auto person = personOf(verb, at);
        const bool isClear = clitics > 0 && words::spanishClitics().contains(key(head)) && isContent(verb);
        if (!person && !isClear) return std::nullopt;
        return Verb{.begin = at, .end = verb + 1, .isThird = person.value_or(Person::third) == Person::third};
    }

    bool isLink(std::size_t at, std::size_t begin) const override {
        if (!words::spanishLinks().contains(key(at))) return false;
        const bool asks = text::lowercase(token(at).text) != key(at);
        return !asks || (at != begin && !(at == begin + 1 && words::leadWords().contains(key(begin))));
    }

    bool mayBegin(const Verb& verb) const override {
        static const WordSet before({"a",   "al",  "con",  "de", "del", "en", "para", "por",
                                     "sin", "no",  "lo",   "ya", "el",  "un", "una",  "mas",
                                     "muy", "tan", "cada", "mi", "su",  "tu", "hace", "yo"});
        return !before.contains(key(verb.begin - 1));
    }

    std::optional<std::size_t> clauseStart(const Verb& verb, std::size_t begin) const override {
        if (!verb.isThird) return verb.begin;
        if (const auto article = articleBefore(verb.begin, begin); article.at) return article.at;
        auto start = verb.begin;  // a verb needs no subject, and a name no article
        while (start > begin + 1 && isCapital(token(start - 1))) --start;
        return start < verb.begin && governs(start - 1) ? verb.begin : start;
    }

    const Phrases& formulas() const override {
        static const Phrases table(words::spanishFormulas());
        return table;
    }
    const Phrases& introductions() const override {
        static const Phrases table(words::spanishIntroductions());
        return table;
    }
    bool isCondition(std::string_view word) const override { return word == "si"; }

 protected:
    bool governs(std::size_t at) const override {
        const auto word = key(at);
        static constexpr auto endings = std::to_array<std::string_view>({"ar", "er", "ir", "ndo"});
        return words::leadWords().contains(word) || isLink(at, at + 1) || isConjunction(at) || isLead(at) ||
               endsWithAny(word, endings) || personOf(at, at) ||
               (at > 0 && words::spanishClitics().contains(key(at - 1)));
    }

 private:
    enum class Person : std::uint8_t { own, third };

    /// What may stand before the pronouns of a verb.
    bool isLead(std::size_t at) const {
        static const WordSet leads({"no", "ya", "yo", "tambien", "nosotros", "nosotras", "vosotros"});
        return leads.contains(key(at));
    }

    std::size_t cliticsAt(std::size_t at) const {
        std::size_t count = 0;
        const auto isClitic = [&](std::size_t word) {
            return words::spanishClitics().contains(key(word)) ||
                   words::spanishArticleClitics().contains(key(word));
        };
        while (count < 2 && isClitic(at + count)) ++count;
        return count;
    }

    /// No small word: those never stand between a pronoun and its verb.
    bool isContent(std::size_t at) const {
        return !words::leadWords().contains(key(at)) && !words::spanishLinks().contains(key(at)) &&
               !words::determiners().contains(key(at)) && !isConjunction(at) && key(at) != "eh";
    }

    std::optional<Person> personOf(std::size_t at, std::size_t begin) const {
        static const WordSet articles(
            {"el", "un", "una", "mi", "tu", "su", "este", "esta", "ese", "esa", "cada"});
        const auto spelled = text::lowercase(token(at).text);
        if (at > 0 && at == begin && articles.contains(key(at - 1)))
            return std::nullopt;  // "la era", "el debe"
        if (spelled == "es" && key(at + 1) == "decir") return std::nullopt;
        if (words::spanishOwnVerbs().contains(spelled) || isOwnForm(spelled) || isOrder(spelled))
            return Person::own;
        if (words::spanishThirdVerbs().contains(spelled) || isThirdForm(spelled)) return Person::third;
        return std::nullopt;
    }

    /// Endings of the first and second person that no other words have.
    static bool isOwnForm(std::string_view word) {
        static constexpr auto endings =
            std::to_array<std::string_view>({"aremos", "eremos", "iremos", "ábamos", "íamos", "aré", "eré",
                                             "iré", "aréis", "eréis", "iréis", "áis"});
        return word.size() > 5 && endsWithAny(word, endings);
    }

    static bool isThirdForm(std::string_view word) {
        static constexpr auto endings = std::to_array<std::string_view>(
            {"ará", "erá", "irá", "arán", "erán", "irán", "aron", "ieron", "aban", "ó"});
        return word.size() > 5 && endsWithAny(word, endings);
    }

    /// "Escríbeme", "apúntalo", "echadles": an order with its pronoun. "Esperándote" and "decírmelo" are
    /// none, nor are nouns as "película" and "límite".
    static bool isOrder(std::string_view word) {
        static constexpr auto plural =
            std::to_array<std::string_view>({"adme", "adle", "adles", "adlo", "adla", "adnos", "edme", "edlo",
                                             "idme", "idlo", "idle", "idles"});
        static constexpr auto singular = std::to_array<std::string_view>(
            {"ame", "eme", "anos", "enos", "alo", "elo", "alos", "elos", "ala", "ela", "ale", "ele"});
        static constexpr auto accents = std::to_array<std::string_view>({"á", "é", "í", "ó", "ú"});
        if (endsWithAny(word, plural)) return word.size() > 6;
        if (word.size() < 7 || !endsWithAny(word, singular)) return false;
        std::size_t accent = std::string_view::npos;
        for (const auto each : accents) accent = std::min(accent, word.find(each));
        if (accent == std::string_view::npos || accent + 2 >= word.size()) return false;
        const auto rest = word.substr(accent + 2);
        const bool isGerund = rest.starts_with("ndo");
        const bool isInfinitive =
            rest.starts_with("r") && rest.size() > 1 && !std::string_view("aeiou").contains(rest[1]);
        static const WordSet nouns({"escándalo", "vándalo", "sándalo", "óvalo", "intérvalo"});
        return !isGerund && !isInfinitive && !nouns.contains(word);
    }
};

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
        return !isClauseHead(verb.begin - 1) && !maySpecify(verb);
    }

    std::optional<std::size_t> clauseStart(const Verb& verb, std::size_t begin) const override {
        if (!verb.isThird) return verb.begin;
        const auto article = articleBefore(verb.begin, begin).at;
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
    bool isCondition(std::string_view word) const override { return word == "if"; }

 protected:
    bool governs(std::size_t at) const override {
        return words::leadWords().contains(key(at)) || isLink(at, at + 1) || isConjunction(at) ||
               isSubject(at) || words::englishAuxiliaries().contains(key(at)) || key(at).ends_with("ing") ||
               isSubject(at - 1) || isClauseHead(at);
    }

 private:
    bool isSubject(std::size_t at) const {
        if (!isWithin(at)) return false;
        if (words::subjects().contains(key(at))) return true;
        static const WordSet others({"it", "you", "this", "that", "these", "there", "mine", "ours", "yours"});
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
        if (isFronted_) free_ = 2;
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
        if (const auto words = talk.wordsAt(tokens_, at);
            words > 0 && at + words < to && isSentence(at + words)) {
            mark(at + words, "?");
            begin(at + words);
            return words;
        }
        if (const auto words = grammar_.introductions().wordsAt(tokens_, at);
            words > 0 && at + words < to && !words::leadWords().contains(tokens_[at + words].key)) {
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
            mark(at, isFronted_ ? "," : ".");
            begin(at);
            free_ = 0;
            return words;
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
        if (isJoined(verb)) {
            conjunction_.reset();
            return;
        }
        if (free_ > 0) {
            --free_;
            if (++verbs_ == 2 && isFronted_) separate(verb);
            return;
        }
        if (!grammar_.mayBegin(verb)) return;
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
        const auto start = grammar_.clauseStart(verb, begin_);
        if (start && *start > begin_ + 1 && !grammar_.isLink(*start - 1, begin_)) mark(*start, ",");
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
std::size_t endGreeting(Tokens& tokens) {
    static const Phrases greetings(words::greetings());
    const auto words = greetings.wordsAt(tokens, 0);
    const auto end = words == 0 ? 0 : words + addresseeAt(tokens, words);
    if (end <= words || end >= tokens.size()) return 0;
    // "Buenos días, Ana": a vocative has a comma; behind "hola" and "hi" most people leave it out.
    if (words > 1 && tokens[0].key.starts_with("buen")) tokens[words - 1].closing = ",";
    tokens[end - 1].closing = words > 1 ? "." : ",";
    return end;
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
        const bool isName =
            std::all_of(tokens.begin() + static_cast<std::ptrdiff_t>(name), tokens.end(), isCapital);
        if (tokens.size() - name > mostNameWords || !isName) continue;
        if (tokens.size() > leastWords)
            tokens[at - 1].closing = ".";
        else
            tokens[at - 1].closing = ",";
        if (name < tokens.size()) tokens[name - 1].closing = ",";
        return at;
    }
    return tokens.size();
}

}  // namespace

void breakSentences(Tokens& tokens, Spoken spoken) {
    if (spoken.spanish == spoken.english || !isUnmarked(tokens)) return;
    const auto body = endGreeting(tokens);
    const auto end = endBeforeFarewell(tokens, body);
    if (spoken.spanish) return Walk(tokens, Spanish(tokens)).run(body, end);
    Walk(tokens, English(tokens)).run(body, end);
}

}  // namespace dorix::service
