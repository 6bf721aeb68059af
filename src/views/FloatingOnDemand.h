#pragma once

#include "base/Observable.h"
#include "overlay/AppWindow.h"
#include "views/FloatingWindow.h"

#include <functional>
#include <memory>

namespace dorix {

/// A window beside the icon as the core drives it: made when it is first shown, and let go when long unused.
/// Main thread.
class FloatingOnDemand final : public AppWindow {
 public:
    /// `isOpen` says whether the core has it open, `make` makes the window, `iconFrame` gives that of the
    /// icon's. All must outlive it.
    FloatingOnDemand(const ViewContext& context, Observable<bool>& isOpen,
                     std::function<std::unique_ptr<FloatingWindow>()> make, std::function<Rect()> iconFrame);

    bool place() override;
    void show() override;
    void hide() override;
    void takeKeyboard() override;
    void clickedOutside() override;

    /// Moves out of the icon's way.
    void iconMoved();
    void screensChanged();
    void reshape();

 private:
    FloatingWindow& window();
    Screens screens() const;

    const ViewContext context_;
    Observable<bool>& isOpen_;
    const std::function<std::unique_ptr<FloatingWindow>()> make_;
    const std::function<Rect()> iconFrame_;
    std::unique_ptr<FloatingWindow> window_;
    Timer drop_;
    Subscription closing_;
};

}  // namespace dorix
