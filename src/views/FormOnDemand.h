#pragma once

#include "base/Observable.h"
#include "overlay/AppWindow.h"
#include "views/FormWindow.h"

#include <functional>
#include <memory>

namespace dorix {

/// A form's window as the core drives it: made when it is first shown, and gone when it is closed. Main
/// thread.
class FormOnDemand final : public AppWindow {
 public:
    /// `make` makes the window; `isOpen` is told whether it is there. Both must outlive it.
    FormOnDemand(WindowSystem& windowSystem, Observable<bool>& isOpen,
                 std::function<std::unique_ptr<FormWindow>()> make);

    /// It stands in the middle of the screen.
    bool place() override { return false; }
    void show() override;
    void hide() override;
    void takeKeyboard() override;
    /// It stays: what it asks for is fetched from other windows, and what is set is tried there.
    void clickedOutside() override {}

    /// Draws its outline anew, after the compositor or the scale has changed.
    void reshape();

 private:
    WindowSystem& windowSystem_;
    Observable<bool>& isOpen_;
    const std::function<std::unique_ptr<FormWindow>()> make_;
    std::unique_ptr<FormWindow> window_;
};

}  // namespace dorix
