#include "adapters/harness/SessionBus.h"
#include "linux/dbus/DBusNotifications.h"

#include <gmock/gmock.h>

namespace dorix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* service = "org.freedesktop.Notifications";
constexpr const char* path = "/org/freedesktop/Notifications";

/// A notification server that writes down what it is asked for.
class Server {
 public:
    Server(EventLoop& loop, bool canDoAll)
        : peer_(loop, service, path,
                {{"GetCapabilities",
                  [canDoAll](auto* call) {
                      return canDoAll ? sd_bus_reply_method_return(call, "as", 2, "actions", "body-markup")
                                      : sd_bus_reply_method_return(call, "as", 0);
                  }},
                 {"Notify", [this](auto* call) { return notify(call); }},
                 {"CloseNotification", [this](auto* call) { return close(call); }}}) {}

    void click(std::uint32_t id, const char* action) {
        peer_.emit(path, service, "ActionInvoked", "us", id, action);
    }
    void dismiss(std::uint32_t id) { peer_.emit(path, service, "NotificationClosed", "uu", id, 2); }

    std::vector<std::string> log;
    std::string client;  // who asked last
    bool diesAfterNotify = false;

 private:
    int notify(sd_bus_message* call) {
        client = sd_bus_message_get_sender(call);
        std::uint32_t replaces = 0;
        nextString(call);
        sd_bus_message_read(call, "u", &replaces);
        nextString(call);
        std::string line = std::to_string(replaces) + "|" + nextString(call) + "|";
        line += nextString(call) + "|";
        sd_bus_message_enter_container(call, 'a', "s");
        for (const char* text = nullptr; sd_bus_message_read(call, "s", &text) > 0;)
            line += std::string(text) + ",";
        log.push_back(line);
        const int replied = sd_bus_reply_method_return(call, "u", replaces ? replaces : ++lastId_);
        if (diesAfterNotify) peer_.vanish();
        return replied;
    }
    int close(sd_bus_message* call) {
        std::uint32_t id = 0;
        sd_bus_message_read(call, "u", &id);
        log.push_back("close " + std::to_string(id));
        return sd_bus_reply_method_return(call, nullptr);
    }

    std::uint32_t lastId_ = 0;
    BusPeer peer_;
};

class NotificationsTest : public testing::Test {
 protected:
    NotificationsTest() {
        notifications.onResponse([this](const auto& response) { responses.push_back(response); });
    }

    bool authorised() { return loop.result(notifications.requestAuthorization()); }
    void expectLog(Server& server, const std::vector<std::string>& expected) {
        loop.runUntil([&] { return server.log.size() >= expected.size(); });
        loop.runFor(0.02);
        EXPECT_EQ(server.log, expected);
        server.log.clear();
    }

    const Notification weekly{.identifier = "dorix-weekly",
                              .title = "Tu semana con DORIX",
                              .body = "3 < 4 & más",
                              .actions = {{"later", "Luego"}},
                              .userInfo = {{"open", "learned"}}};
    const std::string text = "|Tu semana con DORIX|3 &lt; 4 &amp; más|default,,later,Luego,";
    EventLoop loop;
    SessionBus session;
    std::unique_ptr<BusConnection> bus = BusConnection::session(loop.main, loop.main);
    DBusNotifications notifications{loop.main, *bus};
    std::vector<NotificationResponse> responses;
};

TEST_F(NotificationsTest, ShowsReplacesAndTellsOfClicks) {
    Server server(loop, true);
    EXPECT_TRUE(authorised());
    notifications.post(weekly);
    notifications.post(weekly);  // before the server has said what the first one is called
    expectLog(server, {"0" + text, "1" + text});

    server.click(1, "default");
    server.click(1, "later");
    server.click(7, "default");
    ASSERT_TRUE(loop.runUntil([&] { return responses.size() == 2; }));
    EXPECT_EQ(responses[0], (NotificationResponse{"dorix-weekly", "default", {{"open", "learned"}}}));
    EXPECT_EQ(responses[1].action, "later");

    BusPeer liar(loop);
    liar.emitTo(server.client, path, service, "ActionInvoked", "us", 1, "default");
    liar.emit(path, service, "NotificationClosed", "uu", 1, 2);
    liar.emitTo(server.client, "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameOwnerChanged", "sss",
                service, "", liar.name().c_str());
    liar.emitTo(server.client, path, service, "ActionInvoked", "us", 1, "default");
    loop.runFor(0.1);
    EXPECT_EQ(responses.size(), 2) << "only the server is believed";

    server.dismiss(1);
    loop.runFor(0.02);
    notifications.post(weekly);
    expectLog(server, {"0" + text});
    notifications.remove("dorix-weekly");
    notifications.remove("dorix-weekly");
    expectLog(server, {"close 2"});
    notifications.post(weekly);
    notifications.remove("dorix-weekly");  // before it is there
    expectLog(server, {"0" + text, "close 3"});
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
        expectLog(server, {"0" + text});
    }
    ASSERT_TRUE(loop.runUntil([&] { return !authorised(); }));
    {
        Server brief(loop, true);
        brief.diesAfterNotify = true;
        notifications.post(weekly);
        expectLog(brief, {"0" + text});
    }
    Server server(loop, false);
    notifications.post(weekly);
    expectLog(server, {"0|Tu semana con DORIX|3 < 4 & más|"});  // no more than this one can do
    session.kill();
    ASSERT_TRUE(loop.runUntil([&] { return !authorised(); }));
    notifications.post(weekly);
    notifications.remove("dorix-weekly");

    session.start();
    Server back(loop, true);
    ASSERT_TRUE(loop.runUntil([&] { return authorised(); }));
    notifications.post(weekly);
    expectLog(back, {"0" + text});
    back.click(1, "later");
    EXPECT_TRUE(loop.runUntil([&] { return responses.size() == 1; }));
}

}  // namespace
}  // namespace dorix
