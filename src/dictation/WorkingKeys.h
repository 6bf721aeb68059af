#pragma once

#include "localdata/PushToTalkKey.h"

#include <optional>
#include <string>
#include <string_view>

namespace dorix {

/// Which of the keys that dictate do so here: another program may have a shortcut, and a keyboard may lack a
/// key. All texts that tell people what to press go by it.
struct WorkingKeys {
    bool shortcut = true;     // ⌥ Space
    bool askShortcut = true;  // ⌥⇧ Space
    PushToTalkKey hold = PushToTalkKey::rightOption;
    bool holdIsThere = true;  // on the keyboard
    bool holdTypes = false;   // it is also held to type characters, as AltGr is

    bool operator==(const WorkingKeys&) const = default;
};

/// Whether the user had better choose another hold key: no shortcut stands in for one that is missing or is
/// needed for typing. Any thread.
bool needsKey(const WorkingKeys& keys);

/// The hold key as it is named inside a sentence, in the app language. Any thread.
std::string holdKeyName(const WorkingKeys& keys);

/// The key to name where only one is named, in the app language; none when none works. Any thread.
std::optional<std::string> dictationKeyName(const WorkingKeys& keys);

/// `text`, which is in the app language, with the keys that work in place of the ones that it names: "⌥
/// Espacio", "⌥⇧ Espacio", and "⌥ Espacio (o %@)" for both ways to dictate. Any thread.
std::string namingKeys(std::string_view text, const WorkingKeys& keys);

}  // namespace dorix
