#pragma once

#include "linux/atspi/ApplicationDirectory.h"
#include "linux/atspi/FocusTracker.h"
#include "linux/dbus/BusConnection.h"
#include "linux/dbus/BusService.h"

#include <memory>
#include <string>
#include <vector>

namespace dorix {

/// The accessibility bus: found by way of the session bus, listened to, and found again when it comes back.
/// Main executor. Nothing here blocks.
class AccessibilityBus {
 public:
    AccessibilityBus(Executor& main, FdWatcher& watcher) : main_(main), watcher_(watcher) {}
    AccessibilityBus(const AccessibilityBus&) = delete;
    AccessibilityBus& operator=(const AccessibilityBus&) = delete;

    /// Sets about connecting unless it is connected or under way. Tells the session that there is somebody to
    /// be accessible to, as assistive technologies do, and leaves it so at the end; the bus is started if it
    /// does not run.
    void connect();

    /// nullptr while there is none. May go at any turn of the main loop, not between.
    BusConnection* connection() const;

    /// Whether applications are told, as last heard of.
    bool isEnabled() const { return isEnabled_; }
    /// Tells the session again, and tries for a bus anew where there is none.
    void switchOn();

    FocusTracker& focus() { return focus_; }
    ApplicationDirectory& applications() { return applications_; }

 private:
    void openSession();
    void launcherChanged();
    void enable();
    void statusChanged();
    void askAddress();
    void open(const std::string& address);
    void listen();
    void lost();
    void retry();

    Executor& main_;
    FdWatcher& watcher_;
    bool asking_ = false;
    bool isEnabled_ = true;
    int retries_ = 0;
    std::string address_;
    FocusTracker focus_;
    ApplicationDirectory applications_;
    std::vector<Subscription> signals_;
    std::unique_ptr<BusConnection> session_;
    std::unique_ptr<BusService> launcher_;  // on the session bus
    Subscription status_;                   // what it tells
    std::unique_ptr<BusConnection> bus_;
};

}  // namespace dorix
