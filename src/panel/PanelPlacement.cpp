#include "panel/PanelPlacement.h"

#include "overlay/Placement.h"
#include "platform/UserDefaults.h"

#include <algorithm>
#include <cmath>

namespace dorix {

namespace {

constexpr const char* sizeKey = "panelSize";

/// One extent of the window, and where it begins, within `low` to `high`.
struct Span {
    double start = 0;
    double length = 0;
};

/// The margin gives way before the length does.
Span fit(double wanted, double length, double low, double high) {
    const double fitting = std::min(length, high - low);
    const double margin = std::min(panelmeasure::edge, (high - low - fitting) / 2);
    return {std::clamp(wanted, low + margin, high - margin - fitting), fitting};
}

bool isExtent(const Json& value) { return value.is_number() && std::isfinite(value.get<double>()); }

}  // namespace

Size savedPanelSize(const UserDefaults& defaults) {
    const auto value = defaults.value(sizeKey);
    if (!value || !value->is_array() || value->size() != 2) return panelmeasure::size;
    if (!isExtent((*value)[0]) || !isExtent((*value)[1])) return panelmeasure::size;
    return {std::max((*value)[0].get<double>(), panelmeasure::leastSize.width),
            std::max((*value)[1].get<double>(), panelmeasure::leastSize.height)};
}

void savePanelSize(UserDefaults& defaults, Size size) {
    defaults.set(sizeKey, Json::array({size.width, size.height}));
}

PanelPlacement placePanel(const Rect& icon, const Screens& screens, Size size) {
    const Rect glyph = icon.insetBy(iconmeasure::margin);
    const Rect& visible = screenOf(screens, glyph).visibleFrame;
    const bool opensLeft = glyph.midX() >= visible.midX();
    const double left =
        opensLeft ? glyph.minX() - panelmeasure::gap - size.width : glyph.maxX() + panelmeasure::gap;
    const auto across = fit(left, size.width, visible.minX(), visible.maxX());
    const auto up = fit(glyph.midY() - size.height / 2, size.height, visible.minY(), visible.maxY());
    return {.anchorRight = !opensLeft, .frame = {across.start, up.start, across.length, up.length}};
}

}  // namespace dorix
