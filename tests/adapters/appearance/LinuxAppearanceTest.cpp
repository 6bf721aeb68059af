#include "adapters/dbus/TestBus.h"
#include "linux/appearance/GtkSettings.h"
#include "linux/appearance/LinuxAppearance.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <fstream>

namespace dorix {
namespace {

namespace fs = std::filesystem;

constexpr const char* path = "/org/freedesktop/portal/desktop";
constexpr const char* interface = "org.freedesktop.portal.Settings";

/// A settings portal that knows the theme and nothing else.
class Portal {
 public:
    Portal(EventLoop& loop, std::uint32_t scheme) : scheme_(scheme), peer_(loop, nullptr) {
        peer_.bus().addObject(path, interface, table(), this);
        peer_.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
                   [](sd_bus_message* message) {
                       sd_bus_message_append(message, "su", "org.freedesktop.portal.Desktop", 0);
                   });
    }

    void change(const char* group, const char* key, const char* type, std::uint32_t value) {
        peer_.bus().emit(path, interface, "SettingChanged", [&](sd_bus_message* message) {
            sd_bus_message_append(message, "ssv", group, key, type, value);
        });
    }
    void changeTheme(std::uint32_t value) {
        change("org.freedesktop.appearance", "color-scheme", "u", value);
    }

 private:
    static int read(sd_bus_message* call, void* self, sd_bus_error* error) {
        const char* group = "";
        const char* key = "";
        sd_bus_message_read(call, "ss", &group, &key);
        if (std::strcmp(key, "color-scheme") != 0) {
            return sd_bus_error_set(error, "org.freedesktop.portal.Error.NotFound", "no such setting");
        }
        return sd_bus_reply_method_return(call, "v", "v", "u", static_cast<Portal*>(self)->scheme_);
    }

    static const sd_bus_vtable* table() {
        static const sd_bus_vtable entries[] = {
            SD_BUS_VTABLE_START(0),
            SD_BUS_METHOD("Read", "ss", "v", read, SD_BUS_VTABLE_UNPRIVILEGED),
            SD_BUS_SIGNAL("SettingChanged", "ssv", 0),
            SD_BUS_VTABLE_END,
        };
        return entries;
    }

    std::uint32_t scheme_;
    TestPeer peer_;
};

class LinuxAppearanceTest : public testing::Test {
 protected:
    LinuxAppearanceTest() {
        auto pattern = (fs::temp_directory_path() / "dorix-look-XXXXXX").string();
        folder = ::mkdtemp(pattern.data());
        fs::create_directory(folder / "gtk-3.0");
    }
    ~LinuxAppearanceTest() override { fs::remove_all(folder); }

    /// As settings dialogs write it: beside, and then in its place.
    void write(const std::string& text) const {
        std::ofstream(folder / "new") << "[Settings]\n" << text << "\n";
        fs::rename(folder / "new", folder / "gtk-3.0/settings.ini");
    }

    fs::path folder;
    EventLoop loop;
    TestBus session;
    std::unique_ptr<BusConnection> bus = BusConnection::openSession(loop.main, loop.main, [] {});
};

TEST_F(LinuxAppearanceTest, ThePortalHasTheLastWord) {
    Portal portal(loop, 1);
    LinuxAppearance appearance(bus.get(), loop.main, folder);
    EXPECT_FALSE(appearance.prefersDark.get());
    EXPECT_TRUE(loop.runUntil([&] { return appearance.prefersDark.get(); }));
    portal.changeTheme(2);
    EXPECT_TRUE(loop.runUntil([&] { return !appearance.prefersDark.get(); }));
    write("gtk-theme-name=Adwaita-dark\ngtk-enable-animations=0");
    EXPECT_TRUE(loop.runUntil([&] { return appearance.reducesMotion.get(); }))
        << "the portal does not know it";
    EXPECT_FALSE(appearance.prefersDark.get());
    portal.change("org.gnome.desktop.interface", "enable-animations", "b", 1);
    EXPECT_TRUE(loop.runUntil([&] { return !appearance.reducesMotion.get(); }));
    portal.changeTheme(0);
    EXPECT_TRUE(loop.runUntil([&] { return appearance.prefersDark.get(); })) << "it has no opinion any more";
    portal.changeTheme(2);
    EXPECT_TRUE(loop.runUntil([&] { return !appearance.prefersDark.get(); }));
    portal.change("org.gnome.desktop.interface", "font-size", "u", 7);
    portal.change("org.freedesktop.appearance", "color-scheme", "b", 1);
    loop.runFor(0.05);
}

TEST_F(LinuxAppearanceTest, TheDisplaysServiceIsPutBeforeTheFile) {
    write("gtk-theme-name=Adwaita-dark");
    LinuxAppearance appearance(nullptr, loop.main, folder);
    appearance.setDisplaySettings({{"Net/ThemeName", "Greybird"}, {"Gtk/EnableAnimations", "0"}});
    EXPECT_FALSE(appearance.prefersDark.get());
    EXPECT_TRUE(appearance.reducesMotion.get());
    appearance.setDisplaySettings({{"Net/ThemeName", "Greybird-dark"}});
    EXPECT_TRUE(appearance.prefersDark.get());
    EXPECT_FALSE(appearance.reducesMotion.get());
    write("gtk-theme-name=Adwaita");
    appearance.setDisplaySettings({});
    EXPECT_TRUE(loop.runUntil([&] { return !appearance.prefersDark.get(); }));
}

TEST_F(LinuxAppearanceTest, WithoutAPortalTheFileIsFollowed) {
    write("gtk-application-prefer-dark-theme = true");
    LinuxAppearance appearance(nullptr, loop.main, folder);
    EXPECT_TRUE(appearance.prefersDark.get());
    write("gtk-application-prefer-dark-theme=0");
    EXPECT_TRUE(loop.runUntil([&] { return !appearance.prefersDark.get(); }));
    LinuxAppearance nothing(bus.get(), loop.main, folder / "missing");
    loop.runFor(0.05);
    EXPECT_FALSE(nothing.prefersDark.get());
}

TEST(GtkSettingsTest, SaysDarkInTwoWays) {
    EXPECT_EQ(parseGtkSettings(""), GtkLook{});
    EXPECT_EQ(parseGtkSettings("[Settings]\r\ngtk-theme-name=\"Arc-Dark\"\r\n"),
              (GtkLook{.prefersDark = true}));
    EXPECT_EQ(parseGtkSettings("[Other]\ngtk-theme-name=Arc-Dark"), GtkLook{});
    EXPECT_EQ(parseGtkSettings("gtk-theme-name=Arc-Dark\n[Settings]\n#gtk-theme-name=x-dark\nnonsense\n=\n"),
              GtkLook{});
    EXPECT_EQ(parseGtkSettings("[Settings]\ngtk-enable-animations=false"), (GtkLook{.reducesMotion = true}));
}

}  // namespace
}  // namespace dorix
