#include "platform/HotKeyRegistrar.h"

#include "platform/KeyCodes.h"

namespace dorix {

std::string chordName(std::uint16_t keyCode, std::uint32_t modifiers) {
    std::string name;
    if ((modifiers & hotkeymodifier::control) != 0) name += "Ctrl+";
    if ((modifiers & hotkeymodifier::option) != 0) name += "Alt+";
    if ((modifiers & hotkeymodifier::shift) != 0) name += "Shift+";
    if ((modifiers & hotkeymodifier::command) != 0) name += "Super+";
    return name + (keyCode == keycode::space ? "Space" : "key " + std::to_string(keyCode));
}

}  // namespace dorix
