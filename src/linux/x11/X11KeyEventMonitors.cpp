#include "linux/x11/X11KeyEventMonitors.h"

#include "linux/x11/X11WithheldKey.h"
#include "platform/KeyCodes.h"

#include <unistd.h>

#include <algorithm>

namespace dorix {

namespace {
// Shorter than a press that counts as a hold, so that none of those leaves a menu open; longer than a tap.
constexpr double menuTapLimit = 0.25;
}  // namespace

X11KeyEventMonitors::X11KeyEventMonitors(X11Connection& connection, X11Keyboard& keyboard, X11KeyInput& input,
                                         X11Windows& windows)
    : connection_(connection),
      keyboard_(keyboard),
      input_(input),
      windows_(windows),
      hold_(connection.executor()) {
    connection_.selectRootEvents(XCB_EVENT_MASK_PROPERTY_CHANGE);
    connection_.flush();
    tokens_.push_back(connection_.listen(XCB_PROPERTY_NOTIFY, [this](const auto& event) {
        const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (change.window == connection_.root() && change.atom == connection_.atom("_NET_ACTIVE_WINDOW")) {
            focusIsOurs_.reset();
        }
    }));
    tokens_.push_back(input_.listen([this](const KeyStroke& stroke) { handle(stroke); }));
}

Subscription X11KeyEventMonitors::addGlobalMonitor(KeyEventMask mask, GlobalHandler handler) {
    return add(Scope::global, mask, std::move(handler));
}

Subscription X11KeyEventMonitors::addLocalMonitor(KeyEventMask mask, LocalHandler handler) {
    return add(Scope::local, mask, std::move(handler));
}

Subscription X11KeyEventMonitors::add(Scope scope, KeyEventMask mask,
                                      std::function<void(const KeyEvent&)> handler) {
    if (connection_.isLost()) return {};
    if (monitors_.isEmpty()) input_.repair(X11KeyInput::Adopt::heldKeys);
    return monitors_.add(
        [scope, mask, handler = std::move(handler)](Scope where, KeyEventMask what, const KeyEvent& event) {
            if (where == scope && what == mask) handler(event);
        });
}

bool X11KeyEventMonitors::reportsKey(std::uint16_t keyCode) const {
    return keyboard_.keyFor(keyCode).has_value();
}

bool X11KeyEventMonitors::typesCharacters(std::uint16_t keyCode) const {
    const auto key = keyboard_.keyFor(keyCode);
    return key && keyboard_.shiftsLevels(*key);
}

Subscription X11KeyEventMonitors::withhold(std::uint16_t keyCode) {
    if (connection_.isLost()) return {};
    const auto key = std::make_shared<X11WithheldKey>(connection_, keyboard_, keyCode);
    return key->isEmpty() ? Subscription{} : Subscription(key);
}

/// When the stroke is not a tap: any other stroke that comes sooner has come between already.
void X11KeyEventMonitors::spoilMenu(const KeyStroke& stroke) {
    // With other modifiers it may be a chord for changing the layout, which a key in between would spoil.
    if (!isOnlyModifierHeld(stroke.key)) return;
    const double waited = connection_.executor().now() - stroke.time;
    // By then the layout of the keyboard that the key is on is known, if it is not the one typed on before.
    hold_.once(menuTapLimit - waited, [this, key = stroke.key] {
        if (!monitors_.isEmpty() && keyboard_.opensMenus(key)) input_.spoilMenuActivation();
    });
}

bool X11KeyEventMonitors::isOnlyModifierHeld(xcb_keycode_t key) const {
    for (unsigned other = 0; other < input_.held().size(); ++other) {
        const auto code = static_cast<xcb_keycode_t>(other);
        if (other != key && input_.held()[other] && keyboard_.isModifier(code) && !keyboard_.isLock(code))
            return false;
    }
    return true;
}

void X11KeyEventMonitors::handle(const KeyStroke& stroke) {
    hold_.stop();
    const bool isModifier = keyboard_.isModifier(stroke.key);
    if (!isModifier && stroke.direction == KeyStroke::Direction::up) return;
    const auto mask = isModifier ? KeyEventMask::flagsChanged : KeyEventMask::keyDown;
    const auto scope = focusIsOurs() ? Scope::local : Scope::global;
    menuKept_ = false;
    monitors_.notify(scope, mask,
                     {keyboard_.virtualKeyCode(stroke.key), input_.modifierFlags(), stroke.time});
    if (menuKept_) spoilMenu(stroke);
}

bool X11KeyEventMonitors::focusIsOurs() {
    if (focusIsOurs_) return *focusIsOurs_;
    const bool ours = windows_.processIdentifier(windows_.frontWindow()) == ::getpid();
    // Nothing tells of a change of focus where no window manager does: then every key asks.
    if (windows_.hasWindowManager()) focusIsOurs_ = ours;
    return ours;
}

}  // namespace dorix
