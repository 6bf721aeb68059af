#include "linux/dbus/DBusNotifications.h"

#include "base/async/Timeout.h"
#include "base/text/Text.h"

#include <utility>

namespace dorix {

namespace {

constexpr const char* service = "org.freedesktop.Notifications";
constexpr const char* path = "/org/freedesktop/Notifications";
constexpr const char* application = "es.pelmora.dorix";
constexpr double patience = 5.0;  // seconds: the bus may have to start the server

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
    : bus_(bus), server_(bus, service, [this] { serverChanged(); }), tasks_(main) {
    const auto on = [this](const char* member, BusConnection::Handler handler) {
        signals_.push_back(server_.listen(path, service, member, std::move(handler)));
    };
    on("ActionInvoked", [this](sd_bus_message* signal) { invoked(signal); });
    on("NotificationClosed", [this](sd_bus_message* signal) { closed(signal); });
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
    if (capabilities_) co_return capabilities_;
    auto request = server_.newCall(path, service, "GetCapabilities");
    const auto answer = co_await withTimeout(bus_.answer(std::move(request)), patience);
    // One that has gone since then is no help.
    const bool isThere = answer && *answer && server_.hasSent(answer->get());
    capabilities_ = isThere ? std::optional(readStrings(answer->get())) : std::nullopt;
    co_return capabilities_;
}

Task<void> DBusNotifications::send(std::string identifier) {
    std::uint32_t id = 0;
    if (co_await capabilities()) {
        const auto answer = co_await withTimeout(bus_.answer(message(shown_[identifier])), patience);
        // The number of one that has gone since then would be another's notification.
        if (answer && *answer && server_.hasSent(answer->get()))
            sd_bus_message_read_basic(answer->get(), 'u', &id);
    }
    answered(identifier, id);
}

sdbus::Message DBusNotifications::message(const Shown& shown) const {
    const auto& notification = shown.notification;
    const auto can = [this](const char* what) { return capabilities_ && capabilities_->contains(what); };
    auto request = server_.newCall(path, service, "Notify");
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
    const auto request = server_.newCall(path, service, "CloseNotification");
    sd_bus_message_append(request.get(), "u", id);
    bus_.callLater(request, [](sd_bus_message*) {});
}

/// Another server knows nothing of what this one showed.
void DBusNotifications::serverChanged() {
    capabilities_.reset();
    std::erase_if(shown_, [](const auto& entry) { return !entry.second.waiting; });
    for (auto& [identifier, shown] : shown_) shown.id = 0;
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
