#pragma once

#include "base/async/Task.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace dorix {

/// A message that the desktop shows on the program's behalf.
struct Notification {
    struct Action {
        std::string identifier;
        std::string title;

        bool operator==(const Action&) const = default;
    };

    /// One that is shown under the same identifier is replaced.
    std::string identifier;
    std::string title;
    std::string body;
    std::vector<Action> actions;
    /// Comes back with the user's answer.
    std::map<std::string, std::string> userInfo;

    bool operator==(const Notification&) const = default;
};

/// What the user did with a notification.
struct NotificationResponse {
    /// That the notification itself was clicked, not one of its actions.
    static constexpr const char* defaultAction = "default";

    std::string identifier;
    std::string action = defaultAction;
    std::map<std::string, std::string> userInfo;

    bool operator==(const NotificationResponse&) const = default;
};

/// The desktop's notifications. Main executor; nothing blocks.
class Notifications {
 public:
    using Responded = std::function<void(const NotificationResponse&)>;

    virtual ~Notifications() = default;

    /// Whether notifications can be shown; asks the user where the system wants that.
    virtual Task<bool> requestAuthorization() = 0;

    /// Shows it, as far as it can be shown. The body is plain text.
    virtual void post(const Notification& notification) = 0;

    /// Takes it off the screen if it is there.
    virtual void remove(const std::string& identifier) = 0;

    /// The one who is told of clicks.
    virtual void onResponse(Responded responded) = 0;
};

class UnavailableNotifications final : public Notifications {
 public:
    Task<bool> requestAuthorization() override { co_return false; }
    void post(const Notification&) override {}
    void remove(const std::string&) override {}
    void onResponse(Responded) override {}
};

}  // namespace dorix
