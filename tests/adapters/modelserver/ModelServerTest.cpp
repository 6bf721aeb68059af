#include "adapters/harness/EventLoop.h"
#include "adapters/harness/OtherProgram.h"
#include "adapters/harness/WebServer.h"
#include "base/Json.h"
#include "base/async/ManualExecutor.h"
#include "fakes/FakeDesktop.h"
#include "fakes/FakeHttpClient.h"
#include "fakes/MemoryUserDefaults.h"
#include "linux/curl/CurlHttpClient.h"
#include "localdata/Language.h"
#include "localdata/SettingsStore.h"
#include "memory/embedding/ServerEmbedder.h"
#include "modelserver/ModelServer.h"
#include "platform/Keychain.h"

#include <gtest/gtest.h>

#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace dorix {
namespace {

using Availability = SystemLanguageModel::Availability;

const GenerationSchema schema{"Redaccion", {{"titulo", "corto"}, {"texto", "entero"}}};
const std::vector<std::string> serverCommand{DORIX_MODEL_SERVER};

/// What a model of this computer is by the words of its servers, good and bad.
class ModelServerTest : public testing::Test {
 protected:
    ModelServerTest() {
        installLanguage(defaults, {});
        model = std::make_unique<ModelServer>(loop.main, settings, http, keychain,
                                              [this](int port) { return port == trustedPort; });
    }
    ~ModelServerTest() override { uninstallLanguage(); }

    ModelServer::State stateOf(const std::string& how) {
        settings.modelServer.set(server.url(how));
        model->look();
        EXPECT_TRUE(loop.runUntil([&] { return !model->isLooking(); }));
        return model->state().get();
    }
    /// "TITLE: TEXT", or why there is none.
    std::string written(const std::string& how, std::string prompt = "hola") {
        stateOf(how);
        const auto session = model->makeSession("Reescribe.");
        std::string outcome;
        TaskScope tasks(loop.main);
        const auto task = tasks.spawn(write(*session, std::move(prompt), outcome));
        EXPECT_TRUE(loop.runUntil([&] { return task.isDone(); }));
        return outcome;
    }
    static Task<void> write(LanguageModelSession& session, std::string prompt, std::string& outcome) {
        try {
            auto content = co_await session.respond(std::move(prompt), schema, {.temperature = 0.2});
            outcome = content["titulo"] + ": " + content["texto"];
        } catch (const LanguageModelError& error) {
            outcome = error.localizedDescription();
        }
    }
    /// The plain text, or why there is none.
    std::string told(const std::string& how, CutText cut) {
        stateOf(how);
        const auto session = model->makeSession("Responde.");
        std::string outcome;
        TaskScope tasks(loop.main);
        const auto task = tasks.spawn([](auto& from, CutText cut, std::string& into) -> Task<void> {
            try {
                into = co_await from.respond("hola", cut);
            } catch (const LanguageModelError& error) {
                into = error.localizedDescription();
            }
        }(*session, cut, outcome));
        EXPECT_TRUE(loop.runUntil([&] { return task.isDone(); }));
        return outcome;
    }
    Json seen() {
        TaskScope tasks(loop.main);
        std::string body;
        const auto task = tasks.spawn([](HttpClient& from, std::string url, std::string& into) -> Task<void> {
            into = (co_await from.send({.url = std::move(url)})).body;
        }(http, server.url("seen"), body));
        EXPECT_TRUE(loop.runUntil([&] { return task.isDone(); }));
        return Json::parse(body);
    }

    EventLoop loop;
    WebServer server{serverCommand};
    CurlHttpClient http;
    MemoryUserDefaults defaults;
    FakeLoginItem loginItem;
    SettingsStore settings{defaults, loginItem, {}};
    MemoryKeychain keychain;
    int trustedPort = 0;
    std::unique_ptr<ModelServer> model;
};

TEST_F(ModelServerTest, WhatServersAnswerIsReadHoweverTheyDo) {
    const std::string good = "Informe: Enviamos el {informe} \"mañana\".";
    for (const auto* how : {"good", "fenced", "thinking", "pieces", "refusing"})
        EXPECT_EQ(written(how), good) << how;
    EXPECT_EQ(written("refusing"), good);
    const auto chats = seen().at("chats");
    ASSERT_EQ(chats.size(), 7U) << "one server was asked without the schema as well, but only once";
    const auto& asked = chats[0];
    EXPECT_EQ(asked.at("path"), "/good/v1/chat/completions");
    EXPECT_EQ(asked.at("model"), "small");
    EXPECT_EQ(asked.at("temperature"), 0.2);
    EXPECT_FALSE(asked.contains("max_tokens"));
    EXPECT_EQ(asked.at("messages")[0].at("content"), "Reescribe.");
    const auto prompt = asked.at("messages")[1].at("content").get<std::string>();
    EXPECT_TRUE(prompt.starts_with("hola\n\n"));
    EXPECT_LT(prompt.find("titulo"), prompt.find("texto")) << "in the order of the fields";
    const auto& form = asked.at("response_format").at("json_schema").at("schema");
    EXPECT_EQ(form.at("required"), (Json{"titulo", "texto"}));
    EXPECT_EQ(form.at("properties").at("texto").at("description"), "entero");
}

TEST_F(ModelServerTest, WhatIsNoAnswerIsNoText) {
    const std::string odd = "El modelo local no ha respondido lo que se le pidió.";
    for (const auto* how : {"prose", "half", "wrong", "dying", "endless"})
        EXPECT_EQ(written(how), odd) << how;
    EXPECT_EQ(seen().at("chats").size(), 5U) << "none is tried again";
}

TEST_F(ModelServerTest, PlainTextHasNoThoughtsAndIsWholeWhereItMustBe) {
    const std::string odd = "El modelo local no ha respondido lo que se le pidió.";
    EXPECT_EQ(told("prose", CutText::fails), "Enviamos el informe mañana.");
    EXPECT_EQ(told("musing", CutText::fails), "Enviado. </think>");
    EXPECT_EQ(told("lost", CutText::isTaken), odd);
    EXPECT_EQ(told("limited", CutText::isTaken), "Enviamos el");
    EXPECT_EQ(told("limited", CutText::fails), odd);
}

TEST_F(ModelServerTest, AServerThatIsSilentIsLeftWithWhoWaitedForIt) {
    stateOf("silent");
    {
        const auto session = model->makeSession("Reescribe.");
        session->prewarm();
        std::string outcome;
        TaskScope tasks(loop.main);
        tasks.spawn(write(*session, "hola", outcome));
        EXPECT_TRUE(session->isResponding());
        EXPECT_TRUE(loop.runUntil([&] { return seen().at("chats").size() == 2; }));
        const auto chats = seen().at("chats");
        EXPECT_NE(chats[0].contains("max_tokens"), chats[1].contains("max_tokens"))
            << "one is to have the model loaded";
        EXPECT_EQ(outcome, "");
    }
    EXPECT_TRUE(loop.runUntil([&] { return seen().at("left") == 2; }));
}

TEST_F(ModelServerTest, WhyAModelCannotRunIsKnown) {
    EXPECT_EQ(model->availability(), Availability::deviceNotEligible);
    EXPECT_EQ(stateOf("good"),
              (ModelServer::State{Availability::available, server.url("good"), "small", ""}));
    EXPECT_EQ(stateOf("good/v1/").availability, Availability::available);
    EXPECT_EQ(stateOf("tagged").model, "small:latest") << "the other one does not write";
    EXPECT_EQ(stateOf("empty").availability, Availability::appleIntelligenceNotEnabled);
    EXPECT_EQ(stateOf("loading").availability, Availability::modelNotReady);
    EXPECT_EQ(stateOf("website").availability, Availability::otherwise);
    EXPECT_EQ(stateOf("keyed").availability, Availability::otherwise);
    TaskScope(loop.main).spawn(keychain.save(ModelServer::keyAccount, "secret"));
    EXPECT_EQ(stateOf("keyed").availability, Availability::available);
    settings.modelServerModel.set("small");
    EXPECT_EQ(stateOf("tagged").model, "small:latest");
    settings.modelServerModel.set("large");
    EXPECT_EQ(stateOf("tagged"), (ModelServer::State{Availability::appleIntelligenceNotEnabled,
                                                     server.url("tagged"), "large", "nomic-embed-text"}));
}

TEST_F(ModelServerTest, VectorsComeFromAModelThatIsMadeForThem) {
    ServerEmbedder embedder(loop.main, *model);
    stateOf("good");
    EXPECT_FALSE(loop.result(embedder.prepare())) << "it only writes";
    stateOf("vectors");
    ASSERT_TRUE(loop.result(embedder.prepare()));
    const auto identity = embedder.identity();
    EXPECT_EQ(loop.result(embedder.embed("hola", Embedder::Pace::awaited)),
              (std::vector<float>{0.6F, 0, 0.8F}));
    const auto asked = seen().at("chats").back();
    EXPECT_EQ(asked.at("path"), "/vectors/v1/embeddings");
    EXPECT_EQ(asked.at("model"), "nomic-embed-text");
    EXPECT_EQ(asked.at("input"), "hola");
    EXPECT_EQ(loop.result(embedder.embed("", Embedder::Pace::awaited)), std::nullopt);

    stateOf("words");
    EXPECT_FALSE(loop.result(embedder.prepare()));
    EXPECT_EQ(embedder.identity(), "");
    stateOf("growing");
    ASSERT_TRUE(loop.result(embedder.prepare()));
    EXPECT_NE(embedder.identity(), identity);
    EXPECT_EQ(loop.result(embedder.embed("hola", Embedder::Pace::awaited)), std::nullopt)
        << "of another length";
    EXPECT_EQ(embedder.identity(), "");
    settings.modelServerEmbedder.set("small");
    stateOf("vectors");
    EXPECT_TRUE(loop.result(embedder.prepare()));
    settings.modelServer.set("http://models.invalid");
    EXPECT_EQ(model->embedder(), "") << "documents stay on this computer";
}

TEST_F(ModelServerTest, NothingLeavesThisComputerBeforeTheUserWasTold) {
    EXPECT_EQ(model->notice(), std::nullopt);
    settings.modelServer.set("http://models.invalid");
    EXPECT_EQ(model->notice(), "models.invalid");
    model->noticeShown();
    EXPECT_EQ(model->notice(), std::nullopt);
    settings.modelServer.set("http://others.invalid/v1");
    EXPECT_EQ(model->notice(), "others.invalid");
    settings.modelServer.set(server.url("good"));
    EXPECT_EQ(model->notice(), std::nullopt);
}

/// The search on this computer, in virtual time.
TEST(ModelServerSearchTest, OnlyWhatTheUserOrTheSystemRunsHereIsAsked) {
    ManualExecutor executor;
    MemoryUserDefaults defaults;
    FakeLoginItem loginItem;
    SettingsStore settings(defaults, loginItem, {});
    FakeHttpClient http;
    MemoryKeychain keychain;
    int trusted = 0;
    ModelServer model(executor, settings, http, keychain, [&](int port) { return port >= trusted; });
    const auto answers = [&](int status, const std::string& body) {
        http.last().respond(status, body);
        executor.runPosted();
    };
    model.look();
    executor.advanceBy(0);
    EXPECT_EQ(http.last().request.url, "http://127.0.0.1:11434/v1/models");
    http.last().fail();
    executor.runPosted();
    EXPECT_EQ(http.last().request.url, "http://127.0.0.1:1234/v1/models");
    answers(503, "");
    EXPECT_EQ(http.last().request.url, "http://127.0.0.1:8080/v1/models");
    answers(404, "somebody else");
    while (model.isLooking()) answers(200, R"({"data":[]})");
    EXPECT_EQ(http.exchanges.size(), 8U);
    EXPECT_EQ(model.state().get(),
              (ModelServer::State{Availability::modelNotReady, "http://127.0.0.1:1234", "", ""}))
        << "of all that cannot write that is told which soon can";

    trusted = 11434;  // all others are another user's
    executor.advanceBy(4.9);
    model.availability();
    EXPECT_FALSE(model.isLooking());
    executor.advanceBy(0.1);
    EXPECT_EQ(model.availability(), Availability::modelNotReady) << "nobody waits for the look";
    EXPECT_TRUE(model.isLooking());
    executor.advanceBy(0);
    answers(200, R"({"data":[{"id":"a"},{"id":"b"}]})");
    EXPECT_EQ(http.exchanges.size(), 9U);
    EXPECT_EQ(model.availability(), Availability::available);
    EXPECT_EQ(model.state().get().model, "a");
    executor.advanceBy(59.9);
    model.availability();
    EXPECT_EQ(http.exchanges.size(), 9U);
    executor.advanceBy(0.1);
    model.availability();
    executor.advanceBy(0);
    EXPECT_EQ(http.exchanges.size(), 10U);
    http.last().fail();
    executor.runPosted();
    EXPECT_EQ(model.availability(), Availability::deviceNotEligible);
    EXPECT_FALSE(executor.hasTimers()) << "at rest nothing is asked of anybody";
}

TEST(ModelServerSearchTest, WhatWasLookedAtBeforeIsGivenNothingOnceItIsAnothers) {
    ManualExecutor executor;
    MemoryUserDefaults defaults;
    FakeLoginItem loginItem;
    SettingsStore settings(defaults, loginItem, {});
    FakeHttpClient http;
    MemoryKeychain keychain;
    bool isTrusted = true;
    ModelServer model(executor, settings, http, keychain, [&](int) { return isTrusted; });
    const auto asked = [&] {
        const auto before = http.exchanges.size();
        const auto session = model.makeSession("Reescribe.");
        session->prewarm();
        return http.exchanges.size() == before ? "nobody" : http.last().request.url;
    };
    const auto answered = [&] {
        executor.advanceBy(0);
        http.last().respond(200, R"({"data":[{"id":"a"}]})");
        executor.runPosted();
    };
    model.look();
    answered();
    EXPECT_EQ(asked(), "http://127.0.0.1:11434/v1/chat/completions");
    isTrusted = false;  // another user's program has the port
    EXPECT_EQ(asked(), "nobody");
    executor.advanceBy(0);
    EXPECT_EQ(model.availability(), Availability::deviceNotEligible);

    settings.modelServer.set("https://first.example");
    answered();
    EXPECT_EQ(asked(), "https://first.example/v1/chat/completions");
    settings.modelServer.set("https://second.example");
    EXPECT_EQ(asked(), "nobody");
    answered();
    EXPECT_EQ(asked(), "https://second.example/v1/chat/completions");
}

}  // namespace
}  // namespace dorix
