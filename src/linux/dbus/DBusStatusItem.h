#pragma once

#include "linux/dbus/BusConnection.h"
#include "linux/dbus/BusService.h"
#include "linux/dbus/DBusMenu.h"
#include "platform/StatusItem.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace dorix {

/// A status icon as desktops take them over the session bus (StatusNotifierItem), with its menu. It is
/// announced to whoever looks after such icons, now and when that comes up anew.
class DBusStatusItem final : public StatusItem {
 public:
    /// How this desktop says a text of the interface.
    using Words = std::function<std::string(std::string_view)>;

    /// On the session bus. Both must outlive it; it must outlive the running of the main loop.
    DBusStatusItem(Executor& main, BusConnection& bus, Words words);

    void show(std::function<void()> clicked, MenuBuilder menu) override;
    void setToolTip(const std::string& text) override;

 private:
    friend struct StatusItemInterface;

    void announce();

    Executor& main_;
    BusConnection& bus_;
    const Words words_;
    DBusMenu menu_;
    bool shown_ = false;
    std::function<void()> clicked_;
    std::string toolTip_;
    BusService watcher_;
};

}  // namespace dorix
