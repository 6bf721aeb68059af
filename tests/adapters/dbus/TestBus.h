#pragma once

#include "adapters/EventLoop.h"
#include "linux/dbus/BusConnection.h"

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace dorix {

/// A session bus of a test's own, which is the session's for as long as it lives. It starts no services.
class TestBus {
 public:
    TestBus();
    ~TestBus();
    TestBus(const TestBus&) = delete;
    TestBus& operator=(const TestBus&) = delete;

    void kill();

 private:
    std::filesystem::path folder_;
    pid_t daemon_ = -1;
};

/// Another program on the bus, which runs in the same loop: owns `name` and offers what it is told to.
class TestPeer {
 public:
    TestPeer(EventLoop& loop, const char* name);

    BusConnection& bus() { return *bus_; }

    /// Calls a method, without arguments unless `fill` adds some, and waits for the answer; "" or the error.
    std::string call(const std::string& destination, const std::string& path, const char* interface,
                     const char* member, const std::function<void(sd_bus_message*)>& fill = {},
                     const std::function<void(sd_bus_message*)>& read = {});

 private:
    EventLoop& loop_;
    std::unique_ptr<BusConnection> bus_;
};

}  // namespace dorix
