#pragma once

#include "base/Observable.h"
#include "overlay/Screens.h"

namespace dorix {

/// The side of the icon on which the HUD opens, for its view.
struct HUDLayout {
    Observable<bool> opensLeft;
};

namespace hudmeasure {
inline constexpr double width = 440;   // the bubble's, at most
inline constexpr double height = 140;  // its window's; the bubble stands in the middle
inline constexpr double gap = 12;      // between the bubble and the glyph
inline constexpr double edge = 4;      // from the bubble to the edge of the visible frame, as for the glyph
}  // namespace hudmeasure

struct HUDPlacement {
    bool opensLeft = false;
    /// The HUD's window, whatever the screen's size.
    Rect frame;
    /// The part of it that lies well in the screen's visible frame; the bubble keeps within.
    Rect usable;
};

/// Beside the icon's window at `icon`, on the side with more room.
HUDPlacement placeHUD(const Rect& icon, const Screens& screens);

}  // namespace dorix
