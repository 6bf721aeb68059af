#include "adapters/dbus/TestBus.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace dorix {
namespace {

constexpr const char* path = "/test";
constexpr const char* interface = "test.Service";

/// Takes a call and never answers.
int swallow(sd_bus_message*, void*, sd_bus_error*) { return 1; }

// NOLINTBEGIN(concurrency-mt-unsafe, modernize-avoid-c-arrays): one thread; sd-bus wants such a table
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
// NOLINTEND(concurrency-mt-unsafe, modernize-avoid-c-arrays)

}  // namespace
}  // namespace dorix
