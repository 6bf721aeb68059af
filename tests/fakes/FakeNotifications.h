#pragma once

#include "platform/Notifications.h"

#include <utility>

namespace dorix {

/// Keeps what is shown; the test clicks.
class FakeNotifications final : public Notifications {
 public:
    Task<bool> requestAuthorization() override { co_return granted; }
    void post(const Notification& notification) override {
        remove(notification.identifier);
        shown.push_back(notification);
    }
    void remove(const std::string& identifier) override {
        std::erase_if(shown, [&](const auto& other) { return other.identifier == identifier; });
    }
    void onResponse(Responded responded) override { responded_ = std::move(responded); }

    void click(const Notification& notification,
               const std::string& action = NotificationResponse::defaultAction) {
        if (responded_) responded_({notification.identifier, action, notification.userInfo});
    }

    bool granted = true;
    std::vector<Notification> shown;

 private:
    Responded responded_;
};

}  // namespace dorix
