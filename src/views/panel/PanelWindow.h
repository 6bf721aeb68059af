#pragma once

#include "platform/StatusItem.h"
#include "views/FloatingWindow.h"
#include "views/panel/PanelScene.h"

#include <memory>

namespace dorix {

class MenuWindow;

/// The history's window, which a window manager moves and resizes. It comes with the keyboard. Main thread.
class PanelWindow final : public FloatingWindow {
    Q_OBJECT

 public:
    /// All must outlive the window.
    PanelWindow(const ViewContext& context, AppState& state, SettingsStore& settings, HistoryPanel& panel);
    ~PanelWindow() override;

    /// It has the size that the user gave it.
    bool place(const Rect& icon, const Screens& screens) override;
    void iconMoved(const Rect& icon, const Screens& screens) override;
    /// It takes its place again where it no longer fits.
    void screensChanged(const Rect& icon, const Screens& screens) override;
    void open() override;
    void takeKeyboard() override;
    void fade() override;
    void reshape() override;

    /// The menu that stands open, if one does.
    MenuWindow* menu() const { return menu_.get(); }

 protected:
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

 private:
    void wireScene();
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
    Timer opening_;
    Subscription focusRequests_;
};

}  // namespace dorix
