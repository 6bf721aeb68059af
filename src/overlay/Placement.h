#pragma once

#include "base/Observable.h"
#include "overlay/Geometry.h"

#include <optional>
#include <vector>

namespace dorix {

class UserDefaults;

/// A screen and the part of it that panels leave to windows.
struct Screen {
    Rect frame;
    Rect visibleFrame;

    bool operator==(const Screen&) const = default;
};

/// The main screen first. Views never hand over an empty list.
using Screens = std::vector<Screen>;

/// The screen that shows most of `rect`, or the nearest when none shows any of it.
const Screen& screenOf(const Screens& screens, const Rect& rect);

/// The icon's window: a glyph with a transparent margin all round.
namespace iconmeasure {
inline constexpr double glyph = 52;
inline constexpr double margin = 22;
inline constexpr double window = glyph + 2 * margin;
}  // namespace iconmeasure

/// The frame of the icon's window at `origin`.
Rect iconFrame(Point origin);

/// Where the user left the icon; nothing when it was never moved, or what is stored is no place.
std::optional<Point> savedIconOrigin(const UserDefaults& defaults);
void saveIconOrigin(UserDefaults& defaults, Point origin);

/// Where the icon goes at start-up and when the screens change: to `saved` if that shows anywhere, otherwise
/// to its default place at the edge of the main screen.
Point iconOrigin(std::optional<Point> saved, const Screens& screens);

/// `origin` moved so far that the glyph stays in the visible frame of the screen that the icon stands on, but
/// for its margin, of which all but 4 points may be beyond it.
Point clampedIconOrigin(Point origin, const Screens& screens);

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
