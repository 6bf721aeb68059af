#include "adapters/dbus/TestBus.h"
#include "base/async/TaskScope.h"
#include "linux/dbus/DBusNotifications.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace dorix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* service = "org.freedesktop.Notifications";
constexpr const char* path = "/org/freedesktop/Notifications";

/// A notification server that writes down what it is asked for.
class Server {
 public:
    Server(EventLoop& loop, bool canDoAll) : canDoAll_(canDoAll), peer_(loop, nullptr) {
        peer_.bus().addObject(path, service, table(), this);
        peer_.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
                   [](sd_bus_message* message) { sd_bus_message_append(message, "su", service, 0); });
    }

    void click(std::uint32_t id, const char* action) {
        peer_.bus().emit(path, service, "ActionInvoked",
                         [&](sd_bus_message* message) { sd_bus_message_append(message, "us", id, action); });
    }
    void dismiss(std::uint32_t id) {
        peer_.bus().emit(path, service, "NotificationClosed",
                         [&](sd_bus_message* message) { sd_bus_message_append(message, "uu", id, 2); });
    }

    std::vector<std::string> log;

 private:
    static int capabilities(sd_bus_message* call, void* self, sd_bus_error*) {
        if (static_cast<Server*>(self)->canDoAll_)
            return sd_bus_reply_method_return(call, "as", 2, "actions", "body-markup");
        return sd_bus_reply_method_return(call, "as", 0);
    }

    static int notify(sd_bus_message* call, void* userdata, sd_bus_error*) {
        auto& self = *static_cast<Server*>(userdata);
        const char* name = "";
        std::uint32_t replaces = 0;
        const char* icon = "";
        const char* title = "";
        const char* body = "";
        sd_bus_message_read(call, "susss", &name, &replaces, &icon, &title, &body);
        std::string line = std::to_string(replaces) + "|" + title + "|" + body + "|";
        sd_bus_message_enter_container(call, 'a', "s");
        for (const char* text = nullptr; sd_bus_message_read(call, "s", &text) > 0;)
            line += std::string(text) + ",";
        self.log.push_back(line);
        return sd_bus_reply_method_return(call, "u", replaces ? replaces : ++self.lastId_);
    }

    static int close(sd_bus_message* call, void* self, sd_bus_error*) {
        std::uint32_t id = 0;
        sd_bus_message_read(call, "u", &id);
        static_cast<Server*>(self)->log.push_back("close " + std::to_string(id));
        return sd_bus_reply_method_return(call, nullptr);
    }

    static const sd_bus_vtable* table() {
        static const sd_bus_vtable entries[] = {
            SD_BUS_VTABLE_START(0),
            SD_BUS_METHOD("GetCapabilities", "", "as", capabilities, SD_BUS_VTABLE_UNPRIVILEGED),
            SD_BUS_METHOD("Notify", "susssasa{sv}i", "u", notify, SD_BUS_VTABLE_UNPRIVILEGED),
            SD_BUS_METHOD("CloseNotification", "u", "", close, SD_BUS_VTABLE_UNPRIVILEGED),
            SD_BUS_SIGNAL("ActionInvoked", "us", 0),
            SD_BUS_SIGNAL("NotificationClosed", "uu", 0),
            SD_BUS_VTABLE_END,
        };
        return entries;
    }

    bool canDoAll_;
    std::uint32_t lastId_ = 0;
    TestPeer peer_;
};

class NotificationsTest : public testing::Test {
 protected:
    NotificationsTest() {
        notifications.onResponse([this](const auto& response) { responses.push_back(response); });
    }

    bool authorised() {
        TaskScope tasks(loop.main);
        std::optional<bool> result;
        tasks.spawn([](Notifications& asked, std::optional<bool>& answer) -> Task<void> {
            answer = co_await asked.requestAuthorization();
        }(notifications, result));
        loop.runUntil([&] { return result.has_value(); });
        return result.value_or(false);
    }
    void expectLog(Server& server, const testing::Matcher<std::vector<std::string>>& expected,
                   std::size_t size) {
        loop.runUntil([&] { return server.log.size() >= size; });
        loop.runFor(0.02);
        EXPECT_THAT(server.log, expected);
        server.log.clear();
    }

    const Notification weekly{.identifier = "dorix-weekly",
                              .title = "Tu semana con DORIX",
                              .body = "3 < 4 & más",
                              .actions = {{"later", "Luego"}},
                              .userInfo = {{"open", "learned"}}};
    EventLoop loop;
    TestBus session;
    std::unique_ptr<BusConnection> bus = BusConnection::openSession(loop.main, loop.main, [] {});
    DBusNotifications notifications{loop.main, *bus};
    std::vector<NotificationResponse> responses;
};

TEST_F(NotificationsTest, ShowsReplacesAndTellsOfClicks) {
    Server server(loop, true);
    EXPECT_TRUE(authorised());
    const std::string text = "|Tu semana con DORIX|3 &lt; 4 &amp; más|default,,later,Luego,";
    notifications.post(weekly);
    notifications.post(weekly);  // before the server has said what the first one is called
    expectLog(server, ElementsAre("0" + text, "1" + text), 2);

    server.click(1, "default");
    server.click(1, "later");
    server.click(7, "default");
    ASSERT_TRUE(loop.runUntil([&] { return responses.size() == 2; }));
    EXPECT_EQ(responses[0], (NotificationResponse{"dorix-weekly", "default", {{"open", "learned"}}}));
    EXPECT_EQ(responses[1].action, "later");

    server.dismiss(1);
    loop.runFor(0.02);
    notifications.post(weekly);
    expectLog(server, ElementsAre("0" + text), 1);
    notifications.remove("dorix-weekly");
    notifications.remove("dorix-weekly");
    expectLog(server, ElementsAre("close 2"), 1);
    notifications.post(weekly);
    notifications.remove("dorix-weekly");  // before it is there
    expectLog(server, ElementsAre("0" + text, "close 3"), 2);
}

TEST_F(NotificationsTest, AsksNoMoreThanTheServerCanDo) {
    Server server(loop, false);
    notifications.post(weekly);
    expectLog(server, ElementsAre("0|Tu semana con DORIX|3 < 4 & más|"), 1);
}

TEST_F(NotificationsTest, ComesAndGoesWithTheServer) {
    EXPECT_FALSE(authorised());
    notifications.post(weekly);
    loop.runFor(0.02);
    {
        Server server(loop, true);
        EXPECT_THAT(server.log, IsEmpty()) << "what could not be shown is not shown later";
        EXPECT_TRUE(authorised());
        notifications.post(weekly);
        loop.runUntil([&] { return !server.log.empty(); });
        loop.runFor(0.02);
    }
    loop.runFor(0.02);
    EXPECT_FALSE(authorised());
    Server server(loop, false);
    notifications.post(weekly);
    expectLog(server, ElementsAre("0|Tu semana con DORIX|3 < 4 & más|"), 1);
    session.kill();
    loop.runFor(0.02);
    EXPECT_FALSE(authorised());
    notifications.post(weekly);
    notifications.remove("dorix-weekly");
}

}  // namespace
}  // namespace dorix
