#pragma once

#include <span>
#include <string_view>

namespace dorix {

// One text of the interface in its source language and in English.
struct Translation {
    std::string_view spanish;
    std::string_view english;
};

// The English form of the interface, from which the lookup behind `tr` is built.
// Spanish is the source language: a key is the exact text that the code passes, byte for byte, with its
// placeholders, line breaks and outer blanks. A text changed in the code has to be changed here too, or it
// silently shows in Spanish. Keys are unique.
std::span<const Translation> translationTable();

}  // namespace dorix
