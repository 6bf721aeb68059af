#include "adapters/dbus/TestBus.h"
#include "base/async/TaskScope.h"
#include "fakes/TemporaryFolder.h"
#include "linux/dbus/PortalSavePanel.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

namespace dorix {
namespace {

constexpr const char* service = "org.freedesktop.portal.Desktop";
constexpr const char* handle = "/org/freedesktop/portal/desktop/request/1_1/t";

/// The desktop's dialogs: writes down what it is asked for, and answers as the test says.
class Portal {
 public:
    explicit Portal(EventLoop& loop) : peer_(loop, nullptr) {
        peer_.bus().addObject("/org/freedesktop/portal/desktop", "org.freedesktop.portal.FileChooser",
                              table(), this);
        peer_.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
                   [](sd_bus_message* message) { sd_bus_message_append(message, "su", service, 0); });
    }

    void respond(std::uint32_t outcome, const char* uri) {
        peer_.bus().emit(handle, "org.freedesktop.portal.Request", "Response", [&](sd_bus_message* message) {
            sd_bus_message_append(message, "ua{sv}", outcome, 2, "choices", "s", "", "uris", "as", 1, uri);
        });
    }

    std::string asked;

 private:
    static int save(sd_bus_message* call, void* self, sd_bus_error*) {
        const char* parent = "";
        const char* title = "";
        const char* key = "";
        const char* name = "";
        sd_bus_message_read(call, "ss", &parent, &title);
        sd_bus_message_enter_container(call, 'a', "{sv}");
        sd_bus_message_enter_container(call, 'e', "sv");
        sd_bus_message_read(call, "sv", &key, "s", &name);
        static_cast<Portal*>(self)->asked = std::string(parent) + "|" + title + "|" + key + "=" + name;
        return sd_bus_reply_method_return(call, "o", handle);
    }

    static const sd_bus_vtable* table() {
        static const sd_bus_vtable entries[] = {
            SD_BUS_VTABLE_START(0),
            SD_BUS_METHOD("SaveFile", "ssa{sv}", "o", save, SD_BUS_VTABLE_UNPRIVILEGED),
            SD_BUS_VTABLE_END,
        };
        return entries;
    }

    TestPeer peer_;
};

class SavePanelTest : public testing::Test {
 protected:
    void ask() {
        done = false;
        chosen.reset();
        tasks.spawn([](SavePanelTest& test) -> Task<void> {
            test.chosen = co_await test.panel.run(
                {.title = "Exportar historial", .fileName = "DORIX.md", .ownWindow = 0x400001});
            test.done = true;
        }(*this));
    }

    EventLoop loop;
    TestBus session;
    TemporaryFolder folder;
    std::unique_ptr<BusConnection> bus = BusConnection::openSession(loop.main, loop.main, [] {});
    PortalSavePanel panel{bus.get(), folder.path()};
    std::optional<std::filesystem::path> chosen;
    bool done = false;
    TaskScope tasks{loop.main};
};

TEST_F(SavePanelTest, AsksTheDesktop) {
    Portal portal(loop);
    ask();
    ASSERT_TRUE(loop.runUntil([&] { return !portal.asked.empty(); }));
    EXPECT_EQ(portal.asked, "x11:400001|Exportar historial|current_name=DORIX.md");
    portal.respond(0, "file:///home/ana/Mis%20cosas/a%c3%b1o.md");
    ASSERT_TRUE(loop.runUntil([&] { return done; }));
    EXPECT_EQ(chosen, "/home/ana/Mis cosas/año.md");

    for (const auto& [outcome, uri] : {std::pair(1U, "file:///x"), std::pair(0U, "https://a.example/x")}) {
        portal.asked.clear();
        ask();
        ASSERT_TRUE(loop.runUntil([&] { return !portal.asked.empty(); }));
        portal.respond(outcome, uri);
        ASSERT_TRUE(loop.runUntil([&] { return done; }));
        EXPECT_FALSE(chosen) << uri;
    }
}

TEST_F(SavePanelTest, ADialogThatDiesWithThePortalIsNoAnswer) {
    std::optional<Portal> portal(loop);
    ask();
    ASSERT_TRUE(loop.runUntil([&] { return !portal->asked.empty(); }));
    loop.runFor(0.1);  // the request's path has come back
    portal.reset();
    ASSERT_TRUE(loop.runUntil([&] { return done; }));
    EXPECT_FALSE(chosen);
}

TEST_F(SavePanelTest, WhereNobodyAsksItFindsANameThatIsFree) {
    for (const char* name : {"DORIX.md", "DORIX 2.md", "DORIX 3.md"}) {
        ask();
        ASSERT_TRUE(loop.runUntil([&] { return done; }));
        EXPECT_EQ(chosen, folder.path() / name);
        std::ofstream(*chosen) << "x";
    }
}

}  // namespace
}  // namespace dorix
