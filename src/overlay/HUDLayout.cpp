#include "overlay/HUDLayout.h"

#include "overlay/IconPlacement.h"

namespace dorix {

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
