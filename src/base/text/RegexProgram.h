#pragma once

#include <bitset>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

/// What LinearRegex runs: regular expressions as a graph of nodes that a match walks through.
namespace dorix::regexprogram {

/// The symbols of a text: ASCII, and one each for all other characters that \b takes for a part of a word and
/// for those that it does not.
inline constexpr unsigned char otherWordSymbol = 0x80;
inline constexpr unsigned char otherSymbol = 0x81;
inline constexpr std::size_t symbolCount = 0x82;

using SymbolSet = std::bitset<symbolCount>;
using NodeIndex = std::uint16_t;

struct Node {
    enum class Kind : std::uint8_t { symbols, fork, wordBoundary, textStart, textEnd, match };

    Kind kind;
    std::uint8_t set = 0;  // of the kind `symbols`: the index of the set that takes the match on
    NodeIndex next = 0;    // not of a match
    NodeIndex other = 0;   // the second way of a fork
};

struct Program {
    std::vector<Node> nodes;
    std::vector<SymbolSet> sets;
    NodeIndex start = 0;
};

/// A program that matches where one of the patterns does. A pattern that has no such program is a mistake of
/// the program and ends it.
Program compile(std::span<const std::string_view> patterns);

}  // namespace dorix::regexprogram
