#include "overlay/Screens.h"

#include <cmath>
#include <utility>

namespace dorix {

namespace {

double distance(const Rect& from, const Rect& to) {
    const auto gap = [](double fromLow, double fromHigh, double toLow, double toHigh) {
        return std::max({0.0, toLow - fromHigh, fromLow - toHigh});
    };
    return std::hypot(gap(from.minX(), from.maxX(), to.minX(), to.maxX()),
                      gap(from.minY(), from.maxY(), to.minY(), to.maxY()));
}

}  // namespace

const Screen& screenOf(const Screens& screens, const Rect& rect) {
    const auto rank = [&](const Screen& screen) {
        return std::pair(-screen.frame.intersection(rect).area(), distance(screen.frame, rect));
    };
    return *std::ranges::min_element(screens, {}, rank);
}

}  // namespace dorix
