#include "linux/atspi/AccessibilityBus.h"

#include <array>
#include <utility>

namespace dorix {

namespace {

constexpr const char* busName = "org.a11y.Bus";
constexpr const char* busPath = "/org/a11y/bus";
constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";
constexpr const char* statusInterface = "org.a11y.Status";

/// What applications are asked to tell: without a listener they keep it to themselves.
constexpr std::array registeredEvents = {"object:state-changed:focused", "window:activate",
                                         "window:deactivate"};

constexpr int maxRetries = 3;

constexpr const char* focusRule =
    "type='signal',interface='org.a11y.atspi.Event.Object',member='StateChanged',arg0='focused'";
constexpr const char* activateRule =
    "type='signal',interface='org.a11y.atspi.Event.Window',member='Activate'";
constexpr const char* deactivateRule =
    "type='signal',interface='org.a11y.atspi.Event.Window',member='Deactivate'";

ObjectRef senderOf(sd_bus_message* event) {
    const char* sender = sd_bus_message_get_sender(event);
    const char* path = sd_bus_message_get_path(event);
    return {sender ? sender : "", path ? path : ""};
}

bool isError(sd_bus_message* reply) { return !reply || sd_bus_message_is_method_error(reply, nullptr) != 0; }

}  // namespace

void AccessibilityBus::connect() {
    if (bus_ || asking_) return;
    if (!session_) openSession();
    if (session_->isJoined.get()) askAddress();
}

BusConnection* AccessibilityBus::connection() const { return bus_ && bus_->isReady() ? bus_.get() : nullptr; }

void AccessibilityBus::openSession() {
    session_ = BusConnection::session(main_, watcher_);
    launcher_ = std::make_unique<BusService>(
        *session_, busName, [this] { launcherChanged(); }, BusService::Start::yes);
    status_ = launcher_->listen(busPath, propertiesInterface, "PropertiesChanged",
                                [this](sd_bus_message*) { statusChanged(); });
}

void AccessibilityBus::launcherChanged() {
    asking_ = false;
    // Another launcher means another bus, even where the old one still answers.
    if (!launcher_->owner().empty()) {
        askAddress();
    } else if (!bus_ && session_->isJoined.get()) {
        retry();
    }
}

void AccessibilityBus::switchOn() {
    retries_ = maxRetries;
    connect();
    if (session_->isJoined.get()) enable();
}

void AccessibilityBus::enable() {
    const auto request = session_->newCall(busName, busPath, propertiesInterface, "Set");
    sd_bus_message_append(request.get(), "ssv", statusInterface, "IsEnabled", "b", 1);
    session_->callLater(request, [this](sd_bus_message* reply) {
        if (!isError(reply)) isEnabled_ = true;
    });
}

/// Whoever switches it off in the desktop's settings is believed; the launcher tells of it.
void AccessibilityBus::statusChanged() {
    const auto request = session_->newCall(busName, busPath, propertiesInterface, "Get");
    sd_bus_message_append(request.get(), "ss", statusInterface, "IsEnabled");
    session_->callLater(request, [this](sd_bus_message* reply) {
        int enabled = 0;
        if (!isError(reply) && sd_bus_message_read(reply, "v", "b", &enabled) > 0) isEnabled_ = enabled != 0;
    });
}

void AccessibilityBus::askAddress() {
    asking_ = true;
    enable();
    session_->callLater(session_->newCall(busName, busPath, busName, "GetAddress"),
                        [this](sd_bus_message* reply) {
                            asking_ = false;
                            const char* address = nullptr;
                            if (isError(reply) || sd_bus_message_read(reply, "s", &address) <= 0) return;
                            if (!bus_ || address_ != address) open(address);
                        });
}

void AccessibilityBus::open(const std::string& address) {
    focus_ = {};
    applications_ = {};
    address_ = address;
    signals_.clear();
    bus_ = BusConnection::openAddress(address, main_, watcher_, [this] { lost(); });
    if (bus_) listen();
}

void AccessibilityBus::listen() {
    const auto on = [this](const char* rule, BusConnection::Handler handler) {
        signals_.push_back(bus_->listen(rule, std::move(handler)));
    };
    on(focusRule, [this](sd_bus_message* event) {
        const char* what = nullptr;
        std::int32_t gained = 0;
        if (sd_bus_message_read(event, "si", &what, &gained) <= 0) return;
        gained ? focus_.focusGained(senderOf(event)) : focus_.focusLost(senderOf(event));
    });
    on(activateRule, [this](sd_bus_message* event) { focus_.windowActivated(senderOf(event)); });
    on(deactivateRule, [this](sd_bus_message* event) { focus_.windowDeactivated(senderOf(event)); });
    signals_.push_back(bus_->listenToOwners(",arg2=''", [this](const auto& name, const auto&) {
        focus_.gone(name);
        applications_.gone(name);
    }));
    for (const char* event : registeredEvents) {
        const auto request = bus_->newCall("org.a11y.atspi.Registry", "/org/a11y/atspi/registry",
                                           "org.a11y.atspi.Registry", "RegisterEvent");
        sd_bus_message_append(request.get(), "sass", event, 0, "");
        bus_->callLater(request, [this](sd_bus_message* reply) {
            if (!isError(reply)) retries_ = maxRetries;
        });
    }
}

void AccessibilityBus::lost() {
    bus_.reset();
    retry();
}

/// It comes back when somebody starts it anew, which is told, or when it is asked for. One that has worked is
/// started again here, a few times only: it may be breaking each time.
void AccessibilityBus::retry() {
    if (retries_ == 0) return;
    --retries_;
    connect();
}

}  // namespace dorix
