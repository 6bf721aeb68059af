#pragma once

#include "localdata/PushToTalkKey.h"
#include "platform/KeyCodes.h"

#include <cstdint>
#include <utility>

namespace dorix {

/// What tells a key that is held to dictate from others in the events of the keyboard.
struct WatchedKey {
    std::uint16_t keyCode;
    /// The device-side bit, so that the key's left-hand twin never counts.
    std::uint64_t flag;
    /// Modifiers that make the press an ordinary chord.
    std::uint64_t veto;
};

constexpr WatchedKey watched(PushToTalkKey key) {
    using namespace modifier;
    switch (key) {
        case PushToTalkKey::rightOption:
            return {keycode::rightOption, deviceRightOption, shift | control | command};
        case PushToTalkKey::rightCommand:
            return {keycode::rightCommand, deviceRightCommand, shift | control | option};
        case PushToTalkKey::rightControl:
            return {keycode::rightControl, deviceRightControl, shift | option | command};
        case PushToTalkKey::fn:
            return {keycode::function, function, shift | control | option | command};
    }
    std::unreachable();
}

}  // namespace dorix
