#include "base/async/ManualExecutor.h"
#include "base/async/TaskScope.h"
#include "cloud/DorixAPI.h"
#include "fakes/FakeHttpClient.h"
#include "fakes/MemoryUserDefaults.h"
#include "fakes/Outcome.h"
#include "localdata/Language.h"
#include "platform/Keychain.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace dorix {
namespace {

using Session = DorixAPI::Session;
using testing::ElementsAre;

struct Dated {
    double at = 0;
    static Dated decode(const Json& json, const Decoder& decoder) { return {decoder.date(json, "at")}; }
    operator std::string() const { return wireTime(at); }  // for outcome()
};

class DorixAPITest : public testing::Test {
 protected:
    DorixAPITest() {
        installLanguage(defaults, {});
        api->onFailure = [this](const APIError& error) { failures.push_back(error.localizedDescription()); };
    }
    ~DorixAPITest() override { uninstallLanguage(); }

    template <typename T>
    auto start(Task<T> task) {
        auto handle = tasks.spawn(std::move(task));
        executor.runPosted();
        return handle;
    }
    void signIn(const std::string& token = "secret") {
        start(SessionToken(keychain).keep(token, api->baseURL()));
    }
    /// What becomes of a call that is answered so.
    std::string afterPost(int status, const std::string& body) {
        const auto task = start(api->post<Dated>("v1/x", Json::object(), Session::none, 20));
        http.last().respond(status, body);
        return outcome(executor, task);
    }

    ManualExecutor executor;
    MemoryUserDefaults defaults;
    FakeHttpClient http;
    MemoryKeychain keychain;
    std::unique_ptr<DorixAPI> api =
        std::make_unique<DorixAPI>(executor, http, keychain, "https://dorix.example/base/");
    std::vector<std::string> failures;
    std::vector<std::string> texts;
    TaskScope tasks{executor};
};

TEST_F(DorixAPITest, RequestsCarryTheTokenTheLanguageAndTheBody) {
    signIn();
    start(api->post<Dated>("v1/ai/write", {{"transcript", "a\xff"}}, Session::required, 20));
    const auto& post = http.last();
    EXPECT_EQ(post.request.method, HttpRequest::Method::post);
    EXPECT_EQ(post.request.url, "https://dorix.example/base/v1/ai/write");
    EXPECT_EQ(post.header("content-type"), "application/json");
    EXPECT_EQ(post.header("X-DORIX-Lang"), "es");
    EXPECT_EQ(post.header("authorization"), "Bearer secret");
    EXPECT_EQ(post.request.body, R"({"transcript":"a�"})");
    EXPECT_EQ(post.request.timeout, 20);

    defaults.set("appLanguage", "en");
    start(api->get<Dated>("v1/me"));
    const auto& get = http.last();
    EXPECT_EQ(get.request.method, HttpRequest::Method::get);
    EXPECT_EQ(get.header("X-DORIX-Lang"), "en");
    EXPECT_EQ(get.header("authorization"), "Bearer secret");
    EXPECT_EQ(get.header("content-type"), "");
    EXPECT_EQ(get.request.timeout, 15);

    start(api->stream("v1/ai/ask", Json::object()));
    EXPECT_EQ(http.last().request.timeout, 120);
    start(api->post<Dated>("v1/auth/verify", Json::object(), Session::none, 20));
    EXPECT_EQ(http.last().header("authorization"), "");
}

TEST_F(DorixAPITest, WithoutATokenNothingIsSent) {
    const auto post = start(api->post<Dated>("v1/x", Json::object(), Session::required, 20));
    EXPECT_EQ(outcome(executor, post), "Entra en tu cuenta de DORIX para seguir.");
    EXPECT_EQ(failures.size(), 1U);
    outcome(executor, start(api->get<Dated>("v1/x")));
    outcome(executor, start(api->stream("v1/x", Json::object())));
    EXPECT_EQ(failures.size(), 3U);
    EXPECT_TRUE(http.exchanges.empty());
}

TEST_F(DorixAPITest, ATokenGoesToNoServerButItsOwn) {
    const auto asksAfterStart = [this](const std::string& address) {
        DorixAPI started(executor, http, keychain, address);
        const auto before = http.exchanges.size();
        TaskScope calls(executor);
        calls.spawn([](DorixAPI& from) -> Task<void> { co_await from.get<Dated>("v1/me"); }(started));
        executor.runPosted();
        return http.exchanges.size() > before;
    };
    const std::string mine = "https://dorix.example";
    const std::string other = "https://other.example";
    start(SessionToken(keychain).keep("secret", mine));
    EXPECT_FALSE(asksAfterStart(other));
    EXPECT_TRUE(asksAfterStart(mine));
    // A crash while it was replaced: only the first of the two was written.
    start(keychain.save("session-server", other + " new"));
    EXPECT_FALSE(asksAfterStart(other));
    EXPECT_FALSE(asksAfterStart(mine));
    // Put there by hand.
    start(keychain.remove("session-server"));
    EXPECT_TRUE(asksAfterStart(mine));
    EXPECT_FALSE(asksAfterStart(other));
}

TEST_F(DorixAPITest, DatesAreReadInBothFormsAndNeverFail) {
    const auto read = [this](const std::string& at) { return afterPost(200, R"({"at":)" + at + "}"); };
    EXPECT_EQ(read(R"("2026-03-01T09:30:00.25+01:00")"), "2026-03-01T08:30:00.250Z");
    EXPECT_EQ(read(R"("2024-02-29T23:59:59Z")"), "2024-02-29T23:59:59.000Z");
    EXPECT_EQ(read(R"("1969-12-31T23:59:59.500-0030")"), "1970-01-01T00:29:59.500Z");
    const auto now = wireTime(executor.date());
    for (const auto* bad :
         {R"("")", R"("2026-03-01")", R"("2025-02-29T00:00:00Z")", R"("2026-03-01T24:00:00Z")",
          R"("2026-03-01T09:30:00")", R"("2026-03-01T09:30:00.Z")", R"("2026-03-01T09:30:00Z ")",
          R"("-026-03-01T09:30:00Z")", "12", "null"}) {
        EXPECT_EQ(read(bad), now) << bad;
    }
}

TEST_F(DorixAPITest, AFailedStatusIsTold) {
    EXPECT_EQ(afterPost(201, "{}"), wireTime(executor.date()));
    EXPECT_EQ(afterPost(500, R"({"message":"Mantenimiento."})"), "Mantenimiento.");
    for (const auto* body : {"", "<html>", "[]", R"({"message":3})"}) {
        EXPECT_EQ(afterPost(503, body), "El servidor de DORIX no ha respondido (503).");
    }
    EXPECT_EQ(afterPost(429, ""), "El servidor de DORIX no ha respondido (429).");
    EXPECT_EQ(afterPost(429, R"({"message":"Mañana más."})"), "Mañana más.");
    EXPECT_TRUE(failures.empty());
    EXPECT_EQ(afterPost(401, R"({"message":"dropped"})"), "Entra en tu cuenta de DORIX para seguir.");
    EXPECT_EQ(failures.size(), 1U);
    EXPECT_EQ(afterPost(200, R"({"token":"secret)"), "Respuesta no válida.");

    const auto task = start(api->post<Dated>("v1/x", Json::object(), Session::none, 20));
    http.last().fail();
    EXPECT_EQ(outcome(executor, task), "Sin conexión con DORIX. Revisa tu internet.");
    EXPECT_EQ(APIError::limited("a"), APIError::limited("a"));
    EXPECT_FALSE(APIError::limited("a") == APIError::server("a"));
}

TEST_F(DorixAPITest, ALateRefusalOfAnotherSessionEndsNone) {
    signIn("old");
    const auto task = start(api->get<Dated>("v1/me"));
    signIn("new");
    http.last().respond(401);
    EXPECT_EQ(outcome(executor, task), "Entra en tu cuenta de DORIX para seguir.");
    EXPECT_TRUE(failures.empty());
}

TEST_F(DorixAPITest, AStreamIsTheTextThatArrives) {
    signIn();
    const auto asked = [this] {
        return start(api->stream("v1/ai/ask", {{"question", "?"}},
                                 [this](std::string_view text) { texts.emplace_back(text); }));
    };
    auto task = asked();
    http.last().begin(200);
    http.last().send("data: {\"type\":\"text\",\"text\":\"Ho\"}\n\nda");
    executor.runPosted();
    EXPECT_THAT(texts, ElementsAre("Ho"));
    http.last().send("ta: {\"type\":\"text\",\"text\":\"la\"}");
    http.last().end();
    EXPECT_EQ(outcome(executor, task), "Hola");
    EXPECT_THAT(texts, ElementsAre("Ho", "Hola"));

    for (const auto& [status, words] : {std::pair(201, "El servidor de DORIX no ha respondido (201)."),
                                        {401, "Entra en tu cuenta de DORIX para seguir."}}) {
        task = asked();
        http.last().respond(status, "{}");
        EXPECT_EQ(outcome(executor, task), words);
    }
    EXPECT_EQ(failures.size(), 1U);
    task = asked();
    http.last().fail();
    EXPECT_EQ(outcome(executor, task), "Sin conexión con DORIX. Revisa tu internet.");
    task = asked();
    http.last().begin(200);
    executor.runPosted();
    http.last().fail(HttpError::Kind::broken);
    EXPECT_EQ(outcome(executor, task), "told by the test");
    task = asked();
    http.last().begin(200);
    executor.runPosted();
    task.cancel();
    EXPECT_EQ(outcome(executor, task), "cancelled");
    EXPECT_TRUE(http.last().isOver());
}

TEST_F(DorixAPITest, TheAddressIsTheUsersOrThePackagesOrThisComputer) {
    const auto base = [this](const std::optional<std::string>& address) {
        return DorixAPI(executor, http, keychain, address).baseURL();
    };
    EXPECT_EQ(base("https://a.example"), "https://a.example");
    for (const auto* none : {"", "a.example", "ftp://a.example", "https://", "https://a.example/?q"}) {
        EXPECT_EQ(base(none), "http://127.0.0.1:8787") << none;
    }
    EXPECT_EQ(base(std::nullopt), "http://127.0.0.1:8787");
    EXPECT_EQ(configuredServer(defaults, std::nullopt), std::nullopt);
    EXPECT_EQ(configuredServer(defaults, "https://shipped.example"), "https://shipped.example");
    defaults.set("DORIXServerURL", "https://mine.example");
    EXPECT_EQ(configuredServer(defaults, "https://shipped.example"), "https://mine.example");

    EXPECT_EQ(api->manualURL(), "https://dorix.example/base/manual");
    defaults.set("appLanguage", "en");
    EXPECT_EQ(api->manualURL(), "https://dorix.example/base/manual?lang=en");
}

}  // namespace
}  // namespace dorix
