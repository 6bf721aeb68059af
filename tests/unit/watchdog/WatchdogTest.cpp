#include "base/async/ManualExecutor.h"
#include "fakes/FakeProcesses.h"
#include "fakes/MemoryUserDefaults.h"
#include "watchdog/RelaunchLimiter.h"
#include "watchdog/Watchdog.h"
#include "watchdog/WatchdogTask.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::optional<WatchdogArguments> parse(std::vector<std::string_view> arguments) {
    return parseWatchdogArguments(arguments);
}

TEST(WatchdogArgumentsTest, TakesAnIdAndAPath) {
    const WatchdogArguments expected{4711, "/opt/dorix"};
    EXPECT_EQ(parse({"dorix", "--watchdog", "4711", "/opt/dorix"}), expected);
    EXPECT_EQ(parse({"dorix", "x", "--watchdog", "+4711", "/opt/dorix", "y"}), expected);
    EXPECT_EQ(parse({"dorix", "--watchdog", "-2147483648", ""}), (WatchdogArguments{INT32_MIN, ""}));
    const auto line = expected.commandLine();
    EXPECT_EQ(parse({line.begin(), line.end()}), expected);

    const std::vector<std::vector<std::string_view>> odd{
        {"dorix", "--watchdog"},
        {"dorix", "--watchdog", "4711"},
        {"dorix", "--watchdog", "", "/opt/dorix"},
        {"dorix", "--watchdog", "+", "/opt/dorix"},
        {"dorix", "--watchdog", "+-1", "/opt/dorix"},
        {"dorix", "--watchdog", " 1", "/opt/dorix"},
        {"dorix", "--watchdog", "1x", "/opt/dorix"},
        {"dorix", "--watchdog", "0x10", "/opt/dorix"},
        {"dorix", "--watchdog", "1.0", "/opt/dorix"},
        {"dorix", "--watchdog", "2147483648", "/opt/dorix"},
        {"dorix", "4711", "/opt/dorix", "--watchdog"},
    };
    for (const auto& arguments : odd) {
        EXPECT_TRUE(isWatchdog(arguments));
        EXPECT_EQ(parse(arguments), std::nullopt) << arguments[arguments.size() - 1];
    }
    EXPECT_FALSE(isWatchdog(std::vector<std::string_view>{"dorix", "watchdog", "--watchdogs"}));
}

TEST(RelaunchLimiterTest, LetsItComeBackThreeTimesInTenMinutes) {
    MemoryUserDefaults defaults;
    RelaunchLimiter limiter(defaults);
    EXPECT_TRUE(limiter.allow(1000));
    EXPECT_TRUE(limiter.allow(1001));
    EXPECT_TRUE(limiter.allow(1599.5));
    EXPECT_TRUE(limiter.hasCounted(1599.5));
    const auto stored = defaults.value("watchdogRelaunches");
    EXPECT_FALSE(limiter.allow(1599.9)) << "the first is still less than ten minutes old";
    EXPECT_EQ(defaults.value("watchdogRelaunches"), stored) << "a refusal is not counted";
    EXPECT_TRUE(limiter.allow(1600));
    EXPECT_EQ(defaults.value("watchdogRelaunches"), Json({1001.0, 1599.5, 1600.0}));
    EXPECT_FALSE(limiter.allow(1600));
}

TEST(RelaunchLimiterTest, AValueThatIsNotItsOwnCountsAsNone) {
    for (const Json& odd : {Json("x"), Json({1000, "x", 1000}), Json({{"a", 1}}), Json(nullptr)}) {
        MemoryUserDefaults defaults(Json{{"watchdogRelaunches", odd}});
        EXPECT_TRUE(RelaunchLimiter(defaults).allow(1000.25));
        EXPECT_EQ(defaults.value("watchdogRelaunches"), Json({1000.25}));
    }
}

class WatchdogTest : public testing::Test {
 protected:
    ManualExecutor executor;
    FakeProcessWatcher processes;
    bool allowed = true;
    std::vector<std::string> log;
    Watchdog watchdog{{.executor = executor,
                       .processes = processes,
                       .mayRelaunch =
                           [this] {
                               log.emplace_back("asked");
                               return allowed;
                           },
                       .open = [this](const std::string& path) { log.push_back("open " + path); },
                       .exit = [this] { log.emplace_back("exit"); }}};
};

TEST_F(WatchdogTest, StartsAProgramThatHasDiedAgain) {
    processes.running = {7};
    watchdog.start({7, "/opt/dorix"});
    executor.advanceBy(10'000);
    EXPECT_THAT(log, IsEmpty());
    processes.end(7);
    executor.advanceBy(1.99);
    EXPECT_THAT(log, IsEmpty());
    executor.advanceBy(0.01);
    EXPECT_THAT(log, ElementsAre("asked", "open /opt/dorix", "exit"));
}

TEST_F(WatchdogTest, LeavesAProgramThatKeepsDyingAlone) {
    processes.running = {7};
    allowed = false;
    watchdog.start({7, "/opt/dorix"});
    processes.end(7);
    executor.advanceBy(2);
    EXPECT_THAT(log, ElementsAre("asked", "exit"));
}

TEST_F(WatchdogTest, EndsWhereNobodyIsToBeWatched) {
    watchdog.start({7, "/opt/dorix"});
    EXPECT_THAT(log, ElementsAre("exit"));
    executor.advanceBy(10);
    EXPECT_THAT(log, ElementsAre("exit")) << "and starts nothing";
}

TEST(WatchdogTaskTest, EndsTheWatchdogThatItStarted) {
    FakeProgramLauncher launcher;
    WatchdogTask task(launcher);
    task.terminate();
    task.spawn();
    EXPECT_THAT(launcher.log, ElementsAre("launch --watchdog 42 /opt/dorix"));
    task.terminate();
    task.terminate();
    EXPECT_THAT(launcher.log, ElementsAre("launch --watchdog 42 /opt/dorix", "terminate"));

    launcher.canLaunch = false;
    task.spawn();
    task.terminate();
    EXPECT_EQ(launcher.log.size(), 3U);
}

}  // namespace
}  // namespace dorix
