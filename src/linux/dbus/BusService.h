#pragma once

#include "linux/dbus/BusConnection.h"

#include <functional>
#include <string>

namespace dorix {

/// A service on a bus by its well-known name, whoever owns that at the time. Main executor; nothing blocks.
class BusService {
 public:
    /// Whether to have the bus start the service where it does not run, each time that the bus is joined.
    enum class Start { no, yes };

    /// `ownerChanged` is called when the service comes, goes or is replaced, also when the bus goes; never
    /// from the constructor. The bus must outlive this.
    BusService(BusConnection& bus, std::string name, std::function<void()> ownerChanged,
               Start start = Start::no);
    BusService(const BusService&) = delete;
    BusService& operator=(const BusService&) = delete;

    /// The unique name of whoever owns the service's; "" as long as nobody is known to.
    const std::string& owner() const { return owner_; }

    /// Whether it was the present owner who sent this.
    bool hasSent(sd_bus_message* message) const;

    /// A call that starts the service where it does not run and can be started; nullptr when it cannot be
    /// made.
    sdbus::Message newCall(const std::string& path, const char* interface, const char* member) const;

    /// Calls the handler for the owner's signals of that name, and for nobody else's. On every path if it is
    /// empty.
    Subscription listen(const std::string& path, const std::string& interface, const std::string& member,
                        BusConnection::Handler handler) const;

 private:
    void join();
    void setOwner(const std::string& owner);

    BusConnection& bus_;
    const std::string name_;
    std::function<void()> ownerChanged_;
    const Start start_;
    std::string owner_;
    Subscription answer_;
    Subscription changes_;
    Subscription joins_;
};

}  // namespace dorix
