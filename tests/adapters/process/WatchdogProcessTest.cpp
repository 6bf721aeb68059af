#include "adapters/harness/OtherProgram.h"
#include "base/Json.h"
#include "fakes/TemporaryFolder.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <fstream>
#include <list>
#include <set>

namespace dorix {
namespace {

namespace fs = std::filesystem;
using testing::AnyOf;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

double seconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

fs::path ofProcess(pid_t process) { return "/proc/" + std::to_string(process); }

/// A list as the kernel tells it.
std::set<std::string> readList(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::set<std::string> entries;
    for (std::string entry; std::getline(stream, entry, '\0');) entries.insert(entry);
    return entries;
}

std::set<std::string> environmentOf(pid_t process) { return readList(ofProcess(process) / "environ"); }

std::vector<std::string> openFilesOf(pid_t process) {
    std::vector<std::string> files;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(ofProcess(process) / "fd", error))
        files.push_back(fs::read_symlink(entry.path(), error).string());
    return files;
}

/// Waits for a process that was started here, or has become ours since; its status, -1 if it does not end.
int wait(pid_t process) {
    int status = -1;
    eventually([&] { return waitpid(process, &status, WNOHANG) != 0; });
    return status;
}

/// The program in a session with nothing in it: no display, no bus, no sound, and a home of its own. Whatever
/// it starts is found and ended at the test's end.
class WatchdogProcessTest : public testing::Test {
 protected:
    // Those whose parent dies become ours, so that they can be waited for.
    WatchdogProcessTest() { prctl(PR_SET_CHILD_SUBREAPER, 1); }
    ~WatchdogProcessTest() override {
        // The watchdogs first: the others would come back.
        for (const auto process : watchdogs()) kill(process, SIGKILL);
        for (const auto process : programs()) kill(process, SIGKILL);
        eventually([this] { return watchdogs().empty() && programs().empty(); });
        while (waitpid(-1, nullptr, WNOHANG) > 0) continue;
    }

    pid_t start(const std::vector<std::string>& arguments = {}) {
        const std::string home = folder.path();
        std::vector<std::string> command{"env",
                                         "-i",
                                         "HOME=" + home,
                                         "XDG_CONFIG_HOME=" + home + "/config",
                                         "XDG_RUNTIME_DIR=" + home,
                                         "PULSE_SERVER=unix:" + home + "/none",
                                         "LC_ALL=C.UTF-8",
                                         "PATH=/usr/bin:/bin",
                                         "OF_THE_USER=kept as it is",
                                         DORIX_BINARY};
        command.insert(command.end(), arguments.begin(), arguments.end());
        // It also gets an open file that it does not know of.
        const int file = open("/etc/passwd", O_RDONLY);
        const auto process = started.emplace_back(command).pid();
        close(file);
        return process;
    }

    /// The living processes that run the program, and those that watch over it.
    std::set<pid_t> programs() const { return processes(false); }
    std::set<pid_t> watchdogs() const { return processes(true); }

    std::set<pid_t> processes(bool watching) const {
        std::set<pid_t> found;
        for (const auto& entry : fs::directory_iterator("/proc")) {
            const auto process = static_cast<pid_t>(std::atol(entry.path().filename().c_str()));
            // One that has ended and not been waited for has none.
            if (!environmentOf(process).contains("HOME=" + folder.path().string())) continue;
            std::error_code error;
            // Between fork and exec a new process still looks like the one that starts it.
            const bool isItself = fs::read_symlink(entry.path() / "exe", error) == fs::path(DORIX_BINARY);
            if (isItself && readList(entry.path() / "cmdline").contains("--watchdog") == watching)
                found.insert(process);
        }
        return found;
    }

    /// Whether there is one watchdog, and it has its eye on the program.
    bool isWatched() const {
        const auto found = watchdogs();
        return found.size() == 1 &&
               std::ranges::count(openFilesOf(*found.begin()), "anon_inode:[pidfd]") == 1;
    }

    /// Starts the program and waits until it is watched over.
    pid_t startWatched() {
        const auto process = start();
        EXPECT_TRUE(eventually([&] { return isWatched(); }));
        return process;
    }

    void expectNothingComesBack() const {
        EXPECT_TRUE(eventually([&] { return watchdogs().empty(); }));
        EXPECT_THAT(programs(), IsEmpty());
    }

    /// Ends the running program by `signal` and gives the one that comes back.
    pid_t afterCrash(pid_t process, int signal) const {
        const auto environment = environmentOf(process);
        const auto time = seconds();
        kill(process, signal);
        EXPECT_TRUE(WIFSIGNALED(wait(process)));
        const auto watchdog = watchdogs();
        EXPECT_EQ(watchdog.size(), 1U) << "it survives";
        if (!eventually([&] { return programs().size() == 1; })) return -1;
        EXPECT_GE(seconds() - time, 2.0);
        const auto again = *programs().begin();
        EXPECT_EQ(environmentOf(again), environment);
        EXPECT_EQ(getsid(again), again) << "it belongs to nobody";
        // One that dies before its watchdog has an eye on it stays away.
        EXPECT_TRUE(eventually([&] { return isWatched() && watchdogs() != watchdog; }));
        return again;
    }

    Json defaults() const {
        std::ifstream stream(defaultsFile);
        return Json::parse(stream, nullptr, false);
    }

    TemporaryFolder folder;
    const fs::path defaultsFile = folder.path() / "config/dorix/defaults.json";
    std::list<OtherProgram> started;
};

TEST_F(WatchdogProcessTest, AProgramThatIsQuitStaysAway) {
    for (const int signal : {SIGTERM, SIGINT}) {
        const auto process = startWatched();
        const auto watchdog = *watchdogs().begin();
        auto files = openFilesOf(watchdog);
        // That over which it gets what is to outlive the program.
        const auto channel =
            std::ranges::find_if(files, [](const auto& file) { return file.starts_with("socket:"); });
        if (channel != files.end()) files.erase(channel);
        EXPECT_THAT(files, Each(AnyOf("/dev/null", StartsWith("anon_inode:"))))
            << "the program's own files, its display, its bus";
        kill(process, signal);
        EXPECT_EQ(wait(process), 0);
        EXPECT_EQ(wait(watchdog), 0);
        expectNothingComesBack();
    }
}

TEST_F(WatchdogProcessTest, AProgramThatCrashesComesBackButNotForEver) {
    const auto now = static_cast<double>(std::time(nullptr));
    fs::create_directories(defaultsFile.parent_path());
    std::ofstream(defaultsFile) << Json{{"watchdogRelaunches", {now - 601, now - 300}}, {"kept", "é"}};
    const auto second = afterCrash(startWatched(), SIGKILL);
    ASSERT_GT(second, 0);
    EXPECT_EQ(defaults().at("watchdogRelaunches").size(), 2U);
    const auto third = afterCrash(second, SIGABRT);
    ASSERT_GT(third, 0);
    EXPECT_EQ(defaults().at("watchdogRelaunches").size(), 3U);

    kill(third, SIGKILL);
    wait(third);
    expectNothingComesBack();
    EXPECT_EQ(defaults().at("watchdogRelaunches").size(), 3U);
    EXPECT_EQ(defaults().at("kept"), "é");
}

TEST_F(WatchdogProcessTest, WithoutAnybodyToWatchItEndsAtOnce) {
    const auto dead = start({"--watchdog"});
    EXPECT_EQ(wait(dead), 0);
    const OtherProgram stranger({"sleep", "60"});
    const std::vector<std::vector<std::string>> commands{
        {"--watchdog", std::to_string(stranger.pid()), DORIX_BINARY},
        {"--watchdog", "1", DORIX_BINARY},
        {"--watchdog", std::to_string(dead), DORIX_BINARY},
        {"--watchdog", std::to_string(getpid())},
        {"--watchdog", "", DORIX_BINARY},
        {"--watchdog", "99999999999", DORIX_BINARY},
        {"--watchdog", "-1", DORIX_BINARY},
        {"x", "--watchdog", "one", DORIX_BINARY},
    };
    for (const auto& arguments : commands) {
        EXPECT_EQ(wait(start(arguments)), 0) << testing::PrintToString(arguments);
    }
    expectNothingComesBack();
    EXPECT_FALSE(fs::exists(defaultsFile));
}

TEST_F(WatchdogProcessTest, TheProgramOutlivesItsWatchdog) {
    const auto process = startWatched();
    const auto watchdog = *watchdogs().begin();
    kill(watchdog, SIGKILL);
    EXPECT_TRUE(eventually([&] { return kill(watchdog, 0) != 0; })) << "no zombie is left";
    EXPECT_THAT(programs(), ElementsAre(process));
}

}  // namespace
}  // namespace dorix
