#include "adapters/harness/SessionBus.h"
#include "linux/dbus/DBusStatusItem.h"
#include "linux/dbus/StatusGlyph.h"

#include <gmock/gmock.h>

namespace dorix {
namespace {

using testing::_;
using testing::ElementsAre;

using testing::Pair;

/// The place of a desktop for status icons.
class Tray {
 public:
    explicit Tray(EventLoop& loop)
        : peer_(loop, "org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
                {{"RegisterStatusNotifierItem", [this](auto* call) {
                      path = nextString(call);
                      item = sd_bus_message_get_sender(call);
                      return sd_bus_reply_method_return(call, nullptr);
                  }}}) {
        EXPECT_TRUE(loop.runUntil([&] { return !item.empty(); }));
    }

    std::string item;  // the name and the path of what has come last
    std::string path;

    template <typename... Values>
    auto ask(const char* member, const char* types, Values... values) {
        return peer_.call(item, path, "org.kde.StatusNotifierItem", member, types, values...);
    }
    template <typename... Values>
    auto askMenu(const char* member, const char* types, Values... values) {
        return peer_.call(item, "/MenuBar", "com.canonical.dbusmenu", member, types, values...);
    }

    /// Whether the menu says that it has changed, when it is told that it is about to show.
    bool menuHasChanged() {
        int changed = 0;
        if (const auto reply = askMenu("AboutToShow", "i", 0))
            sd_bus_message_read(reply->get(), "b", &changed);
        return changed != 0;
    }
    /// The entries' numbers and texts.
    std::vector<std::pair<int, std::string>> menu() {
        std::vector<std::pair<int, std::string>> entries;
        const auto layout = askMenu("GetLayout", "iias", 0, -1, 0);
        if (!layout) return entries;
        auto* reply = layout->get();
        sd_bus_message_skip(reply, "u");
        sd_bus_message_enter_container(reply, 'r', "ia{sv}av");
        sd_bus_message_skip(reply, "ia{sv}");
        sd_bus_message_enter_container(reply, 'a', "v");
        while (sd_bus_message_enter_container(reply, 'v', "(ia{sv}av)") > 0) {
            int id = 0;
            const char* key = "";
            const char* value = "";
            sd_bus_message_enter_container(reply, 'r', "ia{sv}av");
            sd_bus_message_read(reply, "ia{sv}", &id, 1, &key, "s", &value);
            sd_bus_message_skip(reply, "av");
            sd_bus_message_exit_container(reply);
            sd_bus_message_exit_container(reply);
            entries.emplace_back(id, value);
        }
        return entries;
    }
    void choose(int id) { askMenu("Event", "isvu", id, "clicked", "s", "", 0); }

    /// The text of a property: itself, or what comes after the parts of a structure that `skipped` names.
    std::string property(const char* name, const char* skipped = nullptr) {
        const auto reply = peer_.call(item, path, "org.freedesktop.DBus.Properties", "Get", "ss",
                                      "org.kde.StatusNotifierItem", name);
        if (!reply) return "none";
        if (skipped == nullptr) return nextString(reply->get());
        sd_bus_message_enter_container(reply->get(), 'v', nullptr);
        sd_bus_message_enter_container(reply->get(), 'r', nullptr);
        sd_bus_message_skip(reply->get(), skipped);
        return nextString(reply->get());
    }

 private:
    BusPeer peer_;
};

class StatusItemTest : public testing::Test {
 protected:
    StatusItemTest() {
        item.show([this] { log.emplace_back("click"); },
                  [this] {
                      return Menu{
                          {paused ? "Reanudar DORIX" : "Pausar DORIX", [this] { log.emplace_back("pause"); }},
                          ClosureMenuItem::separator(),
                          {"Salir_de DORIX", [this] { log.emplace_back("quit"); }}};
                  });
    }

    EventLoop loop;
    SessionBus session;
    std::unique_ptr<BusConnection> bus = BusConnection::session(loop.main, loop.main);
    DBusStatusItem item{loop.main, *bus, [](std::string_view text) {
                            return text == "⌥ Espacio" ? "Alt+Espacio" : std::string(text);
                        }};
    bool paused = false;
    std::vector<std::string> log;
};

TEST_F(StatusItemTest, IsThereWhereverThereIsATray) {
    {
        const Tray first(loop);
    }
    item.setToolTip("⌥ Espacio");
    Tray tray(loop);  // that comes up later
    EXPECT_EQ(tray.property("Id"), "es.pelmora.dorix");
    EXPECT_EQ(tray.property("Status"), "Active");
    EXPECT_EQ(tray.property("IconName"), "");
    EXPECT_EQ(tray.property("ToolTip", "sa(iiay)"), "Alt+Espacio") << "in the words of this desktop";
    EXPECT_TRUE(tray.ask("Activate", "ii", 10, 10));
    ASSERT_TRUE(loop.runUntil([&] { return !log.empty(); }));
    EXPECT_THAT(log, ElementsAre("click"));

    session.kill();
    session.start();
    Tray again(loop);
    EXPECT_TRUE(again.ask("Activate", "ii", 10, 10));
    EXPECT_FALSE(again.menu().empty());
}

TEST_F(StatusItemTest, TheMenuSaysHowThingsStand) {
    Tray tray(loop);
    EXPECT_FALSE(tray.menuHasChanged());
    const auto before = tray.menu();
    ASSERT_THAT(before,
                ElementsAre(Pair(_, "Pausar DORIX"), Pair(_, "separator"), Pair(_, "Salir__de DORIX")));
    tray.choose(before[0].first);
    tray.choose(before[1].first);
    ASSERT_TRUE(loop.runUntil([&] { return !log.empty(); }));

    paused = true;
    EXPECT_TRUE(tray.menuHasChanged());
    const auto now = tray.menu();
    ASSERT_THAT(now,
                ElementsAre(Pair(_, "Reanudar DORIX"), Pair(_, "separator"), Pair(_, "Salir__de DORIX")));
    tray.choose(before[0].first);  // of a menu that is no more
    tray.choose(99);
    tray.choose(now[2].first);
    ASSERT_TRUE(loop.runUntil([&] { return log.size() > 1; }));
    loop.runFor(0.02);
    EXPECT_THAT(log, ElementsAre("pause", "quit"));
    EXPECT_FALSE(tray.askMenu("GetLayout", "iias", 99, -1, 0));
}

TEST(StatusGlyphTest, IsALetterOnADisc) {
    for (const int size : {16, 64}) {
        const auto pixels = statusGlyph(size);
        ASSERT_EQ(pixels.size(), static_cast<std::size_t>(size * size * 4));
        const auto at = [&](double x) {
            const auto first = pixels.begin() + (size / 2 * size + static_cast<int>(x * size)) * 4;
            return std::vector<int>(first, first + 4);
        };
        const auto letter = ElementsAre(255, 15, 118, 110);
        const auto disc = ElementsAre(255, 255, 255, 255);
        EXPECT_EQ(pixels[0], 0) << "the corner is clear";
        EXPECT_THAT(at(0.13), disc) << "left of the letter";
        EXPECT_THAT(at(0.35), letter);
        EXPECT_THAT(at(0.5), letter);
        EXPECT_THAT(at(0.85), disc) << "right of it";
    }
}

}  // namespace
}  // namespace dorix
