#pragma once

#include <cstdint>
#include <functional>
#include <memory>

namespace dorix {

struct KeyEvent {
    std::uint16_t keyCode = 0;
    /// The modifiers as they are after the event.
    std::uint64_t modifierFlags = 0;

    bool operator==(const KeyEvent&) const = default;
};

enum class KeyEventMask : std::uint64_t { keyDown = 1U << 10U, flagsChanged = 1U << 12U };

/// Sees the keyboard whatever application has the focus. Key-downs come without auto-repeat. Everything on
/// the main executor; nothing blocks.
class KeyEventMonitors {
 public:
    /// Removes its monitor when destroyed. May outlive the port.
    using Token = std::shared_ptr<void>;
    using GlobalHandler = std::function<void(const KeyEvent&)>;
    /// True swallows the event.
    using LocalHandler = std::function<bool(const KeyEvent&)>;

    virtual ~KeyEventMonitors() = default;

    /// Sees the events that go to other applications, and cannot change them. Null where the system does not
    /// let us see them.
    virtual Token addGlobalMonitor(KeyEventMask mask, GlobalHandler handler) = 0;

    /// Sees the events that come to this application's own windows, before they do. Null likewise.
    virtual Token addLocalMonitor(KeyEventMask mask, LocalHandler handler) = 0;

    /// Whether the keyboard reports the modifier key with this code at all; fn often is not.
    virtual bool reportsKey(std::uint16_t keyCode) const = 0;
};

/// Where there is no keyboard to see.
class UnavailableKeyEventMonitors final : public KeyEventMonitors {
 public:
    Token addGlobalMonitor(KeyEventMask, GlobalHandler) override { return nullptr; }
    Token addLocalMonitor(KeyEventMask, LocalHandler) override { return nullptr; }
    bool reportsKey(std::uint16_t) const override { return false; }
};

}  // namespace dorix
