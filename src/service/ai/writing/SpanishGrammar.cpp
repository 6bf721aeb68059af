#include "base/text/Text.h"
#include "service/ai/writing/ClauseWords.h"
#include "service/ai/writing/Grammar.h"
#include "service/ai/writing/Names.h"
#include "service/ai/writing/WritingWords.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

namespace dorix::service {

namespace {

bool endsWithAny(std::string_view word, std::span<const std::string_view> endings) {
    return std::ranges::any_of(endings, [&](const auto ending) { return word.ends_with(ending); });
}

class Spanish final : public Grammar {
 public:
    using Grammar::Grammar;

    std::optional<Verb> verbAt(std::size_t at) const override {
        auto head = at;
        while (isLead(head)) ++head;
        const auto clitics = cliticsAt(head);
        const auto verb = head + clitics;
        if (!isWithin(verb)) return std::nullopt;
        if (words::spanishDependentVerbs().contains(text::lowercase(token(verb).text)))
            return Verb{.begin = at, .end = verb + 1, .isDependent = true};
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
        if (const auto article = articleBefore(verb.begin, begin)) return article;
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
    bool isOfNoun(const Verb&, std::size_t) const override { return false; }
    std::size_t startAt(std::size_t) const override { return 0; }

    /// Where no verb of knowing or asking came before it: "… cuándo te viene bien", but "dime cuándo".
    bool asksAnew(std::size_t at, std::size_t begin) const override {
        static const WordSet asking({"cuándo", "cuánto", "cuántos", "cuántas", "dónde", "quién"});
        if (at < begin + leastWordsBefore || !asking.contains(token(at).text) || isConjunction(at - 1) ||
            words::leadWords().contains(key(at - 1)))
            return false;
        for (auto word = std::max(begin, at - std::min(at, farthestAsking)); word < at; ++word) {
            if (words::spanishAskingVerbs().contains(key(word).substr(0, stem))) return false;
        }
        return true;
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
    static constexpr std::size_t leastWordsBefore = 3;  // of the sentence that a question ends
    static constexpr std::size_t farthestAsking = 30;   // words back to a verb that asks
    static constexpr std::size_t stem = 4;              // bytes that tell a verb

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
        if (spelled == "hace" && at > 0 && key(at - 1) == "no") return Person::third;  // else "hace dos años"
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

}  // namespace

std::unique_ptr<Grammar> spanishGrammar(const Tokens& tokens) { return std::make_unique<Spanish>(tokens); }

}  // namespace dorix::service
