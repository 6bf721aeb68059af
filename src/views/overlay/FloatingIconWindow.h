#pragma once

#include "base/async/Timer.h"
#include "overlay/Icon.h"
#include "overlay/Placement.h"
#include "platform/StatusItem.h"
#include "views/OverlayPanel.h"

#include <functional>
#include <memory>
#include <string>

namespace dorix {

class MenuWindow;
class TooltipWindow;

/// The icon: drawn, dragged, clicked. Main thread.
class FloatingIconWindow final : public OverlayPanel {
    Q_OBJECT

 public:
    explicit FloatingIconWindow(const ViewContext& context);
    ~FloatingIconWindow() override;

    std::function<void()> onClick = [] {};
    /// The user has dragged it somewhere else.
    std::function<void()> onMoved = [] {};
    MenuBuilder menuProvider;

    /// Takes the place that the user gave it, or the default one; also when the screens have changed.
    void place();
    Rect frame() const { return frame_; }

    void setLook(IconLook look);
    void setLevel(double level) { view().insert("level", level); }
    /// What it says about itself, in the words of this desktop.
    void setTooltip(const std::string& tooltip);
    void setTooltipEnabled(bool enabled);

    /// Draws its outline anew, after the compositor or the scale has changed.
    void reshape();

    /// The menu that stands open, if one does.
    MenuWindow* menu() const { return menu_.get(); }
    void closeMenu();

    Q_SLOT void pressed() { onClick(); }

 protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    bool event(QEvent* event) override;

 private:
    void moveTo(Point origin);
    void release();
    void popUpMenu(QPoint where);
    void showTooltip();
    void hideTooltip();

    Rect frame_;
    IconMouse mouse_;
    Timer rest_;
    bool tooltipEnabled_ = true;
    std::unique_ptr<MenuWindow> menu_;
    std::unique_ptr<TooltipWindow> tooltip_;
};

}  // namespace dorix
