#pragma once

#include <functional>
#include <memory>

namespace dorix {

/// Sees the mouse whatever application it is used in. Everything on the main executor; nothing blocks.
class MouseEventMonitors {
 public:
    /// Removes its monitor when destroyed. May outlive the port.
    using Token = std::shared_ptr<void>;
    using GlobalHandler = std::function<void()>;

    virtual ~MouseEventMonitors() = default;

    /// Sees the presses of buttons that go to other applications, and cannot change them; a turn of the wheel
    /// is no press, nor is one in what pops up over the windows, such as an input method's candidates. Null
    /// where the system does not let us see them.
    virtual Token addGlobalMonitor(GlobalHandler handler) = 0;
};

/// Where there is no mouse to see.
class UnavailableMouseEventMonitors final : public MouseEventMonitors {
 public:
    Token addGlobalMonitor(GlobalHandler) override { return nullptr; }
};

}  // namespace dorix
