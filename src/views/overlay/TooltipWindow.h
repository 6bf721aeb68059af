#pragma once

#include "overlay/Geometry.h"
#include "views/OverlayPanel.h"

namespace dorix {

/// The line that says what the icon is good for; made when it is shown, gone with the pointer.
class TooltipWindow final : public OverlayPanel {
 public:
    TooltipWindow(const ViewContext& context, const QString& text);

    void setText(const QString& text);
    /// On the side of the icon on which the HUD opens too.
    void showBeside(const Rect& icon);

 private:
    void reshape();
};

}  // namespace dorix
