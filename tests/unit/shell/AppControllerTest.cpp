#include "base/Json.h"
#include "fakes/FakePlatform.h"
#include "fakes/overlay/RecordingWindow.h"
#include "localdata/Language.h"
#include "platform/KeyCodes.h"
#include "shell/AppController.h"
#include "shell/Notices.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace dorix {
namespace {

using ::testing::ElementsAre;

/// The whole program above the ports.
class AppControllerTest : public testing::Test, protected FakePlatform {
 protected:
    AppControllerTest() {
        installLanguage(defaults, {});
        recognition.locales = {{"es-ES", "es-ES"}};
    }
    ~AppControllerTest() override { uninstallLanguage(); }

    void launch() {
        testing::internal::CaptureStderr();
        app = std::make_unique<AppController>(platform());
        app->applicationDidFinishLaunching();
        executor.runPosted();
    }
    /// What the log has since the last look.
    std::string log() {
        const auto text = testing::internal::GetCapturedStderr();
        testing::internal::CaptureStderr();
        return text;
    }
    void TearDown() override { testing::internal::GetCapturedStderr(); }

    void press() { keyboard.flags(keycode::rightOption, modifier::option | modifier::deviceRightOption); }
    void release() { keyboard.flags(keycode::rightOption, 0); }
    void say(std::string words) {
        recognition.current().sayFinal(std::move(words));
        executor.runPosted();
    }

    static std::vector<std::string> eventsOf(const std::filesystem::path& trace) {
        std::ifstream lines(trace);
        std::vector<std::string> events;
        for (std::string line; std::getline(lines, line);) {
            auto event = Json::parse(line);
            EXPECT_GT(event.at("at"), 0);
            event.erase("at");
            events.push_back(event.dump());
        }
        return events;
    }

    std::unique_ptr<AppController> app;
};

TEST_F(AppControllerTest, AHeldKeyBecomesTextAtTheCursorInTheHistoryAndInTheTrace) {
    launch();
    EXPECT_EQ(log(), "DORIX: listo\n");
    const auto file = folder.path() / "trace.jsonl";
    app->traceTo(file);
    press();
    EXPECT_TRUE(audio.isRunning()) << "the microphone opens with the key, before the hold is sure";
    executor.advanceBy(0.3);
    say("nos vemos mañana");
    release();
    executor.advanceBy(0.45);
    EXPECT_FALSE(audio.isRunning());
    executor.advanceBy(5);
    EXPECT_THAT(pasteboard.log, testing::Contains("setString Nos vemos mañana."));
    EXPECT_THAT(
        eventsOf(file),
        ElementsAre(
            R"({"hud":"listening","text":""})", R"({"busy":true})", R"({"hud":"processing","text":""})",
            R"({"route":"plain"})",
            R"_({"hud":"info","text":"No hay dónde escribir · el texto está en el portapapeles (⌘V)"})_",
            R"({"busy":false})", R"({"hud":"hidden","text":""})"));
    using std::filesystem::perms;
    EXPECT_EQ(std::filesystem::status(file).permissions(), perms::owner_read | perms::owner_write);
    app->traceTo(folder.path() / "nowhere" / "trace.jsonl");
    EXPECT_THAT(log(), testing::HasSubstr("DORIX: no se pudo abrir la traza "));

    app.reset();
    const HistoryStore history(folder.path() / "DORIX" / "dorix.sqlite");
    ASSERT_EQ(history.items().size(), 1U);
    EXPECT_EQ(history.items()[0].answer, "Nos vemos mañana.");
}

TEST_F(AppControllerTest, WhatTheRecogniserWritesWithCapitalsAndPunctuationIsTypedAsItStands) {
    recognition.locales.insert({"en-US", "en-US"});
    const std::map<std::string, std::vector<std::string>> said{
        {"es-ES", {"¿Quedamos el jueves, Ana?", "Llevo 3,5 kg de café de EE. UU. y el cable USB-C…"}},
        {"en-US", {"I'll be at St. John's at 10:30 a.m., won't I?", "It isn't far from Paris!"}},
    };
    for (const auto& [language, parts] : said) {
        defaults.set("language", language);
        launch();
        press();
        executor.advanceBy(0.3);
        for (const auto& part : parts) say(part);
        release();
        executor.advanceBy(5);
        EXPECT_THAT(pasteboard.log, testing::Contains("setString " + parts[0] + " " + parts[1]));
        app.reset();
        testing::internal::GetCapturedStderr();
    }
    testing::internal::CaptureStderr();
}

TEST_F(AppControllerTest, TheMenuPausesRestartsAndQuits) {
    launch();
    for (const auto& [paused, label] : {std::pair(false, "Pausar DORIX"), {true, "Reanudar DORIX"}}) {
        EXPECT_EQ(app->settings().paused.get(), paused);
        EXPECT_EQ(app->iconMenu()[4].label, label);
        app->iconMenu()[4].handler();
    }
    EXPECT_FALSE(app->settings().paused.get());
    app->iconMenu()[6].handler();
    app->iconMenu()[7].handler();
    EXPECT_EQ(application.relaunches, 1);
    EXPECT_EQ(application.terminations, 1);
}

TEST_F(AppControllerTest, WhatTheSessionDoesNotLetItReachIsToldOnce) {
    session.reachesAllWindows = false;
    for (const bool isFirst : {true, false}) {
        launch();
        EXPECT_EQ(app->state().hud.get().kind == HUDPhase::Kind::info, isFirst);
        app.reset();
        if (isFirst) testing::internal::GetCapturedStderr();
    }
}

TEST_F(AppControllerTest, WithoutItsHotKeysOrItsModelItGoesOn) {
    hotKeys.refuseWith = 10;
    recognition.locales.clear();
    launch();
    EXPECT_EQ(
        log(),
        "DORIX: no se pudo registrar el atajo global (10)\n"
        "DORIX: no se pudo registrar el atajo global (10)\n"
        "DORIX: no se pudo preparar el modelo de voz: El idioma es-ES no está disponible para el dictado en "
        "este Mac.\n"
        "DORIX: listo\n");
    EXPECT_EQ(app->state().hud.get().kind, HUDPhase::Kind::error);
}

TEST_F(AppControllerTest, ThePanelOpensAndClosesByWhateverIsClicked) {
    launch();
    std::vector<std::string> asked;
    RecordingWindow window(asked);
    app->windows.panel = &window;
    const auto& open = app->state().panelOpen;
    app->iconClicked();
    EXPECT_TRUE(open.get());
    EXPECT_EQ(app->iconMenu()[0].label, "Cerrar historial");
    app->iconClicked();
    EXPECT_FALSE(open.get());
    app->reopen();
    mouse.click();
    EXPECT_FALSE(open.get());
    statusItem.clicked();
    EXPECT_FALSE(open.get()) << "the same click, which has just closed it";
    executor.advanceBy(1);
    statusItem.clicked();
    EXPECT_TRUE(open.get());
    for (const auto* link : {"https://a.example/", "file:///etc/passwd"}) app->panel().openLink(link);
    EXPECT_THAT(urls.opened, ElementsAre("https://a.example/"));

    app->panel().windowNumber = 7;
    app->panel().exportHistory(HistoryExportFormat::markdown);
    executor.runPosted();
    EXPECT_EQ(savePanel.request.ownWindow, 7U);
    EXPECT_EQ(savePanel.request.fileName, "DORIX Historial.md");
    mouse.click();
    EXPECT_TRUE(open.get()) << "the click was in the dialog";
    savePanel.answer.complete(std::nullopt);
    executor.advanceBy(0.3);
    EXPECT_EQ(asked.back(), "takeKeyboard") << "the dialog had it";
    mouse.click();
    EXPECT_FALSE(open.get());
    EXPECT_EQ(asked.back(), "clickedOutside");
}

TEST_F(AppControllerTest, ASessionThatHasEndedOpensTheAccountWindowWhenNothingIsSaid) {
    const auto run = [this](Task<void> task) {
        TaskScope scope(executor);
        scope.spawn(std::move(task));
    };
    run(keychain.save("claude-api-key", "old"));
    run(keychain.save("session-token", "secret"));
    std::vector<std::string> asked;
    RecordingWindow window(asked);
    defaults.set("DORIXServerURL", "https://dorix.example");
    launch();
    app->windows.account = &window;
    EXPECT_TRUE(app->account().loggedIn.get());
    EXPECT_EQ(http.last().request.url, "https://dorix.example/v1/me");
    std::optional<std::string> old = "unread";
    run([](Keychain& from, auto& into) -> Task<void> { into = co_await from.read("claude-api-key"); }(
                                           keychain, old));
    EXPECT_EQ(old, std::nullopt);

    press();
    executor.advanceBy(0.3);
    http.last().respond(401);
    executor.runPosted();
    EXPECT_FALSE(app->account().loggedIn.get());
    say("nos vemos mañana");
    EXPECT_TRUE(asked.empty()) << "the words would go there";
    release();
    executor.advanceBy(1);
    EXPECT_THAT(asked, ElementsAre("place", "show"));
    EXPECT_THAT(pasteboard.log, testing::Contains("setString Nos vemos mañana."));
    app->account().onNeedsAttention(APIError::offline());
    EXPECT_EQ(app->state().hud.get(), HUDPhase::error("Sin conexión con DORIX. Revisa tu internet."));
    EXPECT_EQ(asked.size(), 4U);
    app->windows = {};
    EXPECT_THAT(log(), testing::Not(testing::HasSubstr("secret")));
}

TEST_F(AppControllerTest, WhatTheServiceStillHasWhenTheProgramEndsIsWrittenByRule) {
    TaskScope scope(executor);
    scope.spawn(keychain.save("session-token", "secret"));
    defaults.set("DORIXServerURL", "https://dorix.example");
    defaults.set("modelServer", "http://models.example");
    launch();
    executor.advanceBy(0);
    const auto models = std::ranges::find(http.exchanges, "http://models.example/v1/models",
                                          [](const auto& exchange) { return exchange.request.url; });
    ASSERT_NE(models, http.exchanges.end());
    models->respond(200, R"({"data":[{"id":"small"}]})");
    executor.advanceBy(10);
    EXPECT_EQ(app->state().hud.get(),
              HUDPhase::info("Lo que dictes se enviará a models.example para redactarlo."));
    press();
    EXPECT_THAT(http.connections, ElementsAre("https://dorix.example")) << "while the user talks";
    executor.advanceBy(0.3);
    say("nos vemos mañana");
    release();
    executor.advanceBy(1);
    auto& call = http.last();
    EXPECT_EQ(call.request.url, "https://dorix.example/v1/ai/write");
    scope.spawn(app->settled());
    executor.advanceBy(10);
    EXPECT_TRUE(call.isOver());
    EXPECT_THAT(pasteboard.log, testing::Contains("setString Nos vemos mañana."));
    app.reset();
    const HistoryStore history(folder.path() / "DORIX" / "dorix.sqlite");
    ASSERT_EQ(history.items().size(), 1U);
    EXPECT_EQ(history.items()[0].answer, "Nos vemos mañana.");
}

TEST(FirstRunHintTest, ShowsThreeTimesUnlessForced) {
    ManualExecutor executor;
    MemoryUserDefaults defaults;
    AppState state;
    FirstRunHint hint(executor, defaults, state);
    for (int i = 0; i < 3; ++i) {
        hint.show(FirstRunHint::Forced::no);
        executor.advanceBy(5.9);
        EXPECT_TRUE(state.showFirstRunHint.get());
        executor.advanceBy(0.1);
        EXPECT_FALSE(state.showFirstRunHint.get());
    }
    hint.show(FirstRunHint::Forced::no);
    EXPECT_FALSE(state.showFirstRunHint.get());
    hint.show(FirstRunHint::Forced::yes);
    EXPECT_TRUE(state.showFirstRunHint.get());
    EXPECT_EQ(defaults.value("hintShownCount"), 4);
}

}  // namespace
}  // namespace dorix
