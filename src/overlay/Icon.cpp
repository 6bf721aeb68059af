#include "overlay/Icon.h"

#include "localdata/Language.h"

#include <cmath>
#include <utility>

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

std::string iconTooltip(const OpenWindows& open, const WorkingKeys& keys, bool paused) {
    if (open.settings) return tr("Ajustes de DORIX");
    if (open.onboarding) return tr("Bienvenido a DORIX");
    if (open.account) return tr("Tu cuenta de DORIX");
    if (open.learned) return tr("Lo que sé de ti");
    if (paused) return tr("DORIX está en pausa · clic para el historial");
    if (!dictationKeyName(keys)) return tr("DORIX · elige en el menú una tecla para dictar");
    return namingKeys(tr("DORIX · ⌥ Espacio para dictar · clic para el historial"), keys);
}

namespace {
constexpr double slip = 3.0;  // points
}

void IconMouse::down(Point pointer, Point origin) {
    downLocation_ = pointer;
    startOrigin_ = origin;
    dragged_ = false;
}

std::optional<Point> IconMouse::dragged(Point pointer) {
    if (!downLocation_) return std::nullopt;
    const double dx = pointer.x - downLocation_->x;
    const double dy = pointer.y - downLocation_->y;
    if (!dragged_ && std::hypot(dx, dy) < slip) return std::nullopt;
    dragged_ = true;
    return Point{startOrigin_.x + dx, startOrigin_.y + dy};
}

IconMouse::Release IconMouse::up() {
    if (!std::exchange(downLocation_, std::nullopt)) return Release::none;
    return dragged_ ? Release::drag : Release::click;
}

}  // namespace dorix
