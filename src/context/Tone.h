#pragma once

#include <cstdint>
#include <string_view>

namespace dorix {

/// The tone that dictated text is written in. Stored by its case name.
enum class Tone : std::uint8_t {
    informal,
    profesional,
    cercano,
    comunicativo,
    estructurado,
    tecnico,
    neutral
};

/// The case name, as it is stored.
std::string_view toneName(Tone tone);

/// What the history calls it; saved with each dictation, never translated.
std::string_view historyLabel(Tone tone);

}  // namespace dorix
