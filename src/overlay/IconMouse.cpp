#include "overlay/IconMouse.h"

#include <cmath>
#include <utility>

namespace dorix {

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
