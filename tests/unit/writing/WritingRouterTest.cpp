#include "base/Error.h"
#include "fakes/writing/WritingBench.h"
#include "localdata/Language.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <exception>
#include <string>
#include <tuple>
#include <variant>
#include <vector>

namespace dorix {
namespace {

using testing::ElementsAre;
using Availability = SystemLanguageModel::Availability;

constexpr const char* cloud = "Nube de DORIX";
constexpr const char* local = "Apple Intelligence (en tu Mac)";
constexpr const char* basic = "Básico";

std::string written(const std::string& text, const std::string& title = "", const char* accion = "escribir") {
    return Json{{"accion", accion}, {"titulo", title}, {"texto", text}}.dump();
}

class WritingRouterTest : public testing::Test {
 protected:
    WritingRouterTest() {
        installLanguage(bench.defaults, {});
        bench.model.answer = GeneratedContent{{"titulo", " "}, {"texto", " Enviamos el informe mañana. "}};
    }
    ~WritingRouterTest() override { uninstallLanguage(); }

    static PolishRequest dictated(std::string transcript = "enviamos el informe mañana") {
        return {.transcript = std::move(transcript), .appName = "Mail", .tone = Tone::profesional};
    }
    void answers(int status, std::string body) {
        bench.service = [=](auto& exchange) { exchange.respond(status, body); };
    }
    /// What comes of a task that takes no longer than `seconds`.
    template <typename T>
    T result(Task<T> task, double seconds = 60) {
        std::optional<T> value;
        testing::internal::CaptureStderr();
        bench.run([](Task<T> from, auto& into) -> Task<void> { into = co_await std::move(from); }(
                                                   std::move(task), value),
                  seconds);
        log = testing::internal::GetCapturedStderr();
        EXPECT_TRUE(value);
        return value ? *value : T();
    }
    PolishResult polish(PolishRequest request) { return result(bench.router.polish(std::move(request))); }
    bool asks(PolishRequest request) {
        return std::holds_alternative<Ask>(result(bench.router.writeOrAsk(std::move(request))));
    }
    Json sent() { return Json::parse(bench.http.last().request.body); }

    WritingBench bench;
    std::string log;
};

TEST_F(WritingRouterTest, TheBestEngineWritesAndEachThatFailsIsTold) {
    bench.signIn();
    answers(200, written("Enviamos el informe mañana.", "Informe"));
    EXPECT_EQ(polish(dictated()), (PolishResult{"Informe", "Enviamos el informe mañana.", cloud}));
    EXPECT_EQ(log, "");

    answers(500, "");
    EXPECT_EQ(polish(dictated()),
              (PolishResult{"Enviamos el informe mañana", "Enviamos el informe mañana.", local}));
    EXPECT_EQ(log, "DORIX: Nube de DORIX falló: El servidor de DORIX no ha respondido (500).\n");

    bench.service = [](auto& exchange) { exchange.fail(); };
    bench.model.answer->at("texto") = "Algo muy distinto " + std::string(100, 'x');
    EXPECT_EQ(polish(dictated()).engine, basic);
    EXPECT_EQ(log,
              "DORIX: Nube de DORIX falló: Sin conexión con DORIX. Revisa tu internet.\n"
              "DORIX: Apple Intelligence (en tu Mac) falló: El modelo local se alejó de lo dictado: «Algo "
              "muy distinto " +
                  std::string(62, 'x') + "»\n");

    bench.model.state = Availability::modelNotReady;
    EXPECT_EQ(polish(dictated()).engine, basic);
    EXPECT_EQ(log, "DORIX: Nube de DORIX falló: Sin conexión con DORIX. Revisa tu internet.\n");

    bench.settings.engine.set(WritingEngine::local);
    const auto calls = bench.http.exchanges.size();
    EXPECT_EQ(polish(dictated()).text, "Enviamos el informe mañana.");
    EXPECT_EQ(bench.http.exchanges.size(), calls);
    EXPECT_EQ(log, "");
}

TEST_F(WritingRouterTest, TwoWordsAreNotWorthACall) {
    bench.signIn();
    EXPECT_EQ(polish(dictated("  de  acuerdo ")), (PolishResult{"De acuerdo", "De acuerdo", basic}));
    EXPECT_TRUE(bench.http.exchanges.empty());
    EXPECT_TRUE(bench.model.conversations.empty());
    polish(dictated("uno dos tres"));
    EXPECT_EQ(bench.http.exchanges.size(), 1U);
}

TEST_F(WritingRouterTest, TheServiceIsToldWhatItMayKnow) {
    bench.signIn();
    answers(200, written("Enviamos el informe"));
    polish(dictated());
    EXPECT_EQ(sent(), Json::parse(R"({"transcript":"enviamos el informe mañana","appName":"Mail",
                                      "tone":"profesional","allowAsk":false})"));
    EXPECT_EQ(bench.http.last().request.url, "https://dorix.example/v1/ai/write");
    EXPECT_EQ(bench.http.last().request.timeout, 20);
    EXPECT_EQ(bench.http.last().header("authorization"), "Bearer token");

    auto request = dictated();
    request.windowTitle = std::string(501, 't');
    request.signatureName = "Teo";
    request.screenshot = std::string("\xff\xd8\x00\x01", 4);
    request.editableFocus = true;
    request.styleExamples = {std::string(801, 'a'), "b", "c", "d"};
    polish(request);
    EXPECT_EQ(sent()["windowTitle"], std::string(500, 't'));
    EXPECT_EQ(sent()["signatureName"], "Teo");
    EXPECT_EQ(sent()["screenshot"], "/9gAAQ==");
    EXPECT_EQ(sent()["editableFocus"], true);
    EXPECT_EQ(sent()["style"], (Json{{"notes", ""}, {"examples", {std::string(800, 'a'), "b", "c"}}}));
}

TEST_F(WritingRouterTest, ATextThatStraysIsNotTyped) {
    bench.signIn();
    bench.settings.engine.set(WritingEngine::automatic);
    bench.model.state = Availability::deviceNotEligible;
    // One of four words that count was dictated.
    answers(200, written("Enviamos dinero falso siempre"));
    EXPECT_EQ(polish(dictated()).engine, basic);
    EXPECT_EQ(log, "DORIX: Nube de DORIX falló: La redacción se alejó de lo dictado.\n");
    auto seen = dictated();
    seen.screenshot = "jpeg";
    EXPECT_EQ(polish(seen).engine, cloud);
    for (const auto& body :
         {written(" \n"), std::string("no JSON"), std::string(R"({"texto":"enviamos"})")}) {
        answers(200, body);
        EXPECT_EQ(polish(dictated()).engine, basic);
    }
    EXPECT_EQ(log, "DORIX: Nube de DORIX falló: Respuesta no válida.\n");
    // It was not allowed to ask: what it says of it is not looked at.
    answers(200, written(" Enviamos el informe ", "", "preguntar"));
    EXPECT_EQ(polish(dictated()), (PolishResult{"Enviamos el informe", "Enviamos el informe", cloud}));
}

TEST_F(WritingRouterTest, NoEngineWorksATerminal) {
    const std::string odd = std::string("\x1b[201~Enviamos") + '\0' + " el\tinforme\r\n\x7fmañana\u009b0m";
    const std::string plain = "[201~Enviamos el\tinforme\nmañana0m";
    bench.signIn();
    answers(200, written(odd, odd));
    EXPECT_EQ(polish(dictated()), (PolishResult{plain, plain, cloud}));
    answers(200, written("\x1b\r"));
    bench.model.answer = GeneratedContent{{"titulo", odd}, {"texto", odd}};
    EXPECT_EQ(polish(dictated()), (PolishResult{plain, plain, local})) << "controls are no text";
}

TEST_F(WritingRouterTest, TheLogHasOneLanguageWhateverThatOfTheApp) {
    bench.defaults.set("appLanguage", "en");
    bench.signIn();
    bench.model.duration = 21;
    const std::string refusal = R"({"message":"Down for a while."})";
    for (const auto& [status, body, words] :
         {std::tuple(200, std::string("no JSON"), "Respuesta no válida."),
          std::tuple(200, written("otra cosa"), "La redacción se alejó de lo dictado."),
          std::tuple(503, std::string(), "El servidor de DORIX no ha respondido (503)."),
          std::tuple(503, refusal, "Down for a while.")}) {
        answers(status, body);
        polish(dictated());
        EXPECT_EQ(log,
                  std::string("DORIX: Nube de DORIX falló: ") + words +
                      "\nDORIX: Apple Intelligence (en tu Mac) falló: El modelo local no ha respondido a "
                      "tiempo.\n");
    }
}

TEST_F(WritingRouterTest, AnEndedSessionCostsNoWords) {
    bench.signIn();
    std::vector<std::string> told;
    bench.account.onNeedsAttention = [&](const auto& error) { told.push_back(error.localizedDescription()); };
    answers(401, "");
    EXPECT_EQ(polish(dictated()).engine, local);
    EXPECT_FALSE(bench.account.loggedIn.get());
    EXPECT_EQ(told.size(), 1U);
    EXPECT_FALSE(bench.router.cloudEnabled());
    polish(dictated());
    EXPECT_EQ(bench.http.exchanges.size(), 1U);
}

TEST_F(WritingRouterTest, TheServiceTellsAQuestionFromAText) {
    bench.signIn();
    answers(200, written("", "", "preguntar"));
    EXPECT_TRUE(asks(dictated()));
    EXPECT_EQ(sent()["allowAsk"], true);
    answers(200, written("Enviamos el informe aquí", "", "otra"));
    EXPECT_FALSE(asks(dictated("enviamos el informe aqui")));
}

TEST_F(WritingRouterTest, WithoutTheServiceQuestionsAreKnownByRule) {
    auto nowhere = dictated();
    nowhere.editableFocus = false;
    bench.signIn();
    EXPECT_TRUE(asks(nowhere)) << "it does not answer";
    EXPECT_EQ(log, "");
    EXPECT_EQ(bench.http.exchanges.size(), 1U);
    EXPECT_FALSE(asks(dictated()));
    EXPECT_EQ(bench.http.exchanges.size(), 3U);

    bench.settings.engine.set(WritingEngine::local);
    EXPECT_TRUE(asks(nowhere));
    EXPECT_TRUE(asks(dictated("mira lo que pone aqui")));
    EXPECT_FALSE(asks(dictated()));
    EXPECT_EQ(bench.http.exchanges.size(), 3U);
}

TEST_F(WritingRouterTest, AModelThatWasMadeReadyServesOnce) {
    bench.router.prewarm(dictated(""));
    const auto result = polish(dictated());
    EXPECT_EQ(result.engine, local);
    ASSERT_EQ(bench.model.conversations.size(), 1U);
    const auto& first = bench.model.conversations[0];
    EXPECT_TRUE(first.isPrewarmed);
    EXPECT_EQ(first.instructions, rewriteInstructions(dictated()));
    EXPECT_THAT(first.prompts, ElementsAre("Transcripción del dictado:\n<dictado>\nenviamos el informe "
                                           "mañana\n</dictado>"));
    EXPECT_EQ(first.options.temperature, 0.2);
    ASSERT_EQ(first.schema.fields.size(), 2U);
    EXPECT_EQ(first.schema.fields[0].name, "titulo");
    bench.model.host = "gpu.example.org";
    EXPECT_EQ(polish(dictated()).engine, "servidor gpu.example.org");
    bench.model.host.reset();
    EXPECT_EQ(bench.model.conversations.size(), 2U);

    bench.router.prewarm(dictated(""));
    auto elsewhere = dictated();
    elsewhere.appName = "Pages";
    polish(elsewhere);
    EXPECT_EQ(bench.model.conversations.size(), 4U);
    EXPECT_TRUE(bench.model.conversations[2].prompts.empty());

    bench.router.prewarm(dictated(""));
    bench.model.conversations[4].isResponding = true;
    polish(dictated());
    EXPECT_TRUE(bench.model.conversations[4].prompts.empty());

    bench.model.state = Availability::modelNotReady;
    bench.router.prewarm(dictated(""));
    EXPECT_EQ(bench.model.conversations.size(), 6U);
}

TEST_F(WritingRouterTest, NobodyWaitsForASlowModelLongerThanForTheService) {
    bench.model.duration = 20.1;
    EXPECT_EQ(result(bench.router.polish(dictated()), 20).engine, basic);
    EXPECT_EQ(log,
              "DORIX: Apple Intelligence (en tu Mac) falló: El modelo local no ha respondido a tiempo.\n");
    EXPECT_TRUE(bench.model.conversations.back().isOver);
    bench.model.duration = 19.9;
    EXPECT_EQ(result(bench.router.polish(dictated()), 20).engine, local);
}

TEST_F(WritingRouterTest, WhoIsToldToStopHasTheTextAtOnce) {
    bench.signIn();
    bench.service = [](auto&) {};
    bench.model.duration = 1;
    testing::internal::CaptureStderr();
    const auto task = bench.run(bench.router.polish(dictated()), 1);
    EXPECT_FALSE(task.isDone());
    task.cancel();
    bench.executor.runPosted();
    testing::internal::GetCapturedStderr();
    EXPECT_TRUE(task.isDone());
    EXPECT_TRUE(bench.http.last().isOver()) << "the call has ended";
    EXPECT_EQ(result([](auto from) -> Task<PolishResult> { co_return co_await from; }(task)).engine, basic);
}

TEST_F(WritingRouterTest, TheWayToTheServiceIsOpenedOnlyWhereItWrites) {
    bench.router.connect();
    bench.signIn();
    bench.settings.engine.set(WritingEngine::local);
    bench.router.connect();
    EXPECT_THAT(bench.http.connections, ElementsAre());
    bench.settings.engine.set(WritingEngine::automatic);
    bench.router.connect();
    EXPECT_THAT(bench.http.connections, ElementsAre("https://dorix.example"));
    EXPECT_TRUE(bench.http.exchanges.empty());
}

TEST_F(WritingRouterTest, WhatKeepsAModelFromRunningIsTold) {
    EXPECT_EQ(unavailableReason(Availability::available), std::nullopt);
    EXPECT_EQ(unavailableReason(Availability::deviceNotEligible),
              "Este Mac no es compatible con Apple Intelligence.");
    EXPECT_EQ(unavailableReason(Availability::otherwise), "Apple Intelligence no está disponible.");
}

}  // namespace
}  // namespace dorix
