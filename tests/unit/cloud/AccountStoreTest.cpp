#include "base/async/ManualExecutor.h"
#include "base/async/TaskScope.h"
#include "cloud/AccountStore.h"
#include "fakes/FakeHttpClient.h"
#include "fakes/MemoryUserDefaults.h"
#include "fakes/Outcome.h"
#include "localdata/Language.h"
#include "platform/Keychain.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace dorix {
namespace {

class AccountStoreTest : public testing::Test {
 protected:
    AccountStoreTest() { installLanguage(defaults, {}); }
    ~AccountStoreTest() override { uninstallLanguage(); }

    void start() {
        account.emplace(executor, api, keychain, defaults, "Mesa");
        account->onNeedsAttention = [this](const APIError& error) {
            attention = error.localizedDescription();
        };
        executor.runPosted();
    }
    auto run(Task<void> task) {
        auto handle = tasks.spawn(std::move(task));
        executor.runPosted();
        return handle;
    }
    void keep(const std::string& token) { run(SessionToken(keychain).keep(token, api.baseURL())); }
    std::optional<std::string> kept() {
        std::optional<std::string> token;
        run([](Keychain& from, auto& into) -> Task<void> { into = co_await from.read("session-token"); }(
                                               keychain, token));
        return token;
    }
    void answer(int status, const std::string& body) {
        http.last().respond(status, body);
        executor.runPosted();
    }
    std::string email() const { return account->profile.get() ? account->profile.get()->email : "none"; }

    ManualExecutor executor;
    MemoryUserDefaults defaults;
    FakeHttpClient http;
    MemoryKeychain keychain;
    DorixAPI api{executor, http, keychain, std::nullopt};
    std::optional<AccountStore> account;
    std::string attention;
    TaskScope tasks{executor};
};

TEST_F(AccountStoreTest, ACodeBecomesASessionThatLasts) {
    start();
    EXPECT_TRUE(account->known().isDone());
    EXPECT_FALSE(account->loggedIn.get());
    const auto code = run(account->requestCode("ana@example.es"));
    EXPECT_EQ(http.last().request.url, "http://127.0.0.1:8787/v1/auth/request-code");
    EXPECT_EQ(http.last().request.body, R"({"email":"ana@example.es","lang":"es"})");
    answer(200, R"({"ok":true})");
    EXPECT_EQ(outcome(executor, code), "done");

    auto verified = run(account->verify("ana@example.es", "000000"));
    answer(400, R"({"message":"El código no es válido."})");
    EXPECT_EQ(outcome(executor, verified), "El código no es válido.");
    EXPECT_FALSE(account->loggedIn.get());
    EXPECT_EQ(attention, "");

    // The window is closed before the answer comes: the code is used up, and the session holds.
    std::optional<TaskScope> window(executor);
    window->spawn(account->verify("ana@example.es", "123456"));
    EXPECT_EQ(http.last().request.body, R"({"code":"123456","device":"Mesa","email":"ana@example.es"})");
    window.reset();
    answer(200, R"({"token":"secret","profile":{"email":"ana@example.es","plan":"x"}})");
    EXPECT_TRUE(account->loggedIn.get());
    EXPECT_EQ(email(), "ana@example.es");
    EXPECT_EQ(kept(), "secret");

    start();
    EXPECT_TRUE(account->loggedIn.get());
    EXPECT_EQ(email(), "ana@example.es");
}

TEST_F(AccountStoreTest, ARefreshKeepsTheSessionUnlessTheServiceDoesNotKnowIt) {
    keep("secret");
    defaults.set("profile", "unreadable");
    start();
    EXPECT_TRUE(account->loggedIn.get());
    EXPECT_EQ(email(), "none");
    EXPECT_EQ(defaults.string("profile"), "unreadable");
    account->startRefreshing();
    answer(200, R"({"email":"ana@example.es"})");
    EXPECT_EQ(email(), "ana@example.es");
    EXPECT_EQ(defaults.value("profile"), Json({{"email", "ana@example.es"}}));

    for (const int failure : {0, 500, 200}) {
        executor.advanceBy(1800);
        failure == 0 ? http.last().fail() : http.last().respond(failure, "garbage");
        executor.runPosted();
        EXPECT_TRUE(account->loggedIn.get());
        EXPECT_EQ(email(), "ana@example.es");
    }
    EXPECT_EQ(attention, "");
    executor.advanceBy(1800);
    EXPECT_EQ(http.exchanges.size(), 5U);
    answer(401, "");
    EXPECT_FALSE(account->loggedIn.get());
    EXPECT_EQ(email(), "none");
    EXPECT_EQ(kept(), std::nullopt);
    EXPECT_EQ(defaults.value("profile"), std::nullopt);
    EXPECT_EQ(attention, "Entra en tu cuenta de DORIX para seguir.");

    // Who works alone is not reminded of an account every half hour.
    attention.clear();
    executor.advanceBy(1800);
    EXPECT_EQ(http.exchanges.size(), 5U);
    EXPECT_EQ(attention, "");
    keep("unlocked");
    executor.advanceBy(1800);
    EXPECT_TRUE(account->loggedIn.get());
    EXPECT_EQ(http.exchanges.size(), 6U);
    run(keychain.remove("session-token"));
    executor.advanceBy(1800);
    EXPECT_EQ(http.exchanges.size(), 6U);
    EXPECT_FALSE(account->loggedIn.get());
    EXPECT_EQ(attention, "Entra en tu cuenta de DORIX para seguir.");
}

TEST_F(AccountStoreTest, SigningOutEndsTheSessionHereInAnyCase) {
    for (const int status : {200, 500, 0}) {
        keep("secret");
        start();
        auto ended = run(account->logout());
        EXPECT_TRUE(account->loggedIn.get());
        EXPECT_EQ(http.last().request.body, "{}");
        status == 0 ? http.last().fail() : http.last().respond(status, R"({"ok":true})");
        EXPECT_EQ(outcome(executor, ended), "done");
        EXPECT_FALSE(account->loggedIn.get());
        EXPECT_EQ(kept(), std::nullopt);
        EXPECT_EQ(attention, "");
    }
}

TEST_F(AccountStoreTest, WhatComesLateBelongsToTheSessionThatWas) {
    keep("secret");
    start();
    run(account->refresh());
    auto& late = http.last();
    run(account->logout());
    answer(200, R"({"ok":true})");
    late.respond(200, R"({"email":"ana@example.es"})");
    executor.runPosted();
    EXPECT_EQ(email(), "none");
    EXPECT_EQ(defaults.value("profile"), std::nullopt);
}

}  // namespace
}  // namespace dorix
