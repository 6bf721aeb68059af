#include "dictation/WorkingKeys.h"

#include "base/text/Text.h"
#include "localdata/Language.h"

namespace dorix {

bool needsKey(const WorkingKeys& keys) { return !keys.shortcut && (!keys.holdIsThere || keys.holdTypes); }

std::string holdKeyName(const WorkingKeys& keys) {
    switch (keys.hold) {
        case PushToTalkKey::rightOption:
            return keys.holdTypes ? "AltGr" : tr("⌥ derecha");  // as it is printed on such a keyboard
        case PushToTalkKey::rightCommand:
            return tr("⌘ derecha");
        case PushToTalkKey::rightControl:
            return tr("⌃ derecha");
        case PushToTalkKey::fn:
            break;
    }
    return tr(label(keys.hold));
}

std::optional<std::string> dictationKeyName(const WorkingKeys& keys) {
    if (keys.shortcut) return tr("⌥ Espacio");
    return keys.holdIsThere ? std::optional(holdKeyName(keys)) : std::nullopt;
}

std::string namingKeys(std::string_view text, const WorkingKeys& keys) {
    const std::string both = tr("⌥ Espacio (o %@)");
    const std::string name = dictationKeyName(keys).value_or(tr("la tecla que elijas"));
    const bool hasBoth = keys.shortcut && keys.holdIsThere;
    std::string named = text::replaceAll(text, both, hasBoth ? formatText(both, {holdKeyName(keys)}) : name);
    if (!keys.shortcut) named = text::replaceAll(named, tr("⌥ Espacio"), name);
    if (!keys.askShortcut) named = text::replaceAll(named, tr("⌥⇧ Espacio"), name);
    return named;
}

}  // namespace dorix
