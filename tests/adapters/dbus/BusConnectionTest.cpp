#include "adapters/dbus/TestBus.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace dorix {
namespace {

constexpr const char* path = "/test";
constexpr const char* interface = "test.Service";

/// Takes a call and never answers.
int swallow(sd_bus_message*, void*, sd_bus_error*) { return 1; }

TEST(BusConnectionTest, ACallThatIsNotAnsweredEndsOnAQuietBus) {
    setenv("SYSTEMD_BUS_TIMEOUT", "200ms", 1);
    const TestBus session;
    EventLoop loop;
    TestPeer silent(loop, "test.Silent");
    const sd_bus_vtable table[] = {SD_BUS_VTABLE_START(0),
                                   SD_BUS_METHOD("Ask", "", "", swallow, SD_BUS_VTABLE_UNPRIVILEGED),
                                   SD_BUS_VTABLE_END};
    silent.bus().addObject(path, interface, table, nullptr);
    TestPeer caller(loop, nullptr);
    EXPECT_EQ(caller.call("test.Silent", path, interface, "Ask"), "org.freedesktop.DBus.Error.NoReply");
    unsetenv("SYSTEMD_BUS_TIMEOUT");
}

TEST(BusConnectionTest, MoreThanTheSocketTakesAtOnceIsSent) {
    const TestBus session;
    EventLoop loop;
    TestPeer listener(loop, nullptr);
    std::size_t heard = 0;
    listener.bus().listen("type='signal',interface='test.Service'", [&](sd_bus_message*) { ++heard; });
    listener.call("org.freedesktop.DBus", path, "org.freedesktop.DBus.Peer", "Ping");  // the rule is in force
    TestPeer teller(loop, nullptr);
    const std::string load(100'000, 'x');
    constexpr std::size_t count = 100;
    for (std::size_t i = 0; i < count; ++i) {
        teller.bus().emit(path, interface, "Told", [&](sd_bus_message* message) {
            sd_bus_message_append(message, "s", load.c_str());
        });
    }
    EXPECT_TRUE(loop.runUntil([&] { return heard == count; })) << heard;
}

}  // namespace
}  // namespace dorix
