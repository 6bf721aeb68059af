#include "linux/dbus/DBusSessionState.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>

namespace dorix {

namespace {

constexpr const char* loginManager = "org.freedesktop.login1";
constexpr const char* managerPath = "/org/freedesktop/login1";
constexpr const char* managerInterface = "org.freedesktop.login1.Manager";
constexpr const char* sessionInterface = "org.freedesktop.login1.Session";
constexpr const char* properties = "org.freedesktop.DBus.Properties";

constexpr std::array screenSavers = {"org.freedesktop.ScreenSaver", "org.gnome.ScreenSaver",
                                     "org.mate.ScreenSaver", "org.cinnamon.ScreenSaver",
                                     "org.xfce.ScreenSaver"};

/// A request to lock is as good as a lock for this long. Whoever locks has said so by then; where nobody
/// does, the program is not to stay away for ever.
constexpr double lockerPatience = 10.0;  // seconds

bool isError(sd_bus_message* reply) {
    return reply == nullptr || sd_bus_message_is_method_error(reply, nullptr) != 0;
}

/// "org.mate.ScreenSaver" has "/org/mate/ScreenSaver".
std::string pathOfName(std::string name) {
    std::ranges::replace(name, '.', '/');
    return "/" + name;
}

/// The session that the environment names, the caller's or else the one that its user sees, and the one that
/// this process belongs to: each may be missing. nullptr when there is no other way.
sdbus::Message newSearch(const BusService& manager, int search) {
    const auto ask = [&](const char* member) {
        return manager.newCall(managerPath, managerInterface, member);
    };
    const char* const named = std::getenv("XDG_SESSION_ID");  // NOLINT(concurrency-mt-unsafe)
    sdbus::Message request;
    if (search == 0 || search == 1) {
        request = ask("GetSession");
        sd_bus_message_append(request.get(), "s", search == 0 && named != nullptr ? named : "auto");
    } else if (search == 2) {
        request = ask("GetSessionByPID");
        sd_bus_message_append(request.get(), "u", 0);  // the caller
    }
    return request;
}

}  // namespace

DBusSessionState::DBusSessionState(Executor& main, BusConnection& system, BusConnection& session)
    : system_(system),
      session_(session),
      asking_(main),
      loginManager_(system, loginManager, [this] { loginManagerChanged(); }) {
    for (const char* name : screenSavers) screenSavers_.emplace_back(*this, name);
}

void DBusSessionState::loginManagerChanged() {
    signals_.clear();
    answer_.reset();
    hint_ = false;
    asked_ = false;
    update();
    searches_ = 0;
    if (!loginManager_.owner().empty()) findSession();
}

void DBusSessionState::findSession() {
    const auto request = newSearch(loginManager_, searches_++);
    if (!request) return;
    answer_ = system_.ask(request, [this](sd_bus_message* reply) {
        const char* path = "";
        if (isError(reply) || sd_bus_message_read(reply, "o", &path) <= 0) return findSession();
        follow(path);
    });
}

void DBusSessionState::follow(const std::string& path) {
    path_ = path;
    const auto on = [&](const char* interface, const char* member, auto handler) {
        signals_.push_back(loginManager_.listen(path, interface, member, handler));
    };
    on(sessionInterface, "Lock", [this](sd_bus_message*) { lockAsked(); });
    on(sessionInterface, "Unlock", [this](sd_bus_message*) {
        asked_ = false;
        readHint();
    });
    on(properties, "PropertiesChanged", [this](sd_bus_message*) { readHint(); });
    readHint();
}

void DBusSessionState::readHint() {
    const auto request = loginManager_.newCall(path_, properties, "Get");
    sd_bus_message_append(request.get(), "ss", sessionInterface, "LockedHint");
    answer_ = system_.ask(request, [this](sd_bus_message* reply) {
        int locked = 0;
        if (isError(reply) || sd_bus_message_read(reply, "v", "b", &locked) <= 0) return;
        hint_ = locked != 0;
        update();
    });
}

void DBusSessionState::lockAsked() {
    asked_ = true;
    asking_.once(lockerPatience, [this] {
        asked_ = false;
        update();
    });
    update();
}

void DBusSessionState::update() {
    const bool told = hint_ || std::ranges::any_of(screenSavers_, &ScreenSaver::isActive);
    // From now on the locker's own word counts.
    if (told) asked_ = false;
    locked.set(told || asked_);
}

DBusSessionState::ScreenSaver::ScreenSaver(DBusSessionState& owner, const std::string& itsName)
    : state(owner),
      name(itsName),
      service(owner.session_, itsName, [this] { ownerChanged(); }),
      changes(
          service.listen("", itsName, "ActiveChanged", [this](sd_bus_message* signal) { take(signal); })) {}

/// At which of the usual paths it is, its maker has chosen; at the others it knows of nothing.
void DBusSessionState::ScreenSaver::ownerChanged() {
    answers.clear();
    isActive = false;
    state.update();
    if (service.owner().empty()) return;
    for (const auto& path : {pathOfName(name), std::string("/ScreenSaver"), std::string("/")}) {
        const auto request = state.session_.newCall(service.owner(), path, name.c_str(), "GetActive");
        answers.push_back(state.session_.ask(request, [this](sd_bus_message* reply) {
            if (!isError(reply)) take(reply);
        }));
    }
}

void DBusSessionState::ScreenSaver::take(sd_bus_message* message) {
    int active = 0;
    if (sd_bus_message_read(message, "b", &active) <= 0) return;
    isActive = active != 0;
    state.update();
}

}  // namespace dorix
