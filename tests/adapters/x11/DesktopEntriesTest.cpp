#include <chrono>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "linux/DesktopEntries.h"
#include "linux/LinuxApplications.h"

namespace dorix {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view calendar =
    "# comment\n[Desktop Entry]\r\nType=Application\nName=Calendar\nName[es]=Calendario\nName[es_AR]=Agenda\n"
    "StartupWMClass = Gnome-Calendar\nExec=cal %U\n\n[Desktop Action New]\nName=New event\n";

TEST(DesktopEntryTest, TakesTheNameOfTheWantedLanguage) {
    EXPECT_EQ(parseDesktopEntry(calendar, {"es_ES", "es"})->name, "Calendario");
    EXPECT_EQ(parseDesktopEntry(calendar, {"es_AR", "es"})->name, "Agenda");
    EXPECT_EQ(parseDesktopEntry(calendar, {"fr"})->name, "Calendar");
    EXPECT_EQ(parseDesktopEntry(calendar, {})->startupWmClass, "Gnome-Calendar");
}

TEST(DesktopEntryTest, RefusesWhatIsNoApplication) {
    EXPECT_FALSE(parseDesktopEntry("", {}));
    EXPECT_FALSE(parseDesktopEntry("[Desktop Entry]\nType=Link\nName=x\n", {}));
    EXPECT_FALSE(parseDesktopEntry("[Desktop Entry]\nType=Application\nName=\n", {}));
    EXPECT_FALSE(parseDesktopEntry("Type=Application\nName=x\n", {}));
    EXPECT_EQ(parseDesktopEntry("[Desktop Entry]\nType=Application\nName=a\\sb\\", {})->name, "a b\\");
}

TEST(DesktopEntriesTest, FindsByClassThenByFileNameAndSeesWhatIsInstalledLater) {
    const fs::path root = fs::path(testing::TempDir()) / "dorix-entries";
    fs::remove_all(root);
    const auto write = [&](const fs::path& file, const std::string& rest) {
        fs::create_directories((root / file).parent_path());
        std::ofstream(root / file) << "[Desktop Entry]\nType=Application\n" << rest;
    };
    write("user/a.desktop", "Name=Mine\n");
    write("system/a.desktop", "Name=Theirs\n");
    write("system/b.desktop", "Name=B\nStartupWMClass=Shown\n");
    write("system/kde/org.kde.kate.desktop", "Name=Kate\n");
    DesktopEntries entries({root / "user", root / "system", root / "missing"}, {});
    EXPECT_EQ(entries.find({"A"})->name, "Mine");
    EXPECT_EQ(entries.find({"nothing", "shown"})->id, "b");
    EXPECT_EQ(entries.find({"kate"})->id, "kde-org.kde.kate");
    EXPECT_EQ(entries.find({"later"}), nullptr);
    EXPECT_EQ(entries.find({"", ""}), nullptr);

    write("system/later.desktop", "Name=Later\n");
    fs::last_write_time(root / "system", fs::file_time_type::clock::now() + std::chrono::seconds(2));
    ASSERT_NE(entries.find({"later"}), nullptr);
    fs::remove_all(root);
}

TEST(LinuxApplicationsTest, TheFirstKnownNameDecides) {
    EXPECT_EQ(linuxapps::bundleIdentifier({"Gnome-terminal"}), "com.apple.Terminal");
    EXPECT_EQ(linuxapps::bundleIdentifier({"", "jetbrains-pycharm-ce"}), "com.jetbrains.intellij");
    EXPECT_EQ(linuxapps::bundleIdentifier({"libreoffice-writer", "soffice"}), "com.microsoft.Word");
    EXPECT_EQ(linuxapps::bundleIdentifier({"", "unheard-of"}), std::nullopt);
}

}  // namespace
}  // namespace dorix
