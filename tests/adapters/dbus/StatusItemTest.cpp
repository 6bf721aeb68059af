#include "adapters/dbus/TestBus.h"
#include "base/text/Text.h"
#include "linux/dbus/DBusStatusItem.h"
#include "linux/dbus/StatusGlyph.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace dorix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* watcherName = "org.kde.StatusNotifierWatcher";

/// The place of a desktop for status icons.
class Tray {
 public:
    explicit Tray(EventLoop& loop) : peer_(loop, nullptr) {
        peer_.bus().addObject("/StatusNotifierWatcher", watcherName, table(), this);
        peer_.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
                   [](sd_bus_message* message) { sd_bus_message_append(message, "su", watcherName, 0); });
    }

    std::string item;  // the name and the path of what has come last
    std::string path;
    int registered = 0;

    std::string ask(const char* object, const char* interface, const char* member,
                    const std::function<void(sd_bus_message*)>& fill,
                    const std::function<void(sd_bus_message*)>& read = {}) {
        return peer_.call(item, object, interface, member, fill, read);
    }

    /// The menu as it reads after it was told that it is about to show; whether it said that it changed.
    std::pair<bool, std::vector<std::pair<int, std::string>>> openMenu() {
        int changed = 0;
        ask(
            "/MenuBar", "com.canonical.dbusmenu", "AboutToShow",
            [](sd_bus_message* message) { sd_bus_message_append(message, "i", 0); },
            [&](sd_bus_message* reply) { sd_bus_message_read(reply, "b", &changed); });
        std::vector<std::pair<int, std::string>> entries;
        ask(
            "/MenuBar", "com.canonical.dbusmenu", "GetLayout",
            [](sd_bus_message* message) { sd_bus_message_append(message, "iias", 0, -1, 0); },
            [&](sd_bus_message* reply) { entries = readLayout(reply); });
        return {changed != 0, entries};
    }

    void choose(int id) {
        ask("/MenuBar", "com.canonical.dbusmenu", "Event", [id](sd_bus_message* message) {
            sd_bus_message_append(message, "isvu", id, "clicked", "s", "", 0);
        });
    }

    std::string property(const char* name) {
        std::string value;
        ask(
            path.c_str(), "org.freedesktop.DBus.Properties", "Get",
            [name](sd_bus_message* message) {
                sd_bus_message_append(message, "ss", "org.kde.StatusNotifierItem", name);
            },
            [&](sd_bus_message* reply) {
                const char* text = "";
                if (sd_bus_message_read(reply, "v", "s", &text) > 0) value = text;
            });
        return value;
    }

 private:
    static int registerItem(sd_bus_message* call, void* userdata, sd_bus_error*) {
        auto& self = *static_cast<Tray*>(userdata);
        const char* path = "";
        sd_bus_message_read(call, "s", &path);
        self.item = sd_bus_message_get_sender(call);
        self.path = path;
        ++self.registered;
        return sd_bus_reply_method_return(call, nullptr);
    }

    static std::vector<std::pair<int, std::string>> readLayout(sd_bus_message* reply) {
        std::vector<std::pair<int, std::string>> entries;
        std::uint32_t revision = 0;
        sd_bus_message_read(reply, "u", &revision);
        sd_bus_message_enter_container(reply, 'r', "ia{sv}av");
        sd_bus_message_skip(reply, "ia{sv}");
        sd_bus_message_enter_container(reply, 'a', "v");
        while (sd_bus_message_enter_container(reply, 'v', "(ia{sv}av)") > 0) {
            int id = 0;
            const char* key = "";
            const char* value = "";
            sd_bus_message_enter_container(reply, 'r', "ia{sv}av");
            sd_bus_message_read(reply, "i", &id);
            sd_bus_message_read(reply, "a{sv}", 1, &key, "s", &value);
            sd_bus_message_skip(reply, "av");
            sd_bus_message_exit_container(reply);
            sd_bus_message_exit_container(reply);
            entries.emplace_back(id, value);
        }
        return entries;
    }

    static const sd_bus_vtable* table() {
        static const sd_bus_vtable entries[] = {
            SD_BUS_VTABLE_START(SD_BUS_VTABLE_UNPRIVILEGED),
            SD_BUS_METHOD("RegisterStatusNotifierItem", "s", "", registerItem, 0),
            SD_BUS_VTABLE_END,
        };
        return entries;
    }

    TestPeer peer_;
};

class StatusItemTest : public testing::Test {
 protected:
    void show() {
        item.show([this] { log.emplace_back("click"); },
                  [this] {
                      return Menu{
                          {paused ? "Reanudar DORIX" : "Pausar DORIX", [this] { log.emplace_back("pause"); }},
                          ClosureMenuItem::separator(),
                          {"Salir_de DORIX", [this] { log.emplace_back("quit"); }}};
                  });
    }

    EventLoop loop;
    TestBus session;
    std::unique_ptr<BusConnection> bus = BusConnection::openSession(loop.main, loop.main, [] {});
    DBusStatusItem item{loop.main, *bus, [](std::string_view text) {
                            return text::replaceAll(text, "⌥ Espacio", "Alt+Espacio");
                        }};
    bool paused = false;
    std::vector<std::string> log;
};

TEST_F(StatusItemTest, IsThereWhereverThereIsATray) {
    show();
    loop.runFor(0.02);
    for (int i = 0; i < 2; ++i) {
        Tray tray(loop);
        ASSERT_TRUE(loop.runUntil([&] { return tray.registered > 0; })) << "a tray that comes up later";
        EXPECT_EQ(tray.property("Id"), "es.pelmora.dorix");
        EXPECT_EQ(tray.property("Status"), "Active");
        EXPECT_EQ(tray.property("IconName"), "");
    }
    Tray tray(loop);
    ASSERT_TRUE(loop.runUntil([&] { return tray.registered > 0; }));
    tray.ask(tray.path.c_str(), "org.kde.StatusNotifierItem", "Activate",
             [](sd_bus_message* message) { sd_bus_message_append(message, "ii", 10, 10); });
    ASSERT_TRUE(loop.runUntil([&] { return !log.empty(); }));
    EXPECT_THAT(log, ElementsAre("click"));

    item.setToolTip("DORIX · ⌥ Espacio");
    std::string text;
    tray.ask(
        tray.path.c_str(), "org.freedesktop.DBus.Properties", "Get",
        [](sd_bus_message* message) {
            sd_bus_message_append(message, "ss", "org.kde.StatusNotifierItem", "ToolTip");
        },
        [&](sd_bus_message* reply) {
            const char* title = "";
            sd_bus_message_enter_container(reply, 'v', "(sa(iiay)ss)");
            sd_bus_message_enter_container(reply, 'r', "sa(iiay)ss");
            sd_bus_message_skip(reply, "sa(iiay)");
            sd_bus_message_read(reply, "s", &title);
            text = title;
        });
    EXPECT_EQ(text, "DORIX · Alt+Espacio") << "in the words of this desktop";
}

TEST_F(StatusItemTest, TheMenuSaysHowThingsStand) {
    Tray tray(loop);
    show();
    ASSERT_TRUE(loop.runUntil([&] { return tray.registered > 0; }));
    const auto [changed, entries] = tray.openMenu();
    EXPECT_FALSE(changed);
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_EQ(entries[0].second, "Pausar DORIX");
    EXPECT_EQ(entries[1].second, "separator");
    EXPECT_EQ(entries[2].second, "Salir__de DORIX");
    tray.choose(entries[0].first);
    tray.choose(entries[1].first);
    ASSERT_TRUE(loop.runUntil([&] { return !log.empty(); }));

    paused = true;
    const auto [changedNow, entriesNow] = tray.openMenu();
    EXPECT_TRUE(changedNow);
    ASSERT_EQ(entriesNow.size(), 3U);
    EXPECT_EQ(entriesNow[0].second, "Reanudar DORIX");
    tray.choose(entries[0].first);  // of a menu that is no more
    tray.choose(99);
    tray.choose(entriesNow[2].first);
    ASSERT_TRUE(loop.runUntil([&] { return log.size() > 1; }));
    loop.runFor(0.02);
    EXPECT_THAT(log, ElementsAre("pause", "quit"));
    EXPECT_NE(tray.ask("/MenuBar", "com.canonical.dbusmenu", "GetLayout",
                       [](sd_bus_message* message) { sd_bus_message_append(message, "iias", 99, -1, 0); }),
              "");
}

TEST(StatusGlyphTest, IsALetterOnADisc) {
    for (const int size : {16, 64}) {
        const auto pixels = statusGlyph(size);
        ASSERT_EQ(pixels.size(), static_cast<std::size_t>(size * size * 4));
        const auto at = [&](double x) {
            const auto index = static_cast<std::size_t>((size / 2 * size + static_cast<int>(x * size)) * 4);
            return std::vector<int>(pixels.begin() + static_cast<std::ptrdiff_t>(index),
                                    pixels.begin() + static_cast<std::ptrdiff_t>(index + 4));
        };
        EXPECT_EQ(pixels[0], 0) << "the corner is clear";
        EXPECT_THAT(at(0.5), ElementsAre(255, 15, 118, 110));
        EXPECT_THAT(at(0.13), ElementsAre(255, 255, 255, 255)) << "left of the letter";
        EXPECT_THAT(at(0.35), ElementsAre(255, 15, 118, 110));
        EXPECT_THAT(at(0.85), ElementsAre(255, 255, 255, 255)) << "right of it";
    }
}

}  // namespace
}  // namespace dorix
