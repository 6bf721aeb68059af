#include "adapters/harness/EventLoop.h"
#include "adapters/harness/OtherProgram.h"
#include "base/Log.h"
#include "cloud/AccountForm.h"
#include "cloud/AccountStore.h"
#include "cloud/OwnService.h"
#include "fakes/MemoryUserDefaults.h"
#include "fakes/TemporaryFolder.h"
#include "linux/curl/CurlHttpClient.h"
#include "linux/process/ChildCompanionService.h"
#include "localdata/Language.h"
#include "platform/Keychain.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>
#include <mutex>
#include <string>
#include <vector>

namespace dorix {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::Contains;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

/// A port of this computer that is free, and is taken for as long as this holds it.
class TakenPort {
 public:
    TakenPort() {
        sockaddr_in address{.sin_family = AF_INET, .sin_addr = {.s_addr = htonl(INADDR_LOOPBACK)}};
        socklen_t size = sizeof(address);
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): the interface's own way
        auto* name = reinterpret_cast<sockaddr*>(&address);
        if (::bind(socket_.get(), name, size) != 0 || ::listen(socket_.get(), 8) != 0) std::abort();
        ::getsockname(socket_.get(), name, &size);
        number = ntohs(address.sin_port);
    }
    void release() { socket_ = FileDescriptor(); }

    int number = 0;

 private:
    FileDescriptor socket_{::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
};

class ChildCompanionServiceTest : public testing::Test {
 protected:
    ChildCompanionServiceTest() {
        installLanguage(defaults, {});
        setLogSink([this](std::string_view line) {
            const std::scoped_lock lock(mutex);
            log.emplace_back(line);
        });
    }
    ~ChildCompanionServiceTest() override {
        child_.end();
        EXPECT_TRUE(loop.runUntil([this] { return child() == 0; })) << "it has outlived its end";
        setLogSink([](std::string_view line) { std::cerr << line << '\n'; });
        uninstallLanguage();
    }

    std::vector<std::string> logged() {
        const std::scoped_lock lock(mutex);
        return log;
    }
    /// The service's process: it is the only child.
    pid_t child() const {
        std::ifstream children("/proc/self/task/" + std::to_string(::getpid()) + "/children");
        pid_t found = 0;
        children >> found;
        return found;
    }

    const TemporaryFolder folder;
    const Environment environment{{{"XDG_DATA_HOME", folder.path().string()}}};
    std::mutex mutex;
    std::vector<std::string> log;
    EventLoop loop;
    TakenPort taken;
    MemoryUserDefaults defaults;
    MemoryKeychain keychain;
    CurlHttpClient http;
    ChildCompanionService child_{loop.main, DORIX_SERVICE};
    DorixAPI api{loop.main, http, keychain, "http://127.0.0.1:" + std::to_string(taken.number)};
    AccountStore account{loop.main, api, keychain, defaults, "Mesa"};
    OwnService own{loop.main, http, child_, api, account};
    AccountForm form{loop.main, api, account, own, defaults};
};

TEST_F(ChildCompanionServiceTest, ItIsSignedInToAndItsLogIsOurs) {
    EXPECT_FALSE(child_.listensOn(taken.number)) << "the port is somebody else's";
    EXPECT_TRUE(child_.isTrusted(taken.number)) << "the user's own";
    taken.release();
    own.start();
    ASSERT_TRUE(loop.runUntil([this] { return account.loggedIn.get(); }));
    EXPECT_TRUE(child_.listensOn(taken.number));
    EXPECT_TRUE(loop.runUntil([this] {
        return std::ranges::any_of(logged(), [](const auto& line) {
            return line.starts_with("DORIX servicio: ") && line.contains("event=listening");
        });
    }));

    // Somebody who ends it by hand ends it well, and it is there again.
    const auto before = child();
    ::kill(before, SIGTERM);
    ASSERT_TRUE(loop.runUntil([&] { return child() != before && child_.listensOn(taken.number); }));
    EXPECT_THAT(logged(), Contains(AllOf(StartsWith("DORIX servicio: "), EndsWith("event=stopped"))));
    EXPECT_FALSE(own.hasBadSettings.get());
}

TEST_F(ChildCompanionServiceTest, WhatIsWrongWithItsSettingsIsToldAndNotTriedAgain) {
    const Environment wrong({{"DORIX_SERVICE_CONNECTIONS", "none"}});
    taken.release();
    own.start();
    form.begin();
    ASSERT_TRUE(loop.runUntil([this] { return own.hasBadSettings.get(); }));
    EXPECT_THAT(logged(),
                Contains(AllOf(StartsWith("DORIX servicio: "), HasSubstr("DORIX_SERVICE_CONNECTIONS"))));
    EXPECT_NE(form.error.get(), "");
    EXPECT_EQ(child(), 0);
    loop.runFor(1.5);  // longer than until another start
    EXPECT_EQ(child(), 0);
}

TEST_F(ChildCompanionServiceTest, AFloodOfLinesIsCutOff) {
    const auto flood = folder.path() / "flood";
    std::ofstream(flood)
        << "#!/bin/sh\nhead -c 100000 /dev/zero | tr '\\0' x >&2; echo >&2\n"
           "i=0; while [ $i -lt 5000 ]; do echo line $i >&2; i=$((i+1)); done\nprintf last >&2\n";
    fs::permissions(flood, fs::perms::owner_all);
    ChildCompanionService noisy(loop.main, flood);
    bool hasEnded = false;
    ASSERT_TRUE(noisy.start("127.0.0.1:1", [&](auto how) {
        hasEnded = true;
        EXPECT_EQ(how, CompanionService::End::stopped);
    }));
    ASSERT_TRUE(loop.runUntil([&] { return hasEnded; }));
    EXPECT_LT(logged().size(), 300U);
    EXPECT_LT(std::ranges::max(logged(), {}, &std::string::size).size(), 1000U);
    EXPECT_THAT(logged(), Contains("DORIX servicio: line 0"));
}

}  // namespace
}  // namespace dorix
