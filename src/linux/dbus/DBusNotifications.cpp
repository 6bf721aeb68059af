#include "linux/dbus/DBusNotifications.h"

#include "base/async/Completion.h"
#include "base/text/Text.h"

#include <utility>

namespace dorix {

namespace {

constexpr const char* service = "org.freedesktop.Notifications";
constexpr const char* path = "/org/freedesktop/Notifications";
constexpr const char* application = "es.pelmora.dorix";
constexpr double patience = 5.0;  // seconds: the bus may have to start the server

constexpr const char* invokedRule =
    "type='signal',sender='org.freedesktop.Notifications',interface='org.freedesktop.Notifications',"
    "member='ActionInvoked'";
constexpr const char* closedRule =
    "type='signal',sender='org.freedesktop.Notifications',interface='org.freedesktop.Notifications',"
    "member='NotificationClosed'";
constexpr const char* serverChangesRule =
    "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
    "member='NameOwnerChanged',arg0='org.freedesktop.Notifications'";

bool isError(sd_bus_message* reply) { return !reply || sd_bus_message_is_method_error(reply, nullptr) != 0; }

std::set<std::string, std::less<>> readStrings(sd_bus_message* message) {
    std::set<std::string, std::less<>> strings;
    const char* text = nullptr;
    if (sd_bus_message_enter_container(message, 'a', "s") <= 0) return strings;
    while (sd_bus_message_read_basic(message, 's', static_cast<void*>(&text)) > 0) strings.emplace(text);
    return strings;
}

std::string withoutMarkup(std::string body) {
    body = text::replaceAll(body, "&", "&amp;");
    body = text::replaceAll(body, "<", "&lt;");
    return text::replaceAll(body, ">", "&gt;");
}

}  // namespace

DBusNotifications::DBusNotifications(Executor& main, BusConnection& bus)
    : main_(main), bus_(bus), tasks_(main) {
    const auto listen = [this](const char* rule, void (DBusNotifications::*handler)(sd_bus_message*)) {
        bus_.listen(rule, [weak = std::weak_ptr(self_), handler](sd_bus_message* signal) {
            if (const auto self = weak.lock()) ((*self)->*handler)(signal);
        });
    };
    listen(invokedRule, &DBusNotifications::invoked);
    listen(closedRule, &DBusNotifications::closed);
    bus_.listen(serverChangesRule, [weak = std::weak_ptr(self_)](sd_bus_message*) {
        const auto self = weak.lock();
        if (!self) return;
        // Another server knows nothing of what this one showed.
        (*self)->capabilities_.reset();
        std::erase_if((*self)->shown_, [](const auto& entry) { return !entry.second.waiting; });
    });
}

Task<bool> DBusNotifications::requestAuthorization() { co_return (co_await capabilities()).has_value(); }

void DBusNotifications::post(const Notification& notification) {
    auto& shown = shown_[notification.identifier];
    shown.notification = notification;
    shown.removed = false;
    shown.changed = shown.waiting;
    if (!std::exchange(shown.waiting, true)) tasks_.spawn(send(notification.identifier));
}

void DBusNotifications::remove(const std::string& identifier) {
    const auto found = shown_.find(identifier);
    if (found == shown_.end()) return;
    found->second.removed = found->second.waiting;
    if (found->second.waiting) return;
    close(found->second.id);
    shown_.erase(found);
}

/// What the server can do; none when there is none.
Task<std::optional<DBusNotifications::Capabilities>> DBusNotifications::capabilities() {
    if (capabilities_ && bus_.isReady()) co_return capabilities_;
    Completion<std::optional<Capabilities>> answer;
    bus_.callLater(bus_.newCall(service, path, service, "GetCapabilities"), [answer](sd_bus_message* reply) {
        answer.complete(isError(reply) ? std::nullopt : std::optional(readStrings(reply)));
    });
    Timer timeout(main_);
    timeout.once(patience, [answer] { answer.complete(std::optional<Capabilities>()); });
    capabilities_ = co_await answer;
    co_return capabilities_;
}

Task<void> DBusNotifications::send(std::string identifier) {
    Completion<std::uint32_t> answer;
    if (!co_await capabilities()) {
        answer.complete(0U);
    } else {
        bus_.callLater(message(shown_[identifier]), [answer](sd_bus_message* reply) {
            std::uint32_t id = 0;
            if (!isError(reply)) sd_bus_message_read_basic(reply, 'u', &id);
            answer.complete(id);
        });
    }
    Timer timeout(main_);
    timeout.once(patience, [answer] { answer.complete(0U); });
    answered(identifier, co_await answer);
}

sdbus::Message DBusNotifications::message(const Shown& shown) const {
    const auto& notification = shown.notification;
    const auto can = [this](const char* what) { return capabilities_ && capabilities_->contains(what); };
    auto request = bus_.newCall(service, path, service, "Notify");
    auto* raw = request.get();
    const auto body = can("body-markup") ? withoutMarkup(notification.body) : notification.body;
    sd_bus_message_append(raw, "susss", "DORIX", shown.id, application, notification.title.c_str(),
                          body.c_str());
    sd_bus_message_open_container(raw, 'a', "s");
    if (can("actions")) {
        sd_bus_message_append(raw, "ss", NotificationResponse::defaultAction, "");
        for (const auto& action : notification.actions)
            sd_bus_message_append(raw, "ss", action.identifier.c_str(), action.title.c_str());
    }
    sd_bus_message_close_container(raw);
    sd_bus_message_append(raw, "a{sv}", 1, "desktop-entry", "s", application);
    constexpr std::int32_t asLongAsTheServerLikes = -1;
    sd_bus_message_append(raw, "i", asLongAsTheServerLikes);
    return request;
}

void DBusNotifications::answered(const std::string& identifier, std::uint32_t id) {
    auto& shown = shown_[identifier];
    shown.waiting = false;
    shown.id = id;
    if (id == 0) {
        shown_.erase(identifier);
    } else if (shown.removed) {
        remove(identifier);
    } else if (std::exchange(shown.changed, false)) {
        post(Notification(shown.notification));
    }
}

void DBusNotifications::close(std::uint32_t id) {
    const auto request = bus_.newCall(service, path, service, "CloseNotification");
    sd_bus_message_append(request.get(), "u", id);
    bus_.callLater(request, [](sd_bus_message*) {});
}

void DBusNotifications::invoked(sd_bus_message* signal) {
    std::uint32_t id = 0;
    const char* action = "";
    if (sd_bus_message_read(signal, "us", &id, &action) <= 0) return;
    const auto* shown = find(id);
    if (!shown || !responded_) return;
    // A copy: the one who is told may remove the notification.
    const auto responded = responded_;
    responded({shown->notification.identifier, action, shown->notification.userInfo});
}

void DBusNotifications::closed(sd_bus_message* signal) {
    std::uint32_t id = 0;
    std::uint32_t reason = 0;
    if (sd_bus_message_read(signal, "uu", &id, &reason) <= 0) return;
    std::erase_if(shown_, [id](const auto& entry) { return entry.second.id == id && !entry.second.waiting; });
}

DBusNotifications::Shown* DBusNotifications::find(std::uint32_t id) {
    for (auto& [identifier, shown] : shown_) {
        if (shown.id == id && id != 0) return &shown;
    }
    return nullptr;
}

}  // namespace dorix
