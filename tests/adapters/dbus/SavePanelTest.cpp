#include "adapters/harness/SessionBus.h"
#include "linux/dbus/PortalFolderPanel.h"
#include "linux/dbus/PortalSavePanel.h"

#include <fstream>

namespace dorix {
namespace {

constexpr const char* handle = "/org/freedesktop/portal/desktop/request/1_1/t";

/// The desktop's dialogs: writes down what it is asked for, and answers at once if it has an answer.
class Portal {
 public:
    explicit Portal(EventLoop& loop)
        : peer_(loop, "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
                {{"SaveFile", [this](auto* call) { return show(call); }},
                 {"OpenFile", [this](auto* call) { return show(call); }}}) {}

    /// Waits until the one who asked has taken in what came before.
    void ping() { EXPECT_TRUE(peer_.call(asker, "/", "org.freedesktop.DBus.Peer", "Ping")); }

    std::string asker;
    std::string asked;
    bool diesAfterAnswer = false;
    std::optional<std::pair<std::uint32_t, const char*>> answer;

 private:
    int show(sd_bus_message* call) {
        asker = sd_bus_message_get_sender(call);
        asked = nextString(call) + "|";
        asked += nextString(call) + "|";
        sd_bus_message_enter_container(call, 'a', "{sv}");
        sd_bus_message_enter_container(call, 'e', "sv");
        asked += nextString(call) + "=";
        asked += nextString(call);
        const int replied = sd_bus_reply_method_return(call, "o", handle);
        if (answer) {
            peer_.emit(handle, "org.freedesktop.portal.Request", "Response", "ua{sv}", answer->first, 2,
                       "choices", "s", "", "uris", "as", 1, answer->second);
        }
        if (diesAfterAnswer) peer_.vanish();
        return replied;
    }

    BusPeer peer_;
};

class SavePanelTest : public testing::Test {
 protected:
    auto run() {
        return panel.run({.title = "Exportar historial", .fileName = "DORIX.md", .ownWindow = 0x400001});
    }

    EventLoop loop;
    SessionBus session;
    TemporaryFolder folder;
    std::unique_ptr<BusConnection> bus = BusConnection::session(loop.main, loop.main);
    PortalFileChooser chooser{*bus};
    PortalSavePanel panel{chooser, folder.path()};
    PortalFolderPanel folders{chooser};
};

TEST_F(SavePanelTest, AsksTheDesktop) {
    Portal portal(loop);
    portal.answer = {0, "file:///home/ana/Mis%20cosas/a%c3%b1o.md"};
    EXPECT_EQ(loop.result(run()), "/home/ana/Mis cosas/año.md");
    EXPECT_EQ(portal.asked, "x11:400001|Exportar historial|current_name=DORIX.md");
    portal.answer = {1, "file:///x"};
    EXPECT_EQ(loop.result(run()), std::nullopt);
    portal.answer = {0, "https://a.example/x"};
    EXPECT_EQ(loop.result(run()), std::nullopt);
}

TEST_F(SavePanelTest, AsksForAFolderWhereTheDesktopCan) {
    const auto choose = [&] {
        return loop.result(folders.run({.title = "Memoria", .accept = "Añadir", .ownWindow = 1}));
    };
    EXPECT_FALSE(choose().wasAsked);
    Portal portal(loop);
    portal.answer = {0, "file:///home/ana/Mis%20cosas"};
    EXPECT_EQ(choose(), (FolderPanel::Answer{.wasAsked = true, .folder = "/home/ana/Mis cosas"}));
    EXPECT_EQ(portal.asked, "x11:1|Memoria|accept_label=Añadir");
    portal.answer = {1, "file:///x"};
    EXPECT_EQ(choose(), (FolderPanel::Answer{.wasAsked = true, .folder = {}}));
}

TEST_F(SavePanelTest, ADialogThatDiesIsNoAnswer) {
    std::optional<Portal> portal(loop);
    TaskScope tasks(loop.main);
    const auto openDialog = [&] {
        portal->asked.clear();
        auto chosen = tasks.spawn(run());
        EXPECT_TRUE(loop.runUntil([&] { return !portal->asked.empty(); }));
        return chosen;
    };
    const auto expectNone = [&](auto chosen) {
        ASSERT_TRUE(loop.runUntil([&] { return chosen.isDone(); }));
        const auto answer = [](auto task) -> Task<std::optional<std::filesystem::path>> {
            co_return co_await task;
        };
        EXPECT_EQ(loop.result(answer(chosen)), std::nullopt);
    };
    auto chosen = openDialog();
    portal->ping();
    BusPeer(loop).emitTo(portal->asker, handle, "org.freedesktop.portal.Request", "Response", "ua{sv}", 0, 1,
                         "uris", "as", 1, "file:///home/ana/.bashrc");
    loop.runFor(0.1);
    EXPECT_FALSE(chosen.isDone()) << "nobody answers in the portal's place";
    portal.reset();
    expectNone(chosen);

    portal.emplace(loop);
    portal->diesAfterAnswer = true;
    expectNone(openDialog());

    portal.emplace(loop);
    chosen = openDialog();
    portal->ping();
    session.kill();  // with portal and dialog
    expectNone(chosen);

    session.start();
    portal.emplace(loop);
    portal->answer = {0, "file:///x"};
    ASSERT_TRUE(loop.runUntil([&] { return bus->isReady(); }));
    EXPECT_EQ(loop.result(run()), "/x");
}

TEST_F(SavePanelTest, WhereNobodyAsksItFindsANameThatIsFree) {
    for (const char* name : {"DORIX.md", "DORIX 2.md", "DORIX 3.md"}) {
        const auto chosen = loop.result(run());
        ASSERT_EQ(chosen, folder.path() / name);
        std::ofstream(*chosen) << "x";
    }
}

}  // namespace
}  // namespace dorix
