#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace dorix::service {

/// So that maps of words are asked without making strings.
struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
};

/// The words of a folded text: runs of letters and digits. They point into the text.
std::vector<std::string_view> foldedWords(std::string_view folded);

/// What a folded word has in common with its other forms, in Spanish or English. Empty for words that say
/// nothing of what a text is about. Pure; any thread.
std::string stemOf(std::string_view foldedWord);

/// The meanings that a stem may have, by their rows in the thesaurus; in order.
std::span<const std::uint16_t> meaningsOf(std::string_view stem);

}  // namespace dorix::service
