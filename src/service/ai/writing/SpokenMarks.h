#pragma once

#include "service/ai/writing/Dictation.h"

#include <span>
#include <string_view>

namespace dorix::service {

/// A name of a punctuation mark, and what becomes of it.
struct SpokenMark {
    enum class Effect : std::uint8_t { closing, opening, line, paragraph };
    /// How sure one can be that the words are a command.
    enum class Certainty : std::uint8_t {
        clear,   // unless a determiner stands before it
        likely,  // also a common word: what stands around it decides
        weak,    // only where the user dictates marks elsewhere as well
    };

    std::string_view phrase;
    Effect effect = Effect::closing;
    std::string_view mark;
    Certainty certainty = Certainty::clear;
    std::span<const std::string_view> notAfter{};   // words before it that make it content
    std::span<const std::string_view> notBefore{};  // the same behind it
};

std::span<const SpokenMark> spokenMarks();

/// Puts the marks that were dictated in the place of their names.
Tokens withSpokenMarks(const Tokens& tokens);

}  // namespace dorix::service
