#pragma once

#include "base/async/Timer.h"
#include "overlay/Placement.h"
#include "views/OverlayPanel.h"

#include <QPoint>
#include <QRect>
#include <optional>

namespace dorix {

/// A window beside the icon that can have the keyboard, and gives it back when it goes. A window manager
/// knows it: that is what hands the focus on, and serves its input method. Main thread.
class FloatingWindow : public OverlayPanel {
 public:
    explicit FloatingWindow(const ViewContext& context);

    /// Takes its place beside the icon's window at `icon`; whether that is on the right of the icon.
    virtual bool place(const Rect& icon, const Screens& screens) = 0;
    /// To be called while it shows: it moves out of the icon's way.
    virtual void iconMoved(const Rect& icon, const Screens& screens) = 0;
    /// The same when screens have changed: it draws in their scale, and stands where they are.
    virtual void screensChanged(const Rect& icon, const Screens& screens) = 0;

    /// Comes up above all others.
    virtual void open() = 0;
    virtual void takeKeyboard() = 0;
    /// A click in another application is about to close it.
    void clickedOutside();
    /// Begins to go, and hands the keyboard back at once: who closes it types on.
    virtual void fade();
    /// Is gone.
    void dismiss();

    /// Draws its outline anew, after the compositor or the scale has changed.
    virtual void reshape() = 0;

 protected:
    /// Becomes the window at `frame`, which has a shadow's width around what it shows.
    void takeFrame(const QRect& frame);
    /// From now on it is the user who moves it.
    void movedByUser();
    /// Who gets the keyboard back; to be called before it is taken.
    void rememberFront();

    void moveEvent(QMoveEvent* event) override;

 private:
    std::optional<QPoint> place_;  // that it has asked for, while it opens
    Timer settling_;
    bool clickTakesKeyboard_ = false;
    WindowSystem::Window before_ = 0;  // the window that had the keyboard
};

}  // namespace dorix
