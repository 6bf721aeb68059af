#include "card/CardPlacement.h"

#include "platform/UserDefaults.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace dorix {

namespace {

std::string positionKeyName(std::string_view positionKey) {
    return "cardPosition." + std::string(positionKey);
}

bool isExtent(const Json& value) { return value.is_number() && std::isfinite(value.get<double>()); }

bool contains(const Rect& rect, Point point) {
    return rect.minX() <= point.x && point.x <= rect.maxX() && rect.minY() <= point.y &&
           point.y <= rect.maxY();
}

double widthIn(const Rect& visible) {
    return std::min(cardmeasure::width, visible.width - 2 * cardmeasure::edge);
}

double leftIn(const Rect& visible, double wanted) {
    const double last = visible.maxX() - cardmeasure::edge - widthIn(visible);
    return std::clamp(wanted, visible.minX() + cardmeasure::edge, last);
}

/// The card beside whose edge the icon's lies above or under it.
double leftBeside(const Rect& near, bool alignRight, const Rect& visible) {
    const double width = widthIn(visible);
    constexpr double taken = cardmeasure::side + cardmeasure::width;
    return alignRight ? std::max(visible.minX() + taken, near.maxX()) - width
                      : std::min(visible.maxX() - taken, near.minX());
}

/// The side of the glyph where there is more height, where the card would come to lie over it.
void keepClear(Rect& room, const Rect& near) {
    if (!room.intersects(near)) return;
    const double above = room.maxY() - near.maxY();
    const double below = near.minY() - room.minY();
    if (above >= below) {
        const double bottom = near.maxY() + cardmeasure::gap;
        room.height = std::max(0.0, room.maxY() - bottom);
        room.y = bottom;
    } else {
        room.height = std::max(0.0, below - cardmeasure::gap);
    }
}

Rect columnIn(const Rect& visible, double left) {
    return {leftIn(visible, left), visible.minY() + cardmeasure::edge, widthIn(visible),
            visible.height - 2 * cardmeasure::edge};
}

}  // namespace

std::optional<Point> savedCardPosition(const UserDefaults& defaults, std::string_view positionKey) {
    const auto value = defaults.value(positionKeyName(positionKey));
    if (!value || !value->is_array() || value->size() != 2) return std::nullopt;
    if (!isExtent((*value)[0]) || !isExtent((*value)[1])) return std::nullopt;
    return Point{(*value)[0].get<double>(), (*value)[1].get<double>()};
}

void saveCardPosition(UserDefaults& defaults, std::string_view positionKey, Point topLeft) {
    defaults.set(positionKeyName(positionKey), Json::array({topLeft.x, topLeft.y}));
}

Rect CardPlacement::frame(double height) const {
    const double high = std::min(height, room.height);
    const double bottom = top ? std::clamp(*top - high, room.minY(), room.maxY() - high) : room.minY();
    return {room.x, bottom, room.width, high};
}

bool cardAlignsRight(const Rect& near, const Screens& screens) {
    return near.midX() >= screenOf(screens, near).visibleFrame.midX();
}

CardPlacement placeCard(const Rect& near, bool alignRight, const Screens& screens,
                        std::optional<Point> saved) {
    const auto holds = [&](const Screen& screen) {
        return contains(screen.visibleFrame.insetBy(cardmeasure::edge), *saved);
    };
    const auto at = saved ? std::ranges::find_if(screens, holds) : screens.end();
    if (at != screens.end()) {
        return {.userPlaced = true,
                .visible = at->visibleFrame,
                .room = columnIn(at->visibleFrame, saved->x),
                .top = saved->y};
    }
    const Rect& visible = screenOf(screens, near).visibleFrame;
    CardPlacement placement{.alignRight = alignRight,
                            .visible = visible,
                            .room = columnIn(visible, leftBeside(near, alignRight, visible))};
    keepClear(placement.room, near);
    return placement;
}

}  // namespace dorix
