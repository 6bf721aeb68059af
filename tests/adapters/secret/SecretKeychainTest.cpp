#include "adapters/harness/SessionBus.h"
#include "base/Log.h"
#include "linux/secret/SecretKeychain.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace dorix {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char* secretsName = "org.freedesktop.secrets";
constexpr const char* secretsPath = "/org/freedesktop/secrets";
constexpr const char* serviceInterface = "org.freedesktop.Secret.Service";

/// Over a bus of the test's own, on which a real keyring may run.
class SecretKeychainTest : public testing::Test {
 protected:
    SecretKeychainTest() {
        setLogSink([this](std::string_view line) {
            const std::scoped_lock lock(mutex);
            log.emplace_back(line);
        });
    }
    ~SecretKeychainTest() override {
        keychain.reset();
        setLogSink([](std::string_view) {});
    }

    /// A new run of the program.
    void restart() { keychain = std::make_unique<SecretKeychain>("es.pelmora.dorix", file); }

    void unlockKeyring() {
        keyring.reset();
        keyring.emplace(std::vector<std::string>{"gnome-keyring-daemon", "--foreground", "--unlock",
                                                 "--components=secrets"},
                        Variables{{"HOME", bus.folder().path()},
                                  {"XDG_DATA_HOME", bus.folder().path()},
                                  {"XDG_RUNTIME_DIR", bus.folder().path()}},
                        "password");
        ASSERT_TRUE(loop.runUntil([&] { return collection() != "/" && !collection().empty(); }));
        restart();
    }
    /// The path of the one that secrets go to; "/" when there is none.
    std::string collection() {
        const auto reply =
            peer->call(secretsName, secretsPath, serviceInterface, "ReadAlias", "s", "default");
        const char* path = "";
        if (reply) sd_bus_message_read(reply->get(), "o", &path);
        return path;
    }
    void lock() {
        const auto path = collection();
        ASSERT_TRUE(peer->call(secretsName, secretsPath, serviceInterface, "Lock", "ao", 1, path.c_str()));
    }

    std::optional<std::string> read(const std::string& account = "session-token") {
        return loop.result(keychain->read(account));
    }
    void save(const std::string& value) { finish(keychain->save("session-token", value)); }
    void remove() { finish(keychain->remove("session-token")); }
    void finish(Task<void> task) {
        TaskScope scope(loop.main);
        const auto handle = scope.spawn(std::move(task));
        EXPECT_TRUE(loop.runUntil([&] { return handle.isDone(); }));
    }
    std::string fileContents() const {
        std::ifstream stream(file);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    EventLoop loop;
    SessionBus bus{SessionBus::Services::none};
    std::optional<BusPeer> peer{std::in_place, loop};
    std::optional<OtherProgram> keyring;
    const std::filesystem::path file = bus.folder().path() / "DORIX" / "secrets.json";
    std::mutex mutex;
    std::vector<std::string> log;
    std::unique_ptr<SecretKeychain> keychain = std::make_unique<SecretKeychain>("es.pelmora.dorix", file);
};

TEST_F(SecretKeychainTest, AKeyringKeepsSecretsFromRunToRun) {
    unlockKeyring();
    EXPECT_EQ(read(), std::nullopt);
    save("old");
    save("sécret");
    EXPECT_EQ(read(), "sécret");
    EXPECT_EQ(read("other"), std::nullopt);
    restart();
    EXPECT_EQ(read(), "sécret");
    remove();
    EXPECT_EQ(read(), std::nullopt);
    remove();
    EXPECT_FALSE(std::filesystem::exists(file));
    EXPECT_THAT(log, IsEmpty());
}

TEST_F(SecretKeychainTest, WithoutAServiceAFileOfTheUsersKeepsThem) {
    remove();
    EXPECT_THAT(log, IsEmpty()) << "nothing is kept yet";
    EXPECT_FALSE(std::filesystem::exists(file));
    save("secret");
    EXPECT_EQ(read(), "secret");
    using std::filesystem::perms;
    EXPECT_EQ(std::filesystem::status(file).permissions(), perms::owner_read | perms::owner_write);
    save("newer");
    restart();
    EXPECT_EQ(read(), "newer");
    ASSERT_EQ(log.size(), 1U);
    EXPECT_THAT(log[0], AllOf(HasSubstr("in a file"), Not(HasSubstr("newer"))));

    // Once there is one, it takes over.
    unlockKeyring();
    EXPECT_EQ(read(), "newer");
    EXPECT_THAT(fileContents(), Not(HasSubstr("newer")));
    EXPECT_EQ(read(), "newer");
    remove();
    EXPECT_EQ(read(), std::nullopt);
}

TEST_F(SecretKeychainTest, WhatIsLockedIsCaughtUpWithLater) {
    unlockKeyring();
    save("old");
    lock();
    EXPECT_EQ(read(), "old");
    restart();
    EXPECT_EQ(read(), std::nullopt);
    remove();
    unlockKeyring();
    EXPECT_EQ(read(), std::nullopt) << "it was removed";
    save("old");
    lock();
    save("new");
    EXPECT_EQ(read(), "new");
    unlockKeyring();
    EXPECT_EQ(read(), "new");
    std::filesystem::remove(file);
    EXPECT_EQ(read(), "new");
}

TEST_F(SecretKeychainTest, AServiceThatDoesNotAnswerHoldsNobodyUp) {
    unlockKeyring();
    save("old");
    keyring->signal(SIGSTOP);
    const double before = loop.main.now();
    double longestTurn = 0;
    double lastTurn = before;
    TaskScope scope(loop.main);
    const auto saved = scope.spawn(keychain->save("session-token", "new"));
    EXPECT_TRUE(loop.runUntil([&] {
        longestTurn = std::max(longestTurn, loop.main.now() - std::exchange(lastTurn, loop.main.now()));
        return saved.isDone();
    }));
    EXPECT_GT(loop.main.now() - before, 2) << "it did answer";
    EXPECT_LT(longestTurn, 0.5);
    EXPECT_LT(loop.main.now() - before, 6);
    EXPECT_EQ(read(), "new");
    EXPECT_LT(loop.main.now() - before, 6) << "it is left alone for a while";

    keyring->signal(SIGCONT);
    unlockKeyring();
    EXPECT_EQ(read(), "new");
    peer.reset();
    bus.kill();
    EXPECT_EQ(read(), "new") << "as it was last";
    bus.start();
    peer.emplace(loop);
    unlockKeyring();
    EXPECT_EQ(read(), "new");
}

}  // namespace
}  // namespace dorix
