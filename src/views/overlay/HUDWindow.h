#pragma once

#include "overlay/HUDContent.h"
#include "overlay/Placement.h"
#include "views/OverlayPanel.h"

namespace dorix {

/// The bubble beside the icon. It takes neither the pointer nor the keyboard. Main thread.
class HUDWindow final : public OverlayPanel {
 public:
    explicit HUDWindow(const ViewContext& context);

    /// The side it opens on, for whoever draws beside it.
    HUDLayout layout;

    /// Takes its place beside the icon's window at `icon`.
    void place(const Rect& icon, const Screens& screens);

    /// The texts go through the words of this desktop.
    void setContent(const HUDContent& content);
    void setShown(bool shown) { view().insert("shown", shown); }
    void setLevel(double level) { view().insert("level", level); }

    /// Draws its outline anew, after the compositor or the scale has changed.
    void reshape();

 private:
    void fitText();

    HUDContent content_;
    QRect usable_;  // where the bubble may be, in the window
};

}  // namespace dorix
