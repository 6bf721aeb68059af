#pragma once

#include "service/ai/writing/Dictation.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace dorix::service {

/// A whole number in words.
struct SpokenNumber {
    std::int64_t value = 0;
    std::size_t words = 0;
};

/// The number that is said from `at` on, with as many words as belong to it; none where none is, or where
/// punctuation or an article ("un", "a") is all there is. Below a thousand million.
std::optional<SpokenNumber> spanishNumberAt(const Tokens& tokens, std::size_t at);
std::optional<SpokenNumber> englishNumberAt(const Tokens& tokens, std::size_t at);

/// The digit that one word names, "oh" in English among them.
std::optional<int> digitAt(const Tokens& tokens, std::size_t at);

}  // namespace dorix::service
