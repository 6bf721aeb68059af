#pragma once

#include "overlay/Placement.h"

#include <optional>
#include <string_view>

namespace dorix {

class UserDefaults;

namespace cardmeasure {
inline constexpr double width = 460;
inline constexpr double side =
    24;                            // between a card that the icon's edge would push out and the visible frame
inline constexpr double edge = 8;  // between a card and the edge of the visible frame
inline constexpr double gap = 12;  // between a card and the glyph
}  // namespace cardmeasure

/// Where the user left the upper left corner of the cards of that key; nothing when they moved none, or what
/// is stored is no place. Cards that share a place have the key "".
std::optional<Point> savedCardPosition(const UserDefaults& defaults, std::string_view positionKey);
void saveCardPosition(UserDefaults& defaults, std::string_view positionKey, Point topLeft);

struct CardPlacement {
    bool userPlaced = false;
    /// The card's right edge is the icon's.
    bool alignRight = false;
    /// The visible frame of its screen.
    Rect visible;
    /// Where the card may be: as wide as it is, and as high as it may become.
    Rect room;
    /// Where its upper edge was left; it grows downwards from there, and upwards where the room ends. Without
    /// it the card stands on the room's lower edge.
    std::optional<double> top;

    /// The card in a height, or in that of the room if that is less.
    Rect frame(double height) const;
};

/// Whether a card beside a glyph at `near` keeps its right edge.
bool cardAlignsRight(const Rect& near, const Screens& screens);

/// Where a card goes that is to be shown: to `saved`, if that lies well within a screen, else to the lower
/// edge of the screen of the glyph at `near`, one of its edges above the glyph's; nearer to the middle of the
/// screen than the glyph, which it does not cover.
CardPlacement placeCard(const Rect& near, bool alignRight, const Screens& screens,
                        std::optional<Point> saved);

}  // namespace dorix
