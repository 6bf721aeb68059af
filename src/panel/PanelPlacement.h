#pragma once

#include "base/Observable.h"
#include "overlay/Placement.h"

namespace dorix {

class UserDefaults;

namespace panelmeasure {
inline constexpr Size size{720, 520};  // until the user gives it another
inline constexpr Size leastSize{560, 400};
inline constexpr double gap = 12;  // between the panel and the glyph
inline constexpr double edge = 8;  // between the panel and the edge of the visible frame, where there is room
}  // namespace panelmeasure

/// The size that the user gave the panel; its own when there is none, or what is stored is no size.
Size savedPanelSize(const UserDefaults& defaults);
/// To be called when the user has resized the panel, not when a small screen has.
void savePanelSize(UserDefaults& defaults, Size size);

struct PanelPlacement {
    /// The panel opens on the right of the icon.
    bool anchorRight = false;
    /// The panel's window: within the visible frame of the icon's screen, smaller than asked for where that
    /// is smaller, and over the icon where there is no room beside it.
    Rect frame;
};

/// Beside the icon's window at `icon`, on the side with more room.
PanelPlacement placePanel(const Rect& icon, const Screens& screens, Size size);

/// What of the panel there is room for. In a narrow window the detail takes the list's place. Main executor.
struct PanelLayout {
    static constexpr double narrowBelow = 660;  // points

    Observable<bool> narrow;
    /// In a narrow window: the user looks at the item rather than at the list.
    Observable<bool> detailOpen;
    int rowsPerPage = 1;  // of the list, as far as it shows

    void setWidth(double points) { narrow.set(points < narrowBelow); }

    bool showsDetail() const { return !narrow.get() || detailOpen.get(); }
    bool showsList() const { return !narrow.get() || !detailOpen.get(); }
};

}  // namespace dorix
