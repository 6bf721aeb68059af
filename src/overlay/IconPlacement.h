#pragma once

#include "overlay/Screens.h"

#include <optional>

namespace dorix {

class UserDefaults;

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

}  // namespace dorix
