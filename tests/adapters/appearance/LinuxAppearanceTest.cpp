#include "adapters/harness/SessionBus.h"
#include "linux/appearance/LinuxAppearance.h"
#include "linux/dbus/BusConnection.h"

#include <fstream>

namespace dorix {
namespace {

constexpr const char* path = "/org/freedesktop/portal/desktop";
constexpr const char* interface = "org.freedesktop.portal.Settings";

class LinuxAppearanceTest : public testing::Test {
 protected:
    LinuxAppearanceTest() { std::filesystem::create_directory(folder.path() / "gtk-3.0"); }

    /// As settings dialogs write it: beside, and then in its place.
    void write(const std::string& text) const {
        std::ofstream(folder.path() / "new") << "[Settings]\n" << text << "\n";
        std::filesystem::rename(folder.path() / "new", folder.path() / "gtk-3.0/settings.ini");
    }
    bool becomes(const Observable<bool>& observed, bool value) {
        return loop.runUntil([&] { return observed.get() == value; });
    }

    TemporaryFolder folder;
    EventLoop loop;
    SessionBus session;
    std::unique_ptr<BusConnection> bus = BusConnection::session(loop.main, loop.main);
};

TEST_F(LinuxAppearanceTest, ThePortalHasTheLastWord) {
    BusPeer portal(loop, "org.freedesktop.portal.Desktop", path,
                   {{"Read", [](auto* call) {
                         nextString(call);
                         // It knows the theme and nothing else.
                         return nextString(call) == "color-scheme"
                                    ? sd_bus_reply_method_return(call, "v", "v", "u", 1)
                                    : sd_bus_reply_method_errorf(
                                          call, "org.freedesktop.portal.Error.NotFound", "-");
                     }}});
    const auto change = [&](const char* group, const char* key, const char* type, std::uint32_t value) {
        portal.emit(path, interface, "SettingChanged", "ssv", group, key, type, value);
    };
    const auto changeTheme = [&](std::uint32_t value) {
        change("org.freedesktop.appearance", "color-scheme", "u", value);
    };
    LinuxAppearance appearance(*bus, loop.main, folder.path());
    EXPECT_FALSE(appearance.prefersDark.get());
    EXPECT_TRUE(becomes(appearance.prefersDark, true));
    changeTheme(2);
    EXPECT_TRUE(becomes(appearance.prefersDark, false));
    write("gtk-theme-name=Adwaita-dark\ngtk-enable-animations=0");
    EXPECT_TRUE(becomes(appearance.reducesMotion, true)) << "the portal does not know it";
    EXPECT_FALSE(appearance.prefersDark.get());
    // Of no meaning, or of another type than they should be.
    change("org.gnome.desktop.interface", "font-size", "u", 7);
    change("org.freedesktop.appearance", "color-scheme", "i", 1);
    change("org.gnome.desktop.interface", "enable-animations", "b", 1);
    EXPECT_TRUE(becomes(appearance.reducesMotion, false));
    EXPECT_FALSE(appearance.prefersDark.get());
    changeTheme(0);
    EXPECT_TRUE(becomes(appearance.prefersDark, true)) << "it has no opinion any more";
}

TEST_F(LinuxAppearanceTest, TheDisplaysServiceIsPutBeforeTheFile) {
    write("gtk-theme-name=Adwaita-dark");
    LinuxAppearance appearance(*bus, loop.main, folder.path());
    appearance.setDisplaySettings({{"Net/ThemeName", "Greybird"}, {"Gtk/EnableAnimations", "0"}});
    EXPECT_FALSE(appearance.prefersDark.get());
    EXPECT_TRUE(appearance.reducesMotion.get());
    appearance.setDisplaySettings({{"Net/ThemeName", "Greybird-dark"}});
    EXPECT_TRUE(appearance.prefersDark.get());
    EXPECT_FALSE(appearance.reducesMotion.get());
    write("gtk-theme-name=Adwaita");
    appearance.setDisplaySettings({});
    EXPECT_TRUE(becomes(appearance.prefersDark, false));
}

TEST_F(LinuxAppearanceTest, WithoutAPortalTheFileIsFollowed) {
    write("gtk-application-prefer-dark-theme = true");
    LinuxAppearance appearance(*bus, loop.main, folder.path());
    EXPECT_TRUE(appearance.prefersDark.get());
    write("gtk-application-prefer-dark-theme=0");
    EXPECT_TRUE(becomes(appearance.prefersDark, false));
    const LinuxAppearance nothing(*bus, loop.main, folder.path() / "missing");
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
