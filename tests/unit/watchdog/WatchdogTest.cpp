#include "fakes/MemoryUserDefaults.h"
#include "watchdog/RelaunchLimiter.h"
#include "watchdog/WatchdogTask.h"

#include <gtest/gtest.h>

#include <optional>
#include <string_view>
#include <vector>

namespace dorix {
namespace {

std::optional<WatchdogArguments> parse(std::vector<std::string_view> arguments) {
    return parseWatchdogArguments(arguments);
}

TEST(WatchdogArgumentsTest, TakesAnIdAndAPath) {
    const WatchdogArguments expected{4711, "/opt/dorix"};
    EXPECT_EQ(parse({"dorix", "x", "--watchdog", "+4711", "/opt/dorix", "y"}), expected);
    EXPECT_EQ(parse({"dorix", "--watchdog", "-2147483648", ""}), (WatchdogArguments{INT32_MIN, ""}));
    const auto line = expected.commandLine();
    EXPECT_EQ(parse({line.begin(), line.end()}), expected);
    for (const auto* id : {"", "+", "+-1", " 1", "1x", "0x10", "1.0", "2147483648"}) {
        EXPECT_EQ(parse({"dorix", "--watchdog", id, "/opt/dorix"}), std::nullopt) << id;
    }
    for (const auto& odd : std::vector<std::vector<std::string_view>>{
             {"--watchdog"}, {"--watchdog", "4711"}, {"4711", "/opt/dorix", "--watchdog"}}) {
        EXPECT_TRUE(isWatchdog(odd));
        EXPECT_EQ(parse(odd), std::nullopt);
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

}  // namespace
}  // namespace dorix
