#pragma once

#include "linux/x11/X11Windows.h"
#include "platform/InputEvents.h"

#include <memory>
#include <vector>

namespace dorix {

/// The mouse monitors of an X11 session. Presses are seen as the device makes them, before any window gets
/// them and whoever grabbed the pointer; while nobody monitors, none is reported to us. A press costs a few
/// round trips.
class X11MouseEventMonitors final : public MouseEventMonitors {
 public:
    X11MouseEventMonitors(X11Connection& connection, X11Windows& windows);

    Subscription addGlobalMonitor(GlobalHandler handler) override;

 private:
    enum class Presses { none, all };

    void select(Presses presses);
    void handle(const xcb_generic_event_t& event);
    bool isOverOwnWindow();
    bool isOverPopup();

    X11Connection& connection_;
    X11Windows& windows_;
    std::uint16_t pointer_ = 0;
    Observers<> monitors_;
    Subscription token_;
};

}  // namespace dorix
