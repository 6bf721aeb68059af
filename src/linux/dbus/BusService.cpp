#include "linux/dbus/BusService.h"

#include <utility>

namespace dorix {

BusService::BusService(BusConnection& bus, std::string name, std::function<void()> ownerChanged, Start start)
    : bus_(bus), name_(std::move(name)), ownerChanged_(std::move(ownerChanged)), start_(start) {
    changes_ = bus_.listenToOwners(",arg0='" + name_ + "'",
                                   [this](const std::string&, const std::string& owner) { setOwner(owner); });
    joins_ = bus_.isJoined.subscribe([this](bool joined) { joined ? join() : setOwner(""); });
    if (bus_.isJoined.get()) join();
}

bool BusService::hasSent(sd_bus_message* message) const {
    const char* sender = sd_bus_message_get_sender(message);
    return sender != nullptr && !owner_.empty() && owner_ == sender;
}

sdbus::Message BusService::newCall(const std::string& path, const char* interface, const char* member) const {
    return bus_.newCall(name_, path, interface, member);
}

Subscription BusService::listen(const std::string& path, const std::string& interface,
                                const std::string& member, BusConnection::Handler handler) const {
    const auto rule = "type='signal',sender='" + name_ + "',interface='" + interface + "',member='" + member +
                      "'" + (path.empty() ? "" : ",path='" + path + "'");
    return bus_.listen(rule, [this, handler = std::move(handler)](sd_bus_message* signal) {
        if (hasSent(signal)) handler(signal);
    });
}

/// After the changes are listened to: an answer that crosses one on its way is the older of the two and comes
/// first.
void BusService::join() {
    const auto callToBus = [this](const char* member) {
        return bus_.newCall("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", member);
    };
    if (start_ == Start::yes) {
        const auto request = callToBus("StartServiceByName");
        sd_bus_message_append(request.get(), "su", name_.c_str(), 0);
        bus_.callLater(request, [](sd_bus_message*) {});
    }
    const auto request = callToBus("GetNameOwner");
    sd_bus_message_append(request.get(), "s", name_.c_str());
    answer_ = bus_.ask(request, [this](sd_bus_message* reply) {
        const char* owner = "";
        if (reply == nullptr || sd_bus_message_is_method_error(reply, nullptr) != 0) return;
        if (sd_bus_message_read(reply, "s", &owner) > 0) setOwner(owner);
    });
}

void BusService::setOwner(const std::string& owner) {
    if (std::exchange(owner_, owner) != owner) ownerChanged_();
}

}  // namespace dorix
