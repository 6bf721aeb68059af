#pragma once

#include <optional>
#include <string_view>

namespace dorix {

/// What a language model is told of a tone that text is written in, given its case name. In Spanish whatever
/// the language of the text; nothing for a name that is no tone's. Pure; any thread.
std::optional<std::string_view> toneInstruction(std::string_view toneName);

}  // namespace dorix
