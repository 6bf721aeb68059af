#include "adapters/harness/EventLoop.h"
#include "adapters/harness/OtherProgram.h"
#include "adapters/models/ServedModel.h"
#include "linux/process/LinuxHelperProcesses.h"
#include "speech/models/HelperUnpacker.h"

#include <gtest/gtest.h>

#include <string>

namespace dorix {
namespace {

namespace fs = std::filesystem;

/// Archives that came from outside, through the real process in its jail.
class UnpackTest : public testing::Test {
 protected:
    static void SetUpTestSuite() {
        archives = new TemporaryFolder;
        OtherProgram maker({DORIX_MAKE_ARCHIVES, archives->path().string()});
        ASSERT_EQ(maker.wait(), 0);
    }
    static void TearDownTestSuite() { delete archives; }

    /// Empty when all went well.
    std::string unpack(const std::string& name) {
        fs::remove_all(folder);
        fs::create_directories(folder);
        return loop.result(tried({.archive = archives->path() / (name + ".tar.bz2"),
                                  .folder = folder,
                                  .files = {"one.so", "two.so"},
                                  .largest = 100'000}),
                           120);
    }
    Task<std::string> tried(UnpackRequest request) {
        try {
            co_await unpacker.unpack(std::move(request));
        } catch (const Error& error) {
            co_return error.localizedDescription();
        }
        co_return "";
    }

    static TemporaryFolder* archives;

    EventLoop loop;
    LinuxHelperProcesses processes{loop.main, DORIX_BINARY};
    HelperUnpacker unpacker{loop.main, processes};
    TemporaryFolder home;
    const fs::path folder = home.path() / "unpacked";
};

TemporaryFolder* UnpackTest::archives = nullptr;

TEST_F(UnpackTest, WhatIsWantedIsTakenAndNothingElse) {
    for (const auto* name : {"good", "leads-out"}) {
        SCOPED_TRACE(name);
        ASSERT_EQ(unpack(name), "");
        EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 2);
        EXPECT_EQ(contents(folder / "one.so").size(), 5000U);
        EXPECT_TRUE(contents(folder / "two.so").starts_with("secondsecond"));
        EXPECT_EQ(fs::status(folder / "one.so").permissions(),
                  fs::perms::owner_read | fs::perms::owner_write);
        EXPECT_EQ(std::distance(fs::directory_iterator(home.path()), {}), 1);
    }
}

TEST_F(UnpackTest, WhatNobodyShouldUnpackIsRefused) {
    EXPECT_EQ(unpack("missing"), "archive: two.so is missing");
    EXPECT_EQ(unpack("twice"), "archive: one.so is there twice");
    for (const auto* name : {"symbolic", "hard", "pipe"})
        EXPECT_EQ(unpack(name), "archive: one.so is no file") << name;
    for (const auto* name : {"large", "bomb"}) EXPECT_EQ(unpack(name), "archive: too large") << name;
    for (const auto* name : {"cut", "page", "nothing"})
        EXPECT_TRUE(unpack(name).starts_with("archive: ")) << name;
}

TEST_F(UnpackTest, WithoutTheProgramNothingIsUnpacked) {
    LinuxHelperProcesses none(loop.main, home.path() / "dorix");
    HelperUnpacker nobody(loop.main, none);
    EXPECT_EQ(unpack("good"), "");
    bool failed = false;
    TaskScope scope(loop.main);
    const auto task = scope.spawn([](HelperUnpacker& with, bool& out) -> Task<void> {
        try {
            co_await with.unpack({});
        } catch (const MessageError&) {
            out = true;
        }
    }(nobody, failed));
    EXPECT_TRUE(loop.runUntil([&] { return task.isDone(); }));
    EXPECT_TRUE(failed);
}

}  // namespace
}  // namespace dorix
