#include "adapters/harness/SessionBus.h"
#include "base/async/ManualExecutor.h"
#include "linux/dbus/DBusSessionState.h"

namespace dorix {
namespace {

constexpr const char* sessionPath = "/org/freedesktop/login1/session/_37";
constexpr const char* sessionInterface = "org.freedesktop.login1.Session";
constexpr const char* saverName = "org.mate.ScreenSaver";

/// A login manager with one session, which it knows by the name "7" or as the caller's own.
class LoginManager {
 public:
    explicit LoginManager(EventLoop& loop)
        : peer_(loop, "org.freedesktop.login1", "/org/freedesktop/login1",
                {{"GetSession", [](auto* call) {
                      const auto wanted = nextString(call);
                      return wanted == "7" || wanted == "auto"
                                 ? sd_bus_reply_method_return(call, "o", sessionPath)
                                 : sd_bus_reply_method_errorf(call, "org.freedesktop.login1.NoSuchSession",
                                                              "-");
                  }}}) {
        peer_.answerAt(sessionPath, {{"Get", [this](auto* call) {
                                          EXPECT_EQ(nextString(call), sessionInterface);
                                          EXPECT_EQ(nextString(call), "LockedHint");
                                          client = sd_bus_message_get_sender(call);
                                          return sd_bus_reply_method_return(call, "v", "b", hint ? 1 : 0);
                                      }}});
    }

    void tell(const char* signal) { peer_.emit(sessionPath, sessionInterface, signal, ""); }
    void setHint(bool locked) {
        hint = locked;
        peer_.emit(sessionPath, "org.freedesktop.DBus.Properties", "PropertiesChanged", "sa{sv}as",
                   sessionInterface, 1, "LockedHint", "b", locked ? 1 : 0, 0);
    }

    bool hint = false;
    std::string client;

 private:
    BusPeer peer_;
};

class SessionStateTest : public testing::Test {
 protected:
    void follow() { state.emplace(time, *system, *bus); }
    bool becomesLocked(bool locked) {
        return loop.runUntil([&] { return state->locked.get() == locked; }, 5);
    }
    void expectStill(bool locked) {
        loop.runFor(0.05);
        EXPECT_EQ(state->locked.get(), locked);
    }

    EventLoop loop;
    ManualExecutor time;
    SessionBus session;
    const Environment computer{{{"DBUS_SYSTEM_BUS_ADDRESS", session.address()}, {"XDG_SESSION_ID", ""}}};
    std::unique_ptr<BusConnection> system = BusConnection::system(loop.main, loop.main);
    std::unique_ptr<BusConnection> bus = BusConnection::session(loop.main, loop.main);
    std::optional<DBusSessionState> state;
};

TEST_F(SessionStateTest, TheLoginManagersHintIsFollowedAndARequestBelievedForAWhile) {
    LoginManager manager(loop);
    manager.hint = true;
    const Environment stale({{"XDG_SESSION_ID", "c99"}});
    follow();
    EXPECT_TRUE(becomesLocked(true)) << "as it is at the start";
    manager.setHint(false);
    EXPECT_TRUE(becomesLocked(false));

    manager.tell("Lock");  // and nothing locks
    EXPECT_TRUE(becomesLocked(true));
    time.advanceBy(9);
    expectStill(true);
    time.advanceBy(2);
    expectStill(false);

    manager.tell("Lock");
    EXPECT_TRUE(becomesLocked(true));
    manager.setHint(true);
    loop.runFor(0.05);
    time.advanceBy(60);
    expectStill(true);
    manager.tell("Unlock");  // which the locker has not done yet
    expectStill(true);
    manager.setHint(false);
    EXPECT_TRUE(becomesLocked(false));
}

TEST_F(SessionStateTest, AScreenSaverIsEnoughAndTakesItsWordWithIt) {
    LoginManager manager(loop);
    follow();
    {
        BusPeer saver(loop, saverName, "/org/mate/ScreenSaver",
                      {{"GetActive", [](auto* call) { return sd_bus_reply_method_return(call, "b", 1); }}});
        EXPECT_TRUE(becomesLocked(true)) << "as it is when it comes";
        saver.emit("/", saverName, "ActiveChanged", "b", 0);
        EXPECT_TRUE(becomesLocked(false));
        saver.emit("/", saverName, "ActiveChanged", "b", 1);
        EXPECT_TRUE(becomesLocked(true));
        manager.setHint(true);
        manager.setHint(false);
        expectStill(true);
    }
    EXPECT_TRUE(becomesLocked(false)) << "one that has died covers nothing";
}

TEST_F(SessionStateTest, OnlyTheServicesThemselvesAreBelieved) {
    std::optional<LoginManager> manager(loop);
    std::string asker;
    const BusPeer saver(loop, saverName, "/", {{"GetActive", [&](auto* call) {
                                                    asker = sd_bus_message_get_sender(call);
                                                    return sd_bus_reply_method_return(call, "b", 0);
                                                }}});
    follow();
    ASSERT_TRUE(loop.runUntil([&] { return !manager->client.empty() && !asker.empty(); }));
    BusPeer liar(loop);
    for (const auto& client : {manager->client, asker}) {
        liar.emitTo(client, sessionPath, sessionInterface, "Lock", "");
        liar.emitTo(client, "/", saverName, "ActiveChanged", "b", 1);
        liar.emit("/", saverName, "ActiveChanged", "b", 1);
    }
    expectStill(false);
}

TEST_F(SessionStateTest, AllIsAskedAnewWhenTheBusIsBack) {
    std::optional<LoginManager> manager(loop);
    manager->hint = true;
    follow();
    EXPECT_TRUE(becomesLocked(true));
    session.kill();
    EXPECT_TRUE(becomesLocked(false)) << "nobody says so any more";
    session.start();
    manager.emplace(loop);
    manager->hint = true;
    EXPECT_TRUE(becomesLocked(true));
    manager.reset();
    EXPECT_TRUE(becomesLocked(false));
}

}  // namespace
}  // namespace dorix
