#include "adapters/process/TestProgram.h"
#include "base/Json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <ctime>
#include <fstream>
#include <string>
#include <vector>

namespace dorix {
namespace {

using testing::AnyOf;
using testing::Each;
using testing::IsEmpty;
using testing::StartsWith;

double seconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

class WatchdogProcessTest : public testing::Test {
 protected:
    /// Whether there is one watchdog, and it has its eye on the program.
    bool isWatched() const {
        const auto watchdogs = program.watchdogs();
        return watchdogs.size() == 1 &&
               std::ranges::count(openFilesOf(*watchdogs.begin()), "anon_inode:[pidfd]") == 1;
    }

    /// Starts the program and waits until it is watched over.
    pid_t startWatched() const {
        const auto process = program.start();
        EXPECT_TRUE(eventually([&] { return isWatched(); }));
        return process;
    }

    void expectNothingComesBack() const {
        EXPECT_TRUE(eventually([&] { return program.watchdogs().empty(); }));
        EXPECT_THAT(program.programs(), IsEmpty());
    }

    /// Ends the running program by `signal` and gives the one that comes back.
    pid_t afterCrash(pid_t process, int signal) const {
        const auto environment = environmentOf(process);
        const auto time = seconds();
        kill(process, signal);
        EXPECT_TRUE(WIFSIGNALED(TestProgram::wait(process)));
        const auto watchdog = program.watchdogs();
        EXPECT_EQ(watchdog.size(), 1U) << "it survives";
        if (!eventually([&] { return program.programs().size() == 1; })) return -1;
        EXPECT_GE(seconds() - time, 2.0);
        const auto again = *program.programs().begin();
        EXPECT_EQ(environmentOf(again), environment);
        EXPECT_EQ(getsid(again), again) << "it belongs to nobody";
        // One that dies before its watchdog has an eye on it stays away.
        EXPECT_TRUE(eventually([&] { return isWatched() && program.watchdogs() != watchdog; }));
        return again;
    }

    Json defaults() const {
        std::ifstream stream(program.defaultsFile());
        return Json::parse(stream, nullptr, false);
    }

    TestProgram program;
};

TEST_F(WatchdogProcessTest, AProgramThatIsQuitStaysAway) {
    for (const int signal : {SIGTERM, SIGINT}) {
        const auto process = startWatched();
        const auto watchdog = *program.watchdogs().begin();
        EXPECT_THAT(openFilesOf(watchdog), Each(AnyOf("/dev/null", StartsWith("anon_inode:"))))
            << "the program's own files, its display, its bus";
        kill(process, signal);
        EXPECT_EQ(TestProgram::wait(process), 0);
        EXPECT_EQ(TestProgram::wait(watchdog), 0);
        expectNothingComesBack();
    }
}

TEST_F(WatchdogProcessTest, AProgramThatCrashesComesBackButNotForEver) {
    const auto now = static_cast<double>(std::time(nullptr));
    std::filesystem::create_directories(program.defaultsFile().parent_path());
    std::ofstream(program.defaultsFile())
        << Json{{"watchdogRelaunches", {now - 601, now - 300}}, {"kept", "é"}};
    const auto second = afterCrash(startWatched(), SIGKILL);
    ASSERT_GT(second, 0);
    EXPECT_EQ(defaults().at("watchdogRelaunches").size(), 2U);
    const auto third = afterCrash(second, SIGABRT);
    ASSERT_GT(third, 0);
    EXPECT_EQ(defaults().at("watchdogRelaunches").size(), 3U);

    kill(third, SIGKILL);
    TestProgram::wait(third);
    expectNothingComesBack();
    EXPECT_EQ(defaults().at("watchdogRelaunches").size(), 3U);
    EXPECT_EQ(defaults().at("kept"), "é");
}

TEST_F(WatchdogProcessTest, WithoutAnybodyToWatchItEndsAtOnce) {
    const auto dead = program.start({"--watchdog"});
    EXPECT_EQ(TestProgram::wait(dead), 0);
    const std::vector<std::vector<std::string>> commands{
        {"--watchdog", std::to_string(dead), DORIX_BINARY},
        {"--watchdog", std::to_string(getpid())},
        {"--watchdog", "", DORIX_BINARY},
        {"--watchdog", "99999999999", DORIX_BINARY},
        {"--watchdog", "-1", DORIX_BINARY},
        {"x", "--watchdog", "one", DORIX_BINARY},
    };
    for (const auto& arguments : commands) {
        EXPECT_EQ(TestProgram::wait(program.start(arguments)), 0) << testing::PrintToString(arguments);
    }
    expectNothingComesBack();
    EXPECT_FALSE(std::filesystem::exists(program.defaultsFile()));
}

TEST_F(WatchdogProcessTest, TheProgramOutlivesItsWatchdog) {
    const auto process = startWatched();
    const auto watchdog = *program.watchdogs().begin();
    kill(watchdog, SIGKILL);
    EXPECT_TRUE(eventually([&] { return kill(watchdog, 0) != 0; })) << "no zombie is left";
    EXPECT_THAT(program.programs(), testing::ElementsAre(process));
}

}  // namespace
}  // namespace dorix
