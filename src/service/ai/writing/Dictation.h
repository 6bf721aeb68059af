#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// A dictation on its way to a text: its words one by one, with the punctuation at either side of each. Pure;
/// any thread.
namespace dorix::service {

/// What stands before a word.
enum class Gap : std::uint8_t { blank, line, paragraph };

struct Token {
    Gap gap = Gap::blank;
    std::string marker;   // of a list: "1. " or "- "
    std::string opening;  // punctuation
    std::string text;
    std::string closing;      // punctuation
    std::string key;          // the text folded, to be looked up
    bool pausesOnly = false;  // the comma behind it set a filler apart, which is gone

    bool endsClause() const { return !closing.empty(); }
    bool endsSentence() const;
};

using Tokens = std::vector<Token>;

Tokens tokensOf(std::string_view transcript);
std::string textOf(const Tokens& tokens);

/// A word as it is looked up: folded, with a straight apostrophe.
std::string keyOf(std::string_view word);

/// Whether the word at `at` begins a sentence or a line.
bool beginsSentence(const Tokens& tokens, std::size_t at);

/// Whether nothing but a pause is behind it.
bool isPause(const Token& token);

/// Whether its full stop is its own, as in "Sr.".
bool isAbbreviation(const Token& token);

/// Whether the words from `at` on are those of `phrase`, folded and with single blanks, with no punctuation
/// in between.
bool isPhraseAt(const Tokens& tokens, std::size_t at, std::string_view phrase);

/// How many words a phrase has.
std::size_t wordsIn(std::string_view phrase);

/// What stands before a word that goes: it comes to stand before the word that takes its place.
void handOver(const Token& gone, Token& next);

}  // namespace dorix::service
