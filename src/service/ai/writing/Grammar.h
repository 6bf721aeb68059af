#pragma once

#include "service/ai/writing/Dictation.h"
#include "service/ai/writing/PhraseTable.h"

#include <memory>
#include <optional>
#include <string_view>

namespace dorix::service {

/// A finite verb with what belongs to it in front.
struct Verb {
    std::size_t begin = 0;
    std::size_t end = 0;
    bool isThird = false;      // a noun may be its subject
    bool asks = false;         // it stands before its subject
    bool isDependent = false;  // it stands in no clause that is a sentence by itself
};

/// What breaking a dictation into sentences has to know of its language. Keeps a reference to the words.
class Grammar {
 public:
    explicit Grammar(const Tokens& tokens) : tokens_(tokens) {}
    virtual ~Grammar() = default;

    virtual std::optional<Verb> verbAt(std::size_t at) const = 0;
    /// Whether the word joins a clause; not the question word that opens the sentence from `begin` on.
    virtual bool isLink(std::size_t at, std::size_t begin) const = 0;
    /// Whether a sentence may end before the verb, given that nothing joins it.
    virtual bool mayBegin(const Verb& verb) const = 0;
    /// Whether the verb is within a noun's own clause that has no link: "the way you are doing it".
    virtual bool isOfNoun(const Verb& verb, std::size_t begin) const = 0;
    /// Where the clause of a verb begins that nothing joins, with its subject; none where that is not clear.
    virtual std::optional<std::size_t> clauseStart(const Verb& verb, std::size_t begin) const = 0;
    /// Openings that are a sentence by themselves, and those with a comma behind them.
    virtual const Phrases& formulas() const = 0;
    virtual const Phrases& introductions() const = 0;
    /// So many words that begin a sentence wherever they are said.
    virtual std::size_t startAt(std::size_t at) const = 0;
    /// Whether a question begins there that no word before it asks for.
    virtual bool asksAnew(std::size_t at, std::size_t begin) const = 0;
    virtual bool isCondition(std::string_view key) const = 0;

    bool isConjunction(std::size_t at) const;

    std::string_view key(std::size_t at) const {
        return at < tokens_.size() ? std::string_view(tokens_[at].key) : std::string_view();
    }

    bool isWithin(std::size_t at) const { return at < tokens_.size(); }
    const Token& token(std::size_t at) const { return tokens_[at]; }
    const Tokens& tokens() const { return tokens_; }

 protected:
    /// Whether a noun behind the word is its object.
    virtual bool governs(std::size_t at) const = 0;

    /// The article of the noun before a verb, unless that noun is the object of another.
    std::optional<std::size_t> articleBefore(std::size_t verb, std::size_t begin) const;

 private:
    const Tokens& tokens_;
};

std::unique_ptr<Grammar> spanishGrammar(const Tokens& tokens);
std::unique_ptr<Grammar> englishGrammar(const Tokens& tokens);

}  // namespace dorix::service
