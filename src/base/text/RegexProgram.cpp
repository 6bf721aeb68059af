#include "base/text/RegexProgram.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <ranges>
#include <utility>

namespace dorix::regexprogram {

namespace {

/// A piece of a pattern.
struct Expression {
    enum class Kind : std::uint8_t { node, sequence, choice, optional, anyNumber, oneOrMore };

    Kind kind = Kind::sequence;
    Node::Kind nodeKind{};  // of the kind `node`, as is what follows
    SymbolSet symbols;
    std::vector<Expression> parts;  // one for the repetitions
};

SymbolSet only(unsigned char symbol) { return SymbolSet().set(symbol); }

Expression nodeExpression(Node::Kind kind, SymbolSet symbols = {}) {
    return {.kind = Expression::Kind::node, .nodeKind = kind, .symbols = symbols, .parts = {}};
}

Expression emptyExpression(Expression::Kind kind) {
    return {.kind = kind, .nodeKind = {}, .symbols = {}, .parts = {}};
}

class Parser {
 public:
    explicit Parser(std::string_view pattern) : pattern_(pattern) {}

    Expression parse() {
        Expression whole = choice();
        if (!atEnd()) reject();
        return whole;
    }

 private:
    Expression choice() {
        Expression alternatives = emptyExpression(Expression::Kind::choice);
        do {
            alternatives.parts.push_back(sequence());
        } while (take('|'));
        return alternatives;
    }

    Expression sequence() {
        Expression pieces = emptyExpression(Expression::Kind::sequence);
        while (!atEnd() && pattern_[at_] != '|' && pattern_[at_] != ')') pieces.parts.push_back(repeated());
        return pieces;
    }

    Expression repeated() {
        Expression piece = single();
        auto kind = Expression::Kind::node;
        if (take('?')) kind = Expression::Kind::optional;
        if (take('*')) kind = Expression::Kind::anyNumber;
        if (take('+')) kind = Expression::Kind::oneOrMore;
        if (kind == Expression::Kind::node) return piece;
        Expression repetition = emptyExpression(kind);
        repetition.parts.push_back(std::move(piece));
        return repetition;
    }

    Expression single() {
        const char c = pattern_[at_++];
        switch (c) {
            case '(':
                return group();
            case '[':
                return nodeExpression(Node::Kind::symbols, characterClass());
            case '^':
                return nodeExpression(Node::Kind::textStart);
            case '$':
                return nodeExpression(Node::Kind::textEnd);
            case '.':
                return nodeExpression(Node::Kind::symbols, SymbolSet().set());
            case '\\':
                return escape();
            case '?':
            case '*':
            case '+':
            case '{':
                reject();
            default:
                return letter(c);
        }
    }

    Expression group() {
        if (!atEnd() && pattern_[at_] == '?') reject();
        Expression inside = choice();
        if (!take(')')) reject();
        return inside;
    }

    Expression escape() {
        if (!take('b')) reject();
        return nodeExpression(Node::Kind::wordBoundary);
    }

    /// A letter beyond ASCII has no symbol of its own, and so never matches.
    Expression letter(char c) {
        if (static_cast<unsigned char>(c) < 0x80) return nodeExpression(Node::Kind::symbols, only(byte(c)));
        while (!atEnd() && (byte(pattern_[at_]) & 0xC0) == 0x80) ++at_;
        return nodeExpression(Node::Kind::symbols);
    }

    SymbolSet characterClass() {
        SymbolSet set;
        while (!take(']')) {
            const unsigned char first = classMember();
            // A hyphen that closes the class stands for itself.
            const bool isRange =
                at_ + 1 < pattern_.size() && pattern_[at_] == '-' && pattern_[at_ + 1] != ']';
            if (isRange) ++at_;
            const unsigned char last = isRange ? classMember() : first;
            for (unsigned symbol = first; symbol <= last; ++symbol) set.set(symbol);
        }
        return set;
    }

    unsigned char classMember() {
        if (atEnd()) reject();
        const unsigned char c = byte(pattern_[at_++]);
        if (c >= 0x80 || c == '^' || c == '[' || c == '\\' || c == '&') reject();
        return c;
    }

    static unsigned char byte(char c) { return static_cast<unsigned char>(c); }
    bool atEnd() const { return at_ == pattern_.size(); }

    bool take(char wanted) {
        if (atEnd() || pattern_[at_] != wanted) return false;
        ++at_;
        return true;
    }

    [[noreturn]] void reject() const {
        std::fprintf(stderr, "no linear regular expression, at byte %zu: %.*s\n", at_,
                     static_cast<int>(pattern_.size()), pattern_.data());
        std::abort();
    }

    std::string_view pattern_;
    std::size_t at_ = 0;
};

/// Lays nodes from the end of a pattern to its start, so that each knows what comes next.
class Layout {
 public:
    NodeIndex add(Node node) {
        if (nodes_.size() > std::numeric_limits<NodeIndex>::max()) std::abort();
        nodes_.push_back(node);
        return static_cast<NodeIndex>(nodes_.size() - 1);
    }

    NodeIndex fork(NodeIndex next, NodeIndex other) {
        return add({.kind = Node::Kind::fork, .next = next, .other = other});
    }

    /// The first node of an expression after which `next` comes.
    NodeIndex lay(const Expression& expression, NodeIndex next) {
        using enum Expression::Kind;
        switch (expression.kind) {
            case node:
                return add({expression.nodeKind, indexOf(expression.symbols), next});
            case sequence:
                return laySequence(expression, next);
            case choice:
                return layChoice(expression, next);
            case optional:
                return fork(lay(expression.parts.front(), next), next);
            case anyNumber:
                return layLoop(expression.parts.front(), next);
            case oneOrMore:
                return nodes_[layLoop(expression.parts.front(), next)].next;
        }
        std::unreachable();
    }

    Program program(NodeIndex start) && {
        return {.nodes = std::move(nodes_), .sets = std::move(sets_), .start = start};
    }

 private:
    NodeIndex laySequence(const Expression& expression, NodeIndex next) {
        for (const auto& part : expression.parts | std::views::reverse) next = lay(part, next);
        return next;
    }

    NodeIndex layChoice(const Expression& expression, NodeIndex next) {
        NodeIndex ways = lay(expression.parts.back(), next);
        for (const auto& part : expression.parts | std::views::reverse | std::views::drop(1)) {
            ways = fork(lay(part, next), ways);
        }
        return ways;
    }

    /// A fork whose first way is the body, which leads back to it.
    NodeIndex layLoop(const Expression& body, NodeIndex next) {
        const NodeIndex loop = fork(0, next);
        const NodeIndex first = lay(body, loop);
        nodes_[loop].next = first;
        return loop;
    }

    std::uint8_t indexOf(const SymbolSet& symbols) {
        const auto found = std::ranges::find(sets_, symbols);
        const auto index = found - sets_.begin();
        if (found == sets_.end()) sets_.push_back(symbols);
        if (index > std::numeric_limits<std::uint8_t>::max()) std::abort();
        return static_cast<std::uint8_t>(index);
    }

    std::vector<Node> nodes_;
    std::vector<SymbolSet> sets_;
};

}  // namespace

Program compile(std::span<const std::string_view> patterns) {
    Expression any = emptyExpression(Expression::Kind::choice);
    for (const auto pattern : patterns) any.parts.push_back(Parser(pattern).parse());
    if (any.parts.empty()) any.parts.push_back(nodeExpression(Node::Kind::symbols));  // never matches
    Layout layout;
    const NodeIndex match = layout.add({.kind = Node::Kind::match});
    const NodeIndex start = layout.lay(any, match);
    return std::move(layout).program(start);
}

}  // namespace dorix::regexprogram
