#include "overlay/Placement.h"

#include "platform/UserDefaults.h"

#include <algorithm>
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

namespace {

constexpr const char* originKey = "iconOrigin";
constexpr double edgeDistance = 24;  // from the glyph to the visible frame, where the user has no say yet
constexpr double beyondFrame = iconmeasure::margin - 4;

Point defaultOrigin(const Rect& visible) {
    return {.x = visible.maxX() - edgeDistance - iconmeasure::glyph - iconmeasure::margin,
            .y = visible.minY() + edgeDistance - iconmeasure::margin};
}

double clampedTo(double low, double high, double value) {
    // A frame that is smaller than the window shows its lower left corner.
    return std::max(low, std::min(high, value));
}

}  // namespace

Rect iconFrame(Point origin) { return {origin.x, origin.y, iconmeasure::window, iconmeasure::window}; }

std::optional<Point> savedIconOrigin(const UserDefaults& defaults) {
    const auto value = defaults.value(originKey);
    if (!value || !value->is_array() || value->size() != 2) return std::nullopt;
    if (!(*value)[0].is_number() || !(*value)[1].is_number()) return std::nullopt;
    const Point origin{(*value)[0].get<double>(), (*value)[1].get<double>()};
    if (!std::isfinite(origin.x) || !std::isfinite(origin.y)) return std::nullopt;
    return origin;
}

void saveIconOrigin(UserDefaults& defaults, Point origin) {
    defaults.set(originKey, Json::array({origin.x, origin.y}));
}

Point iconOrigin(std::optional<Point> saved, const Screens& screens) {
    const auto shows = [&](const Screen& screen) {
        return screen.visibleFrame.intersects(iconFrame(*saved));
    };
    const bool usable = saved && std::ranges::any_of(screens, shows);
    return clampedIconOrigin(usable ? *saved : defaultOrigin(screens.front().visibleFrame), screens);
}

Point clampedIconOrigin(Point origin, const Screens& screens) {
    const Rect& visible = screenOf(screens, iconFrame(origin)).visibleFrame;
    const double reach = iconmeasure::window - beyondFrame;
    return {.x = clampedTo(visible.minX() - beyondFrame, visible.maxX() - reach, origin.x),
            .y = clampedTo(visible.minY() - beyondFrame, visible.maxY() - reach, origin.y)};
}

HUDPlacement placeHUD(const Rect& icon, const Screens& screens) {
    const Rect glyph = icon.insetBy(iconmeasure::margin);
    const Rect& visible = screenOf(screens, glyph).visibleFrame;
    const bool opensLeft = glyph.midX() >= visible.midX();
    const double left =
        opensLeft ? glyph.minX() - hudmeasure::gap - hudmeasure::width : glyph.maxX() + hudmeasure::gap;
    const Rect frame{left, glyph.midY() - hudmeasure::height / 2, hudmeasure::width, hudmeasure::height};
    const Rect usable = frame.intersection(visible.insetBy(hudmeasure::edge));
    return {.opensLeft = opensLeft, .frame = frame, .usable = usable};
}

}  // namespace dorix
