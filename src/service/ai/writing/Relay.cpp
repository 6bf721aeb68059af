#include "service/ai/writing/Relay.h"

#include "base/text/Text.h"
#include "service/ai/WordSet.h"
#include "service/ai/writing/ClauseWords.h"
#include "service/ai/writing/Grammar.h"
#include "service/ai/writing/Names.h"
#include "service/ai/writing/WritingWords.h"

#include <algorithm>
#include <optional>

namespace dorix::service {

namespace {

constexpr std::size_t leastWords = 2;       // of a message
constexpr std::size_t farthestVerb = 6;     // from its beginning
constexpr std::size_t farthestSubject = 3;  // behind the verb

/// The words of the name, and where the message begins.
struct Order {
    std::size_t name = 0;
    std::size_t message = 0;
};

std::string_view keyAt(const Tokens& tokens, std::size_t at) {
    return at < tokens.size() ? std::string_view(tokens[at].key) : std::string_view();
}

bool isRelative(std::string_view key) {
    static const WordSet set({"mom", "mum", "dad", "mama", "papa"});
    return set.contains(key);
}

/// Behind the words of the name.
std::optional<std::size_t> nameEnd(const Tokens& tokens, std::size_t at) {
    const auto words = isRelative(keyAt(tokens, at)) ? 1 : addresseeAt(tokens, at);
    if (words == 0 || at + words >= tokens.size()) return std::nullopt;
    for (std::size_t word = at; word < at + words; ++word) {
        if (tokens[word].endsClause()) return std::nullopt;
    }
    return at + words;
}

bool hasAny(const Tokens& tokens, std::size_t from, const WordSet& set) {
    return std::any_of(tokens.begin() + static_cast<std::ptrdiff_t>(from), tokens.end(),
                       [&](const Token& token) { return set.contains(token.key); });
}

bool isFirstPerson(std::string_view verb) {
    return verb.ends_with("o") || verb.ends_with("oy") || verb.ends_with("mos") || verb.ends_with("é") ||
           verb == "he" || verb == "hay";
}

/// "El informe está listo" and "ya está arreglado el fallo" say whose verb it is; "está enferma" does not.
bool hasSubject(const Tokens& tokens, std::size_t from, std::size_t verbEnd) {
    if (words::determiners().contains(tokens[from].key)) return true;
    for (auto at = verbEnd + 1; at < tokens.size() && at <= verbEnd + farthestSubject; ++at) {
        if (words::determiners().contains(tokens[at].key))
            return !words::leadWords().contains(tokens[at - 1].key);
    }
    return false;
}

bool isSpanishStatement(const Tokens& tokens, std::size_t from) {
    static const WordSet ofSomebody({"le", "les", "se", "su", "sus", "ella", "consigo", "suyo", "suya"});
    if (hasAny(tokens, from, ofSomebody)) return false;
    const auto grammar = spanishGrammar(tokens);
    std::optional<Verb> first;
    for (auto at = from; at < tokens.size(); ++at) {
        if (keyAt(tokens, at) == "y" && keyAt(tokens, at + 1) == "que") return false;
        const auto verb = grammar->verbAt(at);
        if (!verb) continue;
        // "La quiero": the pronoun is whoever is told so.
        if (words::spanishArticleClitics().contains(tokens[at].key)) return false;
        if (!first && at <= from + farthestVerb) first = verb;
    }
    if (!first || first->isDependent) return false;
    const auto spelled = text::lowercase(tokens[first->end - 1].text);
    return first->isThird ? hasSubject(tokens, from, first->end) : isFirstPerson(spelled);
}

std::optional<Order> spanishOrder(const Tokens& tokens) {
    static const WordSet orders({"dile", "digale", "decidle"});
    if (!orders.contains(keyAt(tokens, 0)) || keyAt(tokens, 1) != "a") return std::nullopt;
    const auto end = nameEnd(tokens, 2);
    if (!end || keyAt(tokens, *end) != "que" || *end + leastWords >= tokens.size()) return std::nullopt;
    if (!isSpanishStatement(tokens, *end + 1)) return std::nullopt;
    return Order{.name = 2, .message = *end + 1};
}

std::optional<Order> englishOrder(const Tokens& tokens) {
    static const WordSet ofSomebody({"he", "he's", "he'll", "he'd", "she", "she's", "she'll", "she'd", "him",
                                     "her", "his", "hers", "himself", "herself"});
    if (keyAt(tokens, 0) != "tell") return std::nullopt;
    const auto end = nameEnd(tokens, 1);
    if (!end || hasAny(tokens, *end, ofSomebody)) return std::nullopt;
    const bool hasThat = keyAt(tokens, *end) == "that";
    const auto message = *end + (hasThat ? 1 : 0);
    if (message + leastWords > tokens.size()) return std::nullopt;
    const auto& first = tokens[message].key;
    const bool isStatement = words::subjects().contains(first) || words::determiners().contains(first);
    return isStatement ? std::optional(Order{.name = 1, .message = message}) : std::nullopt;
}

}  // namespace

void relay(Tokens& tokens, Spoken spoken, Gap gap) {
    auto order = spoken.spanish ? spanishOrder(tokens) : std::nullopt;
    if (!order && spoken.english) order = englishOrder(tokens);
    if (!order) return;
    Tokens message;
    for (auto at = order->name; at < tokens.size(); ++at) {
        const bool isName = at < order->message && (tokens[at].key != "que" && tokens[at].key != "that");
        const bool isLink = keyAt(tokens, at) == "that" && keyAt(tokens, at - 1) == "and";
        if ((isName || at >= order->message) && !isLink) message.push_back(tokens[at]);
        if (isName && isRelative(tokens[at].key))
            message.back().text = text::capitalizeFirst(tokens[at].text);
        if (at + 1 == order->message) {
            message.back().closing = ",";
            tokens[order->message].gap = gap;
        }
    }
    message.front().gap = tokens.front().gap;
    tokens = std::move(message);
}

}  // namespace dorix::service
