#pragma once

#include "base/async/TaskScope.h"
#include "base/async/Timer.h"
#include "linux/dbus/BusService.h"
#include "platform/Notifications.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace dorix {

/// Notifications by the desktop's server (org.freedesktop.Notifications), as far as that one is able: actions
/// and clicks are left out where it knows none. Without a server nothing is authorised, and nothing shown.
class DBusNotifications final : public Notifications {
 public:
    /// On the session bus. Both must outlive it.
    DBusNotifications(Executor& main, BusConnection& bus);

    Task<bool> requestAuthorization() override;
    void post(const Notification& notification) override;
    void remove(const std::string& identifier) override;
    void onResponse(Responded responded) override { responded_ = std::move(responded); }

 private:
    using Capabilities = std::set<std::string, std::less<>>;

    struct Shown {
        Notification notification;
        std::uint32_t id = 0;  // the server's; 0 until it has answered
        bool waiting = false;
        bool changed = false;  // posted again while waiting
        bool removed = false;  // or removed
    };

    Task<std::optional<Capabilities>> capabilities();
    Task<void> send(std::string identifier);
    sdbus::Message message(const Shown& shown) const;
    void answered(const std::string& identifier, std::uint32_t id);
    void close(std::uint32_t id);
    void serverChanged();
    void invoked(sd_bus_message* signal);
    void closed(sd_bus_message* signal);
    Shown* find(std::uint32_t id);

    BusConnection& bus_;
    Responded responded_;
    std::optional<Capabilities> capabilities_;  // of the server that is there
    std::map<std::string, Shown> shown_;        // by our identifier
    BusService server_;
    std::vector<Subscription> signals_;
    TaskScope tasks_;
};

}  // namespace dorix
