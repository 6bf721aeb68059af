#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace dorix {

/// Regular expressions whose search takes time linear in the text whatever the text, and some nanoseconds a
/// character. They answer as ICU's do, for what there is of ICU's syntax: groups, |, ?, *, +, classes without
/// escapes or negation, the dot, \b, ^ and $. Two things are left out, so they are for folded text of one
/// line: the dot takes every character, and a pattern's letters beyond ASCII match nothing.
///
/// The automaton behind is built as texts ask for it, so the first texts cost more. It stays as long as the
/// expression; its size depends on the patterns, not on the texts. Any thread; nobody waits but for a step
/// that is being built.
class LinearRegex {
 public:
    /// Searches for any of the patterns; of none, nothing matches. A pattern beyond the syntax is a mistake
    /// of the program and ends it.
    explicit LinearRegex(std::span<const std::string_view> patterns);
    ~LinearRegex();
    LinearRegex(const LinearRegex&) = delete;
    LinearRegex& operator=(const LinearRegex&) = delete;

    /// A UTF-8 text as `matches` takes it. ASCII is what it was, so this is only needed for text beyond.
    static std::string symbols(std::string_view text);

    /// Whether one of the patterns is found anywhere in a text of symbols.
    bool matches(std::string_view symbols) const;

    /// How many states the automaton has so far.
    std::size_t stateCount() const;

 private:
    class Automaton;
    std::unique_ptr<Automaton> automaton_;
};

}  // namespace dorix
