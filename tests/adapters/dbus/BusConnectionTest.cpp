#include "adapters/harness/SessionBus.h"
#include "linux/dbus/BusConnection.h"

namespace dorix {
namespace {

TEST(BusConnectionTest, ACallThatIsNotAnsweredEndsOnAQuietBus) {
    const Environment impatient({{"SYSTEMD_BUS_TIMEOUT", "200ms"}});
    const SessionBus session;
    EventLoop loop;
    const BusPeer silent(loop, "test.Silent", "/test", {{"Ask", [](auto*) { return 1; }}});
    const auto bus = BusConnection::session(loop.main, loop.main);
    std::string error;
    bus->callLater(bus->newCall("test.Silent", "/test", "test.Service", "Ask"),
                   [&](sd_bus_message* reply) { error = sd_bus_message_get_error(reply)->name; });
    EXPECT_TRUE(loop.runUntil([&] { return error == "org.freedesktop.DBus.Error.NoReply"; })) << error;
}

}  // namespace
}  // namespace dorix
