#pragma once

#include <optional>
#include <span>
#include <string_view>

namespace dorix {

/// Does what the arguments ask for where that is only to tell something on the terminal: the help, the
/// version, or that an option is not known. Needs neither a display nor a bus, and reads no settings. Gives
/// the exit status; nothing when the program is to be started. `arguments` begin with the program's name.
/// Before anything else is started.
std::optional<int> answerCommandLine(std::span<const std::string_view> arguments);

}  // namespace dorix
