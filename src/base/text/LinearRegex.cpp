#include "base/text/LinearRegex.h"

#include "base/text/RegexProgram.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace dorix {

using namespace regexprogram;

namespace {

using SymbolClass = std::uint8_t;

bool isWordSymbol(std::size_t symbol) {
    if (symbol >= 0x80) return symbol == otherWordSymbol;
    return symbol == '_' || (symbol >= '0' && symbol <= '9') || (symbol >= 'A' && symbol <= 'Z') ||
           (symbol >= 'a' && symbol <= 'z');
}

/// What ICU's \b takes for a part of a word.
bool isWordCharacter(UChar32 c) {
    constexpr auto wordCategories = U_GC_M_MASK | U_GC_ND_MASK | U_GC_PC_MASK;
    return u_hasBinaryProperty(c, UCHAR_ALPHABETIC) != 0 || (U_MASK(u_charType(c)) & wordCategories) != 0;
}

/// What ICU's \b looks through, as it belongs to the character before.
bool isAttached(UChar32 c) {
    return u_hasBinaryProperty(c, UCHAR_GRAPHEME_EXTEND) != 0 || u_charType(c) == U_FORMAT_CHAR;
}

/// The symbols that no node of a program tells apart share a class.
struct SymbolClasses {
    explicit SymbolClasses(const std::vector<SymbolSet>& sets) {
        for (std::size_t symbol = 0; symbol < symbolCount; ++symbol) {
            const auto same = std::ranges::find_if(representatives, [&](std::size_t other) {
                return isWordSymbol(symbol) == isWordSymbol(other) &&
                       std::ranges::all_of(sets, [&](const auto& set) { return set[symbol] == set[other]; });
            });
            of[symbol] = static_cast<SymbolClass>(same - representatives.begin());
            if (same == representatives.end()) representatives.push_back(symbol);
        }
    }

    std::array<SymbolClass, symbolCount> of{};
    std::vector<std::size_t> representatives;
};

/// Nodes without repetition, in the order in which they came.
class NodeSet {
 public:
    explicit NodeSet(std::size_t capacity) : holds_(capacity) {}

    bool insert(NodeIndex node) {
        if (holds_[node]) return false;
        holds_[node] = true;
        nodes_.push_back(node);
        return true;
    }

    void clear() {
        for (const auto node : nodes_) holds_[node] = false;
        nodes_.clear();
    }

    const std::vector<NodeIndex>& nodes() const { return nodes_; }

 private:
    std::vector<bool> holds_;
    std::vector<NodeIndex> nodes_;
};

/// What decides how a search goes on: the nodes at which it may be, sorted, and what came before.
struct Situation {
    std::vector<NodeIndex> nodes;
    bool atStart = false;
    bool afterWord = false;

    bool operator==(const Situation&) const = default;
};

struct SituationHash {
    std::size_t operator()(const Situation& situation) const {
        std::size_t hash = situation.afterWord ? 1 : 0;
        for (const auto node : situation.nodes) hash = (hash ^ node) * 0x100000001B3;
        return hash;
    }
};

constexpr std::size_t mostClasses = 40;

struct State {
    enum class Verdict : std::uint8_t { open, found, hopeless };

    Verdict verdict = Verdict::open;
    const Situation* situation = nullptr;  // of an open state, as is what follows
    /// By class, the last for the end of the text; null where not yet built. Part of the state, as a search
    /// does little else than go from one to the next.
    mutable std::array<std::atomic<const State*>, mostClasses> next{};
};

}  // namespace

class LinearRegex::Automaton {
 public:
    explicit Automaton(Program program)
        : program_(std::move(program)),
          classes_(program_.sets),
          end_(classes_.representatives.size()),
          here_(program_.nodes.size()),
          there_(program_.nodes.size()),
          visited_(program_.nodes.size()) {
        if (end_ >= mostClasses) std::abort();
        collect(program_.start, here_);
        isAnchored_ = std::ranges::all_of(here_.nodes(), [&](NodeIndex index) {
            return program_.nodes[index].kind == Node::Kind::textStart;
        });
        start_ = stateOf({.nodes = here_.nodes(), .atStart = true, .afterWord = false});
    }

    bool matches(std::string_view symbols) const {
        const State* state = start_;
        for (const char symbol : symbols) {
            if (state->verdict != State::Verdict::open) break;
            state = after(*state, classes_.of[static_cast<unsigned char>(symbol)]);
        }
        if (state->verdict == State::Verdict::open) state = after(*state, end_);
        return state->verdict == State::Verdict::found;
    }

    std::size_t stateCount() const {
        const std::scoped_lock lock(mutex_);
        return states_.size();
    }

 private:
    const State* after(const State& state, std::size_t symbolClass) const {
        const State* next = state.next[symbolClass].load(std::memory_order_acquire);
        return next != nullptr ? next : build(state, symbolClass);
    }

    const State* build(const State& state, std::size_t symbolClass) const {
        const std::scoped_lock lock(mutex_);
        const State* next = step(*state.situation, symbolClass);
        state.next[symbolClass].store(next, std::memory_order_release);
        return next;
    }

    const State* step(const Situation& situation, std::size_t symbolClass) const;

    /// Adds what can be reached without a symbol and without a condition; `visited_` is clean in between.
    void collect(NodeIndex from, NodeSet& into) const;

    const State* stateOf(Situation situation) const;

    bool isWord(std::size_t symbolClass) const {
        return symbolClass != end_ && isWordSymbol(classes_.representatives[symbolClass]);
    }

    const Program program_;
    const SymbolClasses classes_;
    const std::size_t end_;  // the class that stands for the end of the text
    bool isAnchored_ = false;
    const State* start_ = nullptr;

    const State found_{.verdict = State::Verdict::found, .situation = nullptr};
    const State hopeless_{.verdict = State::Verdict::hopeless, .situation = nullptr};

    mutable std::mutex mutex_;  // guards what follows
    mutable std::unordered_map<Situation, State, SituationHash> states_;
    mutable NodeSet here_;
    mutable NodeSet there_;
    mutable NodeSet visited_;
};

const State* LinearRegex::Automaton::step(const Situation& situation, std::size_t symbolClass) const {
    const bool isEnd = symbolClass == end_;
    here_.clear();
    there_.clear();
    for (const auto index : situation.nodes) here_.insert(index);
    // Grows while conditions come true.
    for (std::size_t i = 0; i < here_.nodes().size(); ++i) {
        const Node& node = program_.nodes[here_.nodes()[i]];
        switch (node.kind) {
            case Node::Kind::match:
                return &found_;
            case Node::Kind::wordBoundary:
                if (situation.afterWord != isWord(symbolClass)) collect(node.next, here_);
                break;
            case Node::Kind::textStart:
                if (situation.atStart) collect(node.next, here_);
                break;
            case Node::Kind::textEnd:
                if (isEnd) collect(node.next, here_);
                break;
            case Node::Kind::symbols:
                if (!isEnd && program_.sets[node.set][classes_.representatives[symbolClass]]) {
                    collect(node.next, there_);
                }
                break;
            case Node::Kind::fork:
                break;  // never collected
        }
    }
    if (isEnd) return &hopeless_;
    if (!isAnchored_) collect(program_.start, there_);
    return stateOf({.nodes = there_.nodes(), .atStart = false, .afterWord = isWord(symbolClass)});
}

void LinearRegex::Automaton::collect(NodeIndex from, NodeSet& into) const {
    visited_.clear();
    visited_.insert(from);
    for (std::size_t i = 0; i < visited_.nodes().size(); ++i) {
        const NodeIndex index = visited_.nodes()[i];
        const Node& node = program_.nodes[index];
        if (node.kind == Node::Kind::fork) {
            visited_.insert(node.next);
            visited_.insert(node.other);
        } else {
            into.insert(index);
        }
    }
}

const State* LinearRegex::Automaton::stateOf(Situation situation) const {
    const auto kindOf = [this](NodeIndex index) { return program_.nodes[index].kind; };
    const auto isOfKind = [&](Node::Kind kind) {
        return [&kindOf, kind](NodeIndex index) { return kindOf(index) == kind; };
    };
    if (std::ranges::any_of(situation.nodes, isOfKind(Node::Kind::match))) return &found_;
    // What makes no difference to what follows is left out, so that equal situations are one state.
    if (!situation.atStart) std::erase_if(situation.nodes, isOfKind(Node::Kind::textStart));
    if (situation.nodes.empty()) return &hopeless_;
    situation.afterWord &= std::ranges::any_of(situation.nodes, isOfKind(Node::Kind::wordBoundary));
    std::ranges::sort(situation.nodes);

    const auto [entry, isNew] = states_.try_emplace(std::move(situation));
    if (isNew) entry->second.situation = &entry->first;
    return &entry->second;
}

LinearRegex::LinearRegex(std::span<const std::string_view> patterns)
    : automaton_(std::make_unique<Automaton>(compile(patterns))) {}

LinearRegex::~LinearRegex() = default;

std::string LinearRegex::symbols(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    bool isWord = false;
    const auto* bytes = text.data();
    const auto size = static_cast<std::int64_t>(text.size());
    for (std::int64_t at = 0; at < size;) {
        UChar32 c = 0;
        U8_NEXT_OR_FFFD(bytes, at, size, c);
        if (c < 0x80) {
            isWord = isWordSymbol(static_cast<std::size_t>(c));
            out += static_cast<char>(c);
        } else {
            if (!isAttached(c)) isWord = isWordCharacter(c);
            out += static_cast<char>(isWord ? otherWordSymbol : otherSymbol);
        }
    }
    return out;
}

bool LinearRegex::matches(std::string_view symbols) const { return automaton_->matches(symbols); }

std::size_t LinearRegex::stateCount() const { return automaton_->stateCount(); }

}  // namespace dorix
