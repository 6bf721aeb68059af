#pragma once

#include "service/ai/writing/Dictation.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace dorix::service {

/// A short phrase that names a time, an amount or somebody: small words, and then words of one kind.
struct Phrase {
    enum class Kind : std::uint8_t { weekday, month, relativeDay, dayPart, number, unit, name };

    Kind kind = Kind::number;
    std::size_t begin = 0;  // of the small words
    std::size_t head = 0;
    std::size_t end = 0;

    std::size_t words() const { return end - head; }
};

/// The phrases within [begin, end), which follow each other where nothing else is between. No phrase goes
/// over punctuation.
std::vector<Phrase> phrasesIn(const Tokens& tokens, std::size_t begin, std::size_t end);

/// The same of the words from `begin` on alone, as long as one phrase follows another directly.
std::vector<Phrase> phrasesFrom(const Tokens& tokens, std::size_t begin);

}  // namespace dorix::service
