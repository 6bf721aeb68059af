#include "adapters/harness/SessionBus.h"
#include "base/async/ManualExecutor.h"
#include "linux/dbus/DBusSingleInstance.h"

#include <gmock/gmock.h>

#include <chrono>
#include <cstdlib>
#include <future>

namespace dorix {
namespace {

using testing::ElementsAre;

/// What a process has that ends before its loop runs.
class NoLoop final : public ManualExecutor, public FdWatcher {
 public:
    Subscription watchReadable(int, std::function<void()>) override { return {}; }
    Subscription watchWritable(int, std::function<void()>) override { return {}; }
};

class SingleInstanceTest : public testing::Test {
 protected:
    DBusSingleInstance::Requests record() {
        return {.reopen = [this] { log.emplace_back("reopen"); },
                .action = [this](const std::string& action) { log.push_back("action " + action); }};
    }

    template <typename... Values>
    bool ask(const char* member, const char* types, Values... values) {
        return BusPeer(loop)
            .call("es.pelmora.dorix", "/es/pelmora/dorix", "org.freedesktop.Application", member, types,
                  values...)
            .has_value();
    }

    /// Launches the program again, which waits for the answer: on a thread, as it is another process.
    bool launchAgain() {
        auto other = std::async(std::launch::async, [] {
            NoLoop none;
            return DBusSingleInstance(none, none).claim();
        });
        loop.runUntil([&] { return other.wait_for(std::chrono::seconds(0)) == std::future_status::ready; });
        return other.get();
    }

    std::vector<std::string> log;
    EventLoop loop;
    SessionBus session;
};

TEST_F(SingleInstanceTest, ASecondLaunchReopensTheFirst) {
    DBusSingleInstance first(loop.main, loop.main);
    ASSERT_TRUE(first.claim());
    first.onRequests(record());
    EXPECT_FALSE(launchAgain());
    EXPECT_THAT(log, ElementsAre("reopen"));

    EXPECT_TRUE(ask("Activate", "a{sv}", 0));
    EXPECT_TRUE(ask("ActivateAction", "sava{sv}", "pausa", 0, 0));
    EXPECT_FALSE(ask("Quit", "a{sv}", 0));
    EXPECT_THAT(log, ElementsAre("reopen", "reopen", "action pausa"));
}

TEST_F(SingleInstanceTest, AHangingOwnerDoesNotHoldItUpForLong) {
    const BusPeer hanging(loop, "es.pelmora.dorix", "/", {});  // whose loop does not run
    const double time = loop.main.now();
    DBusSingleInstance second(loop.main, loop.main);
    EXPECT_FALSE(second.claim());
    EXPECT_LT(loop.main.now() - time, 4);
}

TEST_F(SingleInstanceTest, WhatTheBusStartsItForIsTheLaunch) {
    setenv("DBUS_STARTER_ADDRESS", "x", 1);
    DBusSingleInstance first(loop.main, loop.main);
    EXPECT_EQ(std::getenv("DBUS_STARTER_ADDRESS"), nullptr);
    ASSERT_TRUE(first.claim());
    first.onRequests(record());
    EXPECT_FALSE(launchAgain());
    EXPECT_FALSE(launchAgain());
    EXPECT_THAT(log, ElementsAre("reopen"));
}

TEST_F(SingleInstanceTest, TheNameGoesWithItsOwnerAndCountsForNothingWithoutABus) {
    EXPECT_TRUE(DBusSingleInstance(loop.main, loop.main).claim());
    DBusSingleInstance second(loop.main, loop.main);
    EXPECT_TRUE(second.claim());
    second.onRequests(record());
    session.kill();
    loop.runFor(0.02);
    EXPECT_TRUE(DBusSingleInstance(loop.main, loop.main).claim());
    session.start();
    EXPECT_TRUE(loop.runUntil([&] { return ask("Activate", "a{sv}", 0); })) << "it takes its name again";
    EXPECT_THAT(log, ElementsAre("reopen"));
}

}  // namespace
}  // namespace dorix
