#pragma once

#include "base/async/Timer.h"
#include "linux/x11/X11KeyInput.h"
#include "linux/x11/X11Windows.h"
#include "platform/InputEvents.h"

#include <memory>
#include <vector>

namespace dorix {

/// The key monitors of an X11 session. A key is local when one of this process's windows has the focus, and
/// global otherwise. Raw events can only be observed: a local handler's true does not swallow the key.
/// Windows of ours that act on Esc filter it themselves where the handler has used it.
///
/// An Alt or Super key whose menu is to be kept shut and that is held alone no longer opens the menu of the
/// application in front when it goes up, as text that is pasted then would go there. A short tap still does.
class X11KeyEventMonitors final : public KeyEventMonitors {
 public:
    X11KeyEventMonitors(X11Connection& connection, X11Keyboard& keyboard, X11KeyInput& input,
                        X11Windows& windows);

    Subscription addGlobalMonitor(KeyEventMask mask, GlobalHandler handler) override;
    Subscription addLocalMonitor(KeyEventMask mask, LocalHandler handler) override;
    bool reportsKey(std::uint16_t keyCode) const override;
    bool typesCharacters(std::uint16_t keyCode) const override;
    Subscription onKeyboardChange(std::function<void()> callback) override {
        return keyboard_.onChange(std::move(callback));
    }
    void keepMenuShut() override { menuKept_ = true; }
    Subscription withhold(std::uint16_t keyCode) override;

 private:
    enum class Scope { global, local };

    Subscription add(Scope scope, KeyEventMask mask, std::function<void(const KeyEvent&)> handler);
    void handle(const KeyStroke& stroke);
    void spoilMenu(const KeyStroke& stroke);
    bool isOnlyModifierHeld(xcb_keycode_t key) const;
    bool focusIsOurs();

    X11Connection& connection_;
    X11Keyboard& keyboard_;
    X11KeyInput& input_;
    X11Windows& windows_;
    Observers<Scope, KeyEventMask, KeyEvent> monitors_;
    std::optional<bool> focusIsOurs_;
    bool menuKept_ = false;  // asked for the stroke that is being told
    Timer hold_;
    std::vector<Subscription> tokens_;
};

}  // namespace dorix
