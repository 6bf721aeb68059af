#include "adapters/harness/EventLoop.h"
#include "adapters/harness/OtherProgram.h"
#include "fakes/TemporaryFolder.h"
#include "linux/apps/DesktopEntry.h"
#include "linux/process/LinuxProcesses.h"
#include "linux/process/SoundSettings.h"

#include <gmock/gmock.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <utility>

namespace dorix {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(ExecTest, IsReadAsDesktopsDo) {
    EXPECT_THAT(parseExec("dorix"), ElementsAre("dorix"));
    EXPECT_THAT(parseExec("  /usr/bin/dorix  --a %U b%%c "), ElementsAre("/usr/bin/dorix", "--a", "b%c"));
    EXPECT_THAT(parseExec(R"("/opt/a \"b\" \$c \\d/dorix" "" x"y z")"),
                ElementsAre(R"(/opt/a "b" $c \d/dorix)", "", "xy z"));
    EXPECT_THAT(parseExec(R"("/opt/dorix)"), IsEmpty());
    EXPECT_THAT(parseExec("%"), IsEmpty());
}

class ProgramLauncherTest : public testing::Test {
 protected:
    ProgramLauncherTest() {
        fs::create_directories(folder / "bin");
        fs::create_directories(folder / "share/applications");
        write(program, "#!/bin/sh\necho \"$@\" >> " + trace.string() + "\n");
        fs::permissions(program, fs::perms::owner_all);
    }

    static void write(const fs::path& file, const std::string& text) { std::ofstream(file) << text; }
    static std::string read(const fs::path& file) {
        std::ifstream stream(file);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    const TemporaryFolder temporary;
    const fs::path& folder = temporary.path();
    const fs::path program = folder / "bin/dorix";
    const fs::path trace = folder / "trace";
    EventLoop loop;
    LinuxProcesses launcher{loop.main, program};
};

TEST_F(ProgramLauncherTest, TheInstalledEntryIsWhatItIsOpenedBy) {
    EXPECT_EQ(launcher.bundlePath(), program);
    const auto entry = folder / "share/applications/es.pelmora.dorix.desktop";
    write(entry,
          "[Desktop Entry]\nType=Application\nName=DORIX\nExec=\"" + program.string() + "\" here %u\n");
    EXPECT_EQ(launcher.bundlePath(), entry);
    EXPECT_THAT(openCommand(entry), ElementsAre(program, "here"));
    EXPECT_THAT(openCommand(folder / "none.desktop"), IsEmpty());
    write(entry, "[Desktop Entry]\nType=Application\nName=DORIX\nExec=/bin/sh\n");
    EXPECT_EQ(launcher.bundlePath(), program) << "an entry of something else";
    EXPECT_FALSE(launcher.open(folder / "none.desktop"));
    EXPECT_FALSE(launcher.open(folder / "none"));
    EXPECT_FALSE(LinuxProcesses(loop.main, folder / "none").launchSelf({}));
}

TEST_F(ProgramLauncherTest, WhatWasStartedIsWaitedFor) {
    auto helper = launcher.launchSelf({"help", "me"});
    ASSERT_TRUE(helper);
    EXPECT_TRUE(launcher.open(program));
    const auto noChildIsLeft = [] {
        siginfo_t ended{};
        return waitid(P_ALL, 0, &ended, WEXITED | WNOHANG | WNOWAIT) < 0 && errno == ECHILD;
    };
    EXPECT_TRUE(loop.runUntil(noChildIsLeft));
    EXPECT_THAT(read(trace), testing::AnyOf("help me\n\n", "\nhelp me\n"));
    helper();
    EXPECT_TRUE(openApplication(program));
    EXPECT_GT(wait(nullptr), 0) << "of itself nobody waits for it";
}

TEST_F(ProgramLauncherTest, AddressesAreGivenToTheDesktop) {
    const auto command = folder / "bin/xdg-open";
    fs::copy(program, command);
    const Environment found({{"PATH", (folder / "bin").string() + ":" + ::getenv("PATH")}});
    XdgUrlOpener urls(loop.main);
    for (const char* refused : {"", "--help", "/etc/passwd", "manual", ":x", "1a:x", "a b:c", "-a:b"}) {
        EXPECT_FALSE(urls.open(refused)) << refused;
    }
    EXPECT_TRUE(urls.open("https://example.com/?a=$(id)&b=%20"));
    EXPECT_TRUE(loop.runUntil([&] { return read(trace) == "https://example.com/?a=$(id)&b=%20\n"; }));
    const Environment missing({{"PATH", folder / "share"}});
    EXPECT_FALSE(urls.open("https://example.com/")) << "without xdg-open";
}

TEST_F(ProgramLauncherTest, MicrophonesAreChosenInTheProgramOfTheDesktop) {
    const Environment path({{"PATH", folder / "bin"}});
    SoundSettings settings(loop.main);
    EXPECT_FALSE(settings.open()) << "no program for that";
    for (const char* name : {"gnome-control-center", "systemsettings", "pavucontrol"}) {
        write(folder / "bin" / name, "#!/bin/sh\necho \"${0##*/} $@\" > " + trace.string() + "\n");
        fs::permissions(folder / "bin" / name, fs::perms::owner_all);
    }
    for (const auto& [desktop, opened] : {std::pair{"ubuntu:GNOME", "gnome-control-center sound\n"},
                                          {"KDE", "systemsettings kcm_pulseaudio\n"},
                                          {"XFCE", "pavucontrol --tab=4\n"},
                                          {"", "pavucontrol --tab=4\n"}}) {
        const Environment session({{"XDG_CURRENT_DESKTOP", desktop}});
        fs::remove(trace);
        EXPECT_TRUE(settings.open());
        EXPECT_TRUE(loop.runUntil([&] { return read(trace) == opened; })) << desktop << read(trace);
    }
}

}  // namespace
}  // namespace dorix
