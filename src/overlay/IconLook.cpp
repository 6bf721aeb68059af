#include "overlay/IconLook.h"

#include "localdata/Language.h"

namespace dorix {

IconLook iconLook(HUDPhase::Kind hud, bool paused) {
    switch (hud) {
        case HUDPhase::Kind::listening:
            return IconLook::listening;
        case HUDPhase::Kind::processing:
            return IconLook::processing;
        case HUDPhase::Kind::error:
            return IconLook::error;
        case HUDPhase::Kind::done:
        case HUDPhase::Kind::info:
        case HUDPhase::Kind::learned:
        case HUDPhase::Kind::hidden:
            break;
    }
    return paused ? IconLook::paused : IconLook::idle;
}

std::string iconTooltip(const OpenWindows& open) {
    if (open.settings) return tr("Ajustes de DORIX");
    if (open.onboarding) return tr("Bienvenido a DORIX");
    if (open.account) return tr("Tu cuenta de DORIX");
    if (open.learned) return tr("Lo que sé de ti");
    return tr("DORIX · ⌥ Espacio para dictar · clic para el historial");
}

}  // namespace dorix
