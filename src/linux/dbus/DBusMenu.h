#pragma once

#include "linux/dbus/BusConnection.h"
#include "platform/StatusItem.h"

#include <cstdint>

namespace dorix {

/// A menu that the desktop draws (com.canonical.dbusmenu). It is built when the desktop is about to show it.
/// What is chosen runs on the main executor, a turn later.
class DBusMenu {
 public:
    static constexpr const char* path = "/MenuBar";

    /// Both must outlive it, and it the connection's loop.
    DBusMenu(Executor& main, BusConnection& bus) : main_(main), bus_(bus) {}
    DBusMenu(const DBusMenu&) = delete;
    DBusMenu& operator=(const DBusMenu&) = delete;

    void show(MenuBuilder builder);

 private:
    friend struct MenuInterface;

    bool rebuild();
    void appendLayout(sd_bus_message* reply, std::int32_t parent) const;
    void appendItem(sd_bus_message* reply, std::int32_t id) const;
    void appendProperties(sd_bus_message* reply, std::int32_t id) const;
    const ClosureMenuItem* item(std::int32_t id) const;
    bool isKnown(std::int32_t id) const { return id == 0 || item(id); }
    void happened(std::int32_t id, const std::string& event);

    Executor& main_;
    BusConnection& bus_;
    MenuBuilder builder_;
    Menu menu_;
    std::int32_t firstId_ = 1;  // of the menu as it is; an id from before means nothing any more
    std::uint32_t revision_ = 1;
};

}  // namespace dorix
