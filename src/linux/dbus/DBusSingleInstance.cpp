#include "linux/dbus/DBusSingleInstance.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <utility>

namespace dorix {

namespace {

constexpr const char* name = "es.pelmora.dorix";
constexpr const char* path = "/es/pelmora/dorix";
constexpr const char* interface = "org.freedesktop.Application";
constexpr double patience = 2.0;  // seconds, for each question
constexpr std::uint32_t queue = 0;
constexpr std::uint32_t doNotQueue = 4;
constexpr std::uint32_t nameIsTaken = 3;

/// Whether the bus has started us. Our own helpers are not to think so of themselves. Before other threads
/// start.
bool takeStarterMark() {
    // NOLINTBEGIN(concurrency-mt-unsafe)
    const bool marked = std::getenv("DBUS_STARTER_ADDRESS") != nullptr;
    unsetenv("DBUS_STARTER_ADDRESS");
    unsetenv("DBUS_STARTER_BUS_TYPE");
    // NOLINTEND(concurrency-mt-unsafe)
    return marked;
}

}  // namespace

struct ApplicationInterface {
    static int activate(sd_bus_message* call, void* self, sd_bus_error*) {
        static_cast<DBusSingleInstance*>(self)->reopen();
        return sd_bus_reply_method_return(call, nullptr);
    }

    /// There are no documents; who wants one opened sees the program at least.
    static int open(sd_bus_message* call, void* self, sd_bus_error* error) {
        return activate(call, self, error);
    }

    static int activateAction(sd_bus_message* call, void* self, sd_bus_error*) {
        const char* action = "";
        const int code = sd_bus_message_read_basic(call, 's', static_cast<void*>(&action));
        if (code < 0) return code;
        const auto& requests = static_cast<DBusSingleInstance*>(self)->requests_;
        if (requests.action) requests.action(action);
        return sd_bus_reply_method_return(call, nullptr);
    }

    static const sd_bus_vtable* table() {
        static const auto entries = std::to_array<sd_bus_vtable>({
            SD_BUS_VTABLE_START(0),
            SD_BUS_METHOD("Activate", "a{sv}", "", activate, SD_BUS_VTABLE_UNPRIVILEGED),
            SD_BUS_METHOD("Open", "asa{sv}", "", open, SD_BUS_VTABLE_UNPRIVILEGED),
            SD_BUS_METHOD("ActivateAction", "sava{sv}", "", activateAction, SD_BUS_VTABLE_UNPRIVILEGED),
            SD_BUS_VTABLE_END,
        });
        return entries.data();
    }
};

DBusSingleInstance::DBusSingleInstance(Executor& main, FdWatcher& watcher)
    : main_(main), watcher_(watcher), startedByBus_(takeStarterMark()) {}

bool DBusSingleInstance::claim() {
    bus_ = BusConnection::session(main_, watcher_);
    // First the object: whoever sees the name may call it at once.
    bus_->addObject(path, interface, ApplicationInterface::table(), this);
    if (!bus_->awaitReady(patience) || claimName()) {
        joins_ = bus_->isJoined.subscribe([this](bool joined) {
            if (joined) claimNameAgain();
        });
        return true;
    }
    askToReopen();
    bus_.reset();
    return false;
}

/// Also true when the bus does not answer.
bool DBusSingleInstance::claimName() {
    const auto reply = bus_->call(nameRequest(doNotQueue), patience);
    std::uint32_t result = 0;
    return !reply || sd_bus_message_read_basic(reply->get(), 'u', &result) <= 0 || result != nameIsTaken;
}

/// On a bus that has come back. This process is well under way, and goes on even if another one has been
/// quicker; the name becomes ours when that one ends.
void DBusSingleInstance::claimNameAgain() {
    bus_->callLater(nameRequest(queue), [](sd_bus_message*) {});
}

sdbus::Message DBusSingleInstance::nameRequest(std::uint32_t flags) const {
    auto request =
        bus_->newCall("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName");
    sd_bus_message_append(request.get(), "su", name, flags);
    return request;
}

void DBusSingleInstance::askToReopen() {
    const auto request = bus_->newCall(name, path, interface, "Activate");
    sd_bus_message_append(request.get(), "a{sv}", 0);
    // Without an answer there is nothing more to be done than that: the other one is busy, or hangs.
    [[maybe_unused]] const auto answer = bus_->call(request, patience);
}

void DBusSingleInstance::reopen() {
    if (std::exchange(startedByBus_, false)) return;
    if (requests_.reopen) requests_.reopen();
}

}  // namespace dorix
