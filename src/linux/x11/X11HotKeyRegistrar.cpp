#include "linux/x11/X11HotKeyRegistrar.h"

#include "base/Log.h"
#include "platform/KeyCodes.h"

#include <algorithm>
#include <string>

namespace dorix {

namespace {

constexpr std::uint16_t coreModifierBits = 0xFF;

/// Every set of lock modifiers that may be on while the chord is struck.
std::vector<std::uint16_t> subsetsOf(std::uint16_t locks) {
    std::vector<std::uint16_t> subsets;
    unsigned subset = locks;
    do {
        subsets.push_back(static_cast<std::uint16_t>(subset));
        subset = (subset - 1) & locks;
    } while (subset != locks);
    return subsets;
}

}  // namespace

X11HotKeyRegistrar::X11HotKeyRegistrar(X11Connection& connection, X11Keyboard& keyboard, X11KeyInput& input)
    : connection_(connection), keyboard_(keyboard), input_(input) {
    tokens_.push_back(connection_.listen(XCB_KEY_PRESS, [this](const auto& event) {
        handleKeyPress(reinterpret_cast<const xcb_key_press_event_t&>(event));
    }));
    tokens_.push_back(input_.listen([this](const KeyStroke& stroke) { handleStroke(stroke); }));
    tokens_.push_back(keyboard_.onChange([this] { regrabAll(); }));
}

X11HotKeyRegistrar::~X11HotKeyRegistrar() {
    for (const auto& [ref, hotKey] : hotKeys_) {
        if (hotKey.grabbed) ungrab(*hotKey.grabbed);
    }
    connection_.flush();
}

std::expected<HotKeyRegistrar::Ref, HotKeyRegistrar::Status> X11HotKeyRegistrar::registerHotKey(
    std::uint16_t keyCode, std::uint32_t modifiers, HotKeyID id) {
    HotKey hotKey{id, keyCode, modifiers, std::nullopt, false};
    const auto chord = chordFor(hotKey);
    if (!chord) return std::unexpected(noSuchKey);
    // The server lets a client take a chord twice, and the second owner would never hear of it.
    const bool taken =
        std::ranges::any_of(hotKeys_, [&](const auto& other) { return other.second.grabbed == chord; });
    const Status status = taken ? badAccess : grab(*chord);
    if (status != 0) return std::unexpected(status);
    hotKey.grabbed = chord;
    hotKeys_.emplace(++lastRef_, hotKey);
    return lastRef_;
}

bool X11HotKeyRegistrar::isDelivered(Ref ref) {
    const auto found = hotKeys_.find(ref);
    if (found == hotKeys_.end() || connection_.isLost()) return false;
    auto& hotKey = found->second;
    const auto chord = hotKey.grabbed ? std::nullopt : chordFor(hotKey);
    if (chord && grab(*chord) == 0) hotKey.grabbed = chord;
    return hotKey.grabbed.has_value();
}

void X11HotKeyRegistrar::unregisterHotKey(Ref ref) {
    const auto hotKey = hotKeys_.find(ref);
    if (hotKey == hotKeys_.end()) return;
    if (hotKey->second.grabbed) ungrab(*hotKey->second.grabbed);
    hotKeys_.erase(hotKey);
    connection_.flush();
}

std::optional<X11HotKeyRegistrar::Chord> X11HotKeyRegistrar::chordFor(const HotKey& hotKey) const {
    const auto key = keyboard_.keyFor(hotKey.keyCode);
    if (!key) return std::nullopt;
    return Chord{*key, keyboard_.coreModifiers(hotKey.modifiers), keyboard_.coreLocks()};
}

HotKeyRegistrar::Status X11HotKeyRegistrar::grab(const Chord& chord) {
    std::vector<xcb_void_cookie_t> cookies;
    for (const auto locks : subsetsOf(chord.locks)) {
        cookies.push_back(xcb_grab_key_checked(connection_.get(), 0, connection_.root(),
                                               chord.modifiers | locks, chord.key, XCB_GRAB_MODE_ASYNC,
                                               XCB_GRAB_MODE_ASYNC));
    }
    Status status = connection_.isLost() ? badAccess : 0;
    for (const auto cookie : cookies) {
        const Status error = connection_.check(cookie);
        if (status == 0) status = error;
    }
    // Half a grab would work with CapsLock off and not with it on.
    if (status != 0) ungrab(chord);
    connection_.flush();
    return status;
}

void X11HotKeyRegistrar::ungrab(const Chord& chord) {
    for (const auto locks : subsetsOf(chord.locks)) {
        xcb_ungrab_key(connection_.get(), chord.key, connection_.root(), chord.modifiers | locks);
    }
}

void X11HotKeyRegistrar::regrabAll() {
    for (auto& [ref, hotKey] : hotKeys_) {
        const auto chord = chordFor(hotKey);
        if (chord == hotKey.grabbed || hotKey.isDown) continue;
        if (hotKey.grabbed) ungrab(*hotKey.grabbed);
        hotKey.grabbed.reset();
        if (!chord) continue;
        const Status status = grab(*chord);
        if (status == 0) {
            hotKey.grabbed = chord;
        } else {
            logLine("no se pudo registrar el atajo global (" + std::to_string(status) +
                    "): " + chordName(hotKey.keyCode, hotKey.modifiers));
        }
    }
}

void X11HotKeyRegistrar::handleKeyPress(const xcb_key_press_event_t& event) {
    const auto found = std::ranges::find_if(hotKeys_, [&](const auto& entry) {
        const auto& chord = entry.second.grabbed;
        return chord && chord->key == event.detail &&
               (event.state & coreModifierBits & ~chord->locks) == chord->modifiers;
    });
    // Auto-repeat gives further presses while the key is down.
    if (found == hotKeys_.end() || found->second.isDown) return;
    const Ref ref = found->first;
    found->second.isDown = true;
    const double time = input_.timeOf(event);
    if (handler_) handler_(found->second.id, eventPressed, time);
    // Where another program held the keyboard frozen, the key may have gone up before we hear that it went
    // down.
    if (!input_.held()[event.detail]) release(ref, time);
}

void X11HotKeyRegistrar::handleStroke(const KeyStroke& stroke) {
    if (stroke.direction == KeyStroke::Direction::down) return;
    std::vector<Ref> released;
    for (const auto& [ref, hotKey] : hotKeys_) {
        if (hotKey.isDown && hotKey.grabbed && hotKey.grabbed->key == stroke.key) released.push_back(ref);
    }
    for (const Ref ref : released) release(ref, stroke.time);
}

void X11HotKeyRegistrar::release(Ref ref, double time) {
    const auto found = hotKeys_.find(ref);
    if (found == hotKeys_.end()) return;
    const HotKeyID id = found->second.id;
    found->second.isDown = false;
    // The chord's key being ours, the application in front sees its Alt or Super alone.
    if ((input_.modifierFlags() & (modifier::option | modifier::command)) != 0) input_.spoilMenuActivation();
    regrabAll();
    if (handler_) handler_(id, eventReleased, time);
}

}  // namespace dorix
