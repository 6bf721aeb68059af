#pragma once

#include "base/async/Timer.h"
#include "overlay/Placement.h"
#include "platform/StatusItem.h"
#include "views/OverlayPanel.h"
#include "views/panel/PanelScene.h"

#include <memory>

namespace dorix {

class MenuWindow;

/// The history's window. Unlike the others it takes the keyboard, so a window manager knows it: that is what
/// hands the focus on when it goes, serves its input method and moves and resizes it. Where there is none it
/// takes the focus itself, and gives it back. Main thread.
class PanelWindow final : public OverlayPanel {
    Q_OBJECT

 public:
    /// All must outlive the window.
    PanelWindow(const ViewContext& context, AppState& state, SettingsStore& settings, HistoryPanel& panel);
    ~PanelWindow() override;

    /// Takes its place beside the icon's window at `icon`, in the size that the user gave it; whether that is
    /// on the right of the icon.
    bool place(const Rect& icon, const Screens& screens);

    /// To be called when screens have changed while it shows: draws in their scale, and takes its place again
    /// where it no longer fits.
    void placeAnew(const Rect& icon, const Screens& screens);

    /// Comes up with the keyboard.
    void open();
    void takeKeyboard();
    /// A click in another application is about to close it.
    void clickedOutside();
    /// Begins to go, and hands the keyboard back at once: who closes the panel types on.
    void fade();
    /// Is gone.
    void dismiss();

    /// Draws its outline anew, after the compositor or the scale has changed.
    void reshape();

    /// The menu that stands open, if one does.
    MenuWindow* menu() const { return menu_.get(); }

 protected:
    bool event(QEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

 private:
    void wireScene();
    void rememberFront();
    void focusWhereAsked();
    void popUp(Menu items, QPointF at);
    void moveByUser();
    void resizeFrom(Qt::Edges edges);

    AppState& state_;
    HistoryPanel& panel_;
    PanelScene scene_;
    std::unique_ptr<MenuWindow> menu_;
    Timer saveSize_;
    bool userResizes_ = false;
    std::optional<QPoint> place_;  // that it has asked for, while it opens
    Timer settling_;
    Timer opening_;
    bool clickTakesKeyboard_ = false;
    WindowSystem::Window before_ = 0;  // the window that had the keyboard
    Subscription focusRequests_;
};

}  // namespace dorix
