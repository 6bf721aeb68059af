#include "adapters/dbus/TestBus.h"
#include "linux/dbus/DBusSingleInstance.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <future>
#include <optional>
#include <string>
#include <vector>

namespace dorix {
namespace {

using testing::ElementsAre;

/// What a process has that ends before its loop runs.
class NoLoop final : public WorkQueue, public FdWatcher {
 public:
    void post(Work) override {}
    Token watchReadable(int, std::function<void()>) override { return nullptr; }
};

class SingleInstanceTest : public testing::Test {
 protected:
    SingleInstance::Requests record() {
        return {.reopen = [this] { log.emplace_back("reopen"); },
                .action = [this](const std::string& action) { log.push_back("action " + action); }};
    }

    std::string ask(TestPeer& peer, const char* member, const char* signature = nullptr) {
        return peer.call("es.pelmora.dorix", "/es/pelmora/dorix", "org.freedesktop.Application", member,
                         [&](sd_bus_message* message) {
                             if (signature) sd_bus_message_append(message, "s", "pausa");
                             if (signature) sd_bus_message_append(message, "av", 0);
                             sd_bus_message_append(message, "a{sv}", 0);
                         });
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
    std::optional<TestBus> session{std::in_place};
};

TEST_F(SingleInstanceTest, ASecondLaunchReopensTheFirst) {
    DBusSingleInstance first(loop.main, loop.main);
    ASSERT_TRUE(first.claim());
    first.onRequests(record());
    EXPECT_FALSE(launchAgain());
    EXPECT_THAT(log, ElementsAre("reopen"));

    TestPeer desktop(loop, nullptr);
    EXPECT_EQ(ask(desktop, "Activate"), "");
    EXPECT_EQ(ask(desktop, "ActivateAction", "s"), "");
    EXPECT_NE(ask(desktop, "Quit"), "");
    EXPECT_THAT(log, ElementsAre("reopen", "reopen", "action pausa"));
}

TEST_F(SingleInstanceTest, TheNameGoesWithItsOwner) {
    {
        DBusSingleInstance first(loop.main, loop.main);
        ASSERT_TRUE(first.claim());
    }
    DBusSingleInstance second(loop.main, loop.main);
    EXPECT_TRUE(second.claim());
}

TEST_F(SingleInstanceTest, AHangingOwnerDoesNotHoldItUpForLong) {
    TestPeer hanging(loop, "es.pelmora.dorix");  // whose loop does not run
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

TEST_F(SingleInstanceTest, RunsWithoutABus) {
    DBusSingleInstance first(loop.main, loop.main);
    ASSERT_TRUE(first.claim());
    session->kill();
    loop.runFor(0.05);
    DBusSingleInstance second(loop.main, loop.main);
    EXPECT_TRUE(second.claim());
}

}  // namespace
}  // namespace dorix
