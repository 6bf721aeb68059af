#include "adapters/harness/OtherProgram.h"
#include "base/async/ManualExecutor.h"
#include "fakes/TemporaryFolder.h"
#include "linux/apps/DesktopEntries.h"
#include "linux/apps/LinuxApplications.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <fstream>

namespace dorix {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view calendar =
    "# comment\n[Desktop Entry]\r\nType=Application\nName=Calendar\nName[es]=Calendario\nName[es_AR]=Agenda\n"
    "StartupWMClass = Gnome-Calendar\nExec=cal %U\n\n[Desktop Action New]\nName=New event\n";

TEST(DesktopEntryTest, TakesTheNameOfTheWantedLanguageAndRefusesWhatIsNoApplication) {
    EXPECT_EQ(parseDesktopEntry(calendar, {"es_ES", "es"})->name, "Calendario");
    EXPECT_EQ(parseDesktopEntry(calendar, {"es_AR", "es"})->name, "Agenda");
    EXPECT_EQ(parseDesktopEntry(calendar, {"fr"})->name, "Calendar");
    EXPECT_EQ(parseDesktopEntry(calendar, {})->startupWmClass, "Gnome-Calendar");
    EXPECT_EQ(parseDesktopEntry("[Desktop Entry]\nType=Application\nName=a\\sb\\", {})->name, "a b\\");
    for (const char* refused : {"", "[Desktop Entry]\nType=Link\nName=x\n", "Type=Application\nName=x\n",
                                "[Desktop Entry]\nType=Application\nName=\n"}) {
        EXPECT_FALSE(parseDesktopEntry(refused, {})) << refused;
    }
}

class DesktopEntriesTest : public testing::Test {
 protected:
    void write(const fs::path& file, const std::string& rest) const {
        fs::create_directories((root / file).parent_path());
        std::ofstream(root / file) << "[Desktop Entry]\nType=Application\n" << rest;
    }

    /// The entry once the folders have been read, by asking again and again; none after some seconds.
    const DesktopEntry* findSoon(DesktopEntries& entries, const std::vector<std::string>& names) {
        const DesktopEntry* found = nullptr;
        eventually([&] {
            main.runPosted();
            found = entries.find(names);
            return found != nullptr;
        });
        return found;
    }

    const TemporaryFolder folder;
    const fs::path& root = folder.path();
    ManualExecutor main;
};

TEST_F(DesktopEntriesTest, FindsByClassThenByFileNameAndSeesWhatIsInstalledLater) {
    write("user/a.desktop", "Name=Mine\n");
    write("system/a.desktop", "Name=Theirs\n");
    write("system/b.desktop", "Name=B\nStartupWMClass=Shown\n");
    write("system/kde/org.kde.kate.desktop", "Name=Kate\n");
    DesktopEntries entries(main, {root / "user", root / "system", root / "missing"}, {});
    ASSERT_NE(findSoon(entries, {"A"}), nullptr);
    EXPECT_EQ(entries.find({"A"})->name, "Mine");
    EXPECT_EQ(entries.find({"nothing", "shown"})->id, "b");
    EXPECT_EQ(entries.find({"kate"})->id, "kde-org.kde.kate");
    EXPECT_EQ(entries.find({"", ""}), nullptr);

    write("system/later.desktop", "Name=Later\n");
    fs::last_write_time(root / "system", fs::file_time_type::clock::now() + std::chrono::seconds(2));
    EXPECT_NE(findSoon(entries, {"later"}), nullptr);
}

TEST_F(DesktopEntriesTest, PassesOverWhatCannotBeRead) {
    fs::create_directories(root / "user/folder.desktop");
    fs::create_symlink("/nonexistent", root / "user/dangling.desktop");
    fs::create_symlink("/proc/self/mem", root / "user/broken.desktop");  // reading it is an error
    ASSERT_EQ(mkfifo((root / "user/pipe.desktop").c_str(), 0600), 0);
    write("user/sound.desktop", "Name=Sound\n");
    DesktopEntries entries(main, {root / "user"}, {});
    EXPECT_NE(findSoon(entries, {"sound"}), nullptr);
    EXPECT_EQ(entries.find({"broken", "pipe", "folder", "dangling"}), nullptr);
}

TEST_F(DesktopEntriesTest, TakesFoldersAndLanguagesFromTheEnvironment) {
    write("home/applications/cal.desktop", "Name=Calendar\nName[es]=Calendario\n");
    write("system/applications/cal.desktop", "Name=Theirs\n");
    write("system/applications/kate.desktop", "Name=Kate\nName[es_ES]=Catalina\nName[es]=Cata\n");
    std::optional<Environment> changed(Variables{{"XDG_DATA_HOME", root / "home"},
                                                 {"XDG_DATA_DIRS", "relative::" + (root / "system").string()},
                                                 {"LC_ALL", "es_ES.UTF-8"},
                                                 {"LANGUAGE", ""}});
    DesktopEntries entries(main);
    changed.reset();

    ASSERT_NE(findSoon(entries, {"cal"}), nullptr);
    EXPECT_EQ(entries.find({"cal"})->name, "Calendario");
    EXPECT_EQ(entries.find({"kate"})->name, "Catalina");
}

TEST(LinuxApplicationsTest, TheFirstKnownNameDecides) {
    EXPECT_EQ(linuxapps::bundleIdentifier({"Gnome-terminal"}), "com.apple.Terminal");
    EXPECT_EQ(linuxapps::bundleIdentifier({"", "jetbrains-pycharm-ce"}), "com.jetbrains.intellij");
    EXPECT_EQ(linuxapps::bundleIdentifier({"libreoffice-writer", "soffice"}), "com.microsoft.Word");
    EXPECT_EQ(linuxapps::bundleIdentifier({"", "unheard-of"}), std::nullopt);
}

}  // namespace
}  // namespace dorix
