#include "base/Json.h"
#include "fakes/Eventually.h"
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
        defaults.set("onboardingDone", true);
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
    EXPECT_EQ(log(), "DORIX: ready\n");
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
    EXPECT_THAT(log(), testing::HasSubstr("DORIX: the trace could not be opened: "));

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

TEST_F(AppControllerTest, QuestionsGoToTheAssistant) {
    launch();
    EXPECT_EQ(app->state().abilities.get(), (Abilities{.answers = true, .memory = true}));
    const auto file = folder.path() / "trace.jsonl";
    app->traceTo(file);
    app->state().composerText.set("¿y eso?");
    EXPECT_TRUE(app->panel().composer.send());
    EXPECT_EQ(app->state().composerText.get(), "");
    app->assistant().searchMemory("busca el acta", {});
    EXPECT_TRUE(eventually(executor, [&] {
        executor.advanceBy(0.1);
        return !app->assistant().card.get()->streaming;
    }));
    const std::string noEngine = "Para preguntar hace falta conexión o Apple Intelligence activado.";
    ASSERT_NE(app->panel().selection.item(), nullptr);
    EXPECT_EQ(app->panel().selection.item()->answer, "No se pudo responder: " + noEngine);
    EXPECT_EQ(app->assistant().card.get()->answer,
              "No he encontrado nada sobre eso en tus documentos ni en tu historial.");
    app->assistant().close();
    EXPECT_THAT(eventsOf(file),
                ElementsAre(R"({"card":"waiting"})", R"({"card":"finished"})", R"({"card":"none"})"));
}

TEST_F(AppControllerTest, TheMenuPausesRestartsAndQuits) {
    launch();
    for (const auto& [paused, label] : {std::pair(false, "Pausar DORIX"), {true, "Reanudar DORIX"}}) {
        EXPECT_EQ(app->settings().paused.get(), paused);
        EXPECT_EQ(app->iconMenu()[5].label, label);
        app->iconMenu()[5].handler();
    }
    EXPECT_FALSE(app->settings().paused.get());
    app->iconMenu()[7].handler();
    app->iconMenu()[8].handler();
    EXPECT_EQ(application.relaunches, 1);
    EXPECT_EQ(application.terminations, 1);
}

TEST_F(AppControllerTest, InTheSettingsTheHoldKeyIsTriedAndTheirFieldsAreDictatedInto) {
    launch();
    workspace.frontmost = RunningApplication{.processIdentifier = 42, .bundleIdentifier = workspace.own};
    auto& form = app->settingsForm();
    form.open();
    form.setKeyboard(SettingsForm::Keyboard::rows);
    press();
    EXPECT_FALSE(audio.isRunning());
    executor.advanceBy(1);
    release();
    form.setKeyboard(SettingsForm::Keyboard::field);
    form.beforeCursor = [] { return std::string("Hola."); };
    std::string typed;
    poster.onPost = [&](std::uint16_t) { typed = pasteboard.fetch(*workspace.frontmost, executor.now()); };
    press();
    executor.advanceBy(0.5);
    say("nos vemos mañana");
    release();
    executor.advanceBy(5);
    EXPECT_EQ(typed, " Nos vemos mañana.");
    form.close();
    press();
    EXPECT_TRUE(audio.isRunning());
}

TEST_F(AppControllerTest, ADictationTakesTheMicrophoneFromTheTestInTheSettings) {
    launch();
    auto& form = app->settingsForm();
    form.open();
    form.showSection("speech");
    form.press("speech.test", "test");
    executor.runPosted();
    EXPECT_TRUE(form.microphoneTest().isRunning.get() && audio.isRunning());
    press();
    EXPECT_FALSE(form.microphoneTest().isRunning.get());
    EXPECT_TRUE(audio.isRunning());
    executor.advanceBy(0.3);
    say("nos vemos mañana");
    release();
    executor.advanceBy(5);
    EXPECT_THAT(pasteboard.log, testing::Contains("setString Nos vemos mañana."));
    EXPECT_EQ(form.microphoneTest().heard.get(), "");
    executor.advanceBy(10);
    form.press("speech.test", "test");
    EXPECT_TRUE(audio.isRunning());
    app->settings().paused.set(true);
    EXPECT_FALSE(audio.isRunning());
    form.press("speech.test", "test");
    EXPECT_FALSE(form.microphoneTest().isRunning.get()) << "paused is paused";

    audio.microphones.set({{"usb", "Micro USB"}});
    form.choose("speech.microphone", "usb");
    EXPECT_EQ(audio.used, "usb");
    const std::string lost = "«Micro USB» no está conectado: mientras tanto se usa el que elija el sistema.";
    audio.microphones.set({{"builtin", "Micro interno"}});
    EXPECT_EQ(app->state().hud.get(), HUDPhase::info(lost));
    executor.advanceBy(10);
    audio.microphones.set({{"builtin", "Micro interno"}, {"line", "Línea"}});
    EXPECT_EQ(app->state().hud.get(), HUDPhase::hidden()) << "that was told";
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
        "DORIX: no se pudo registrar el atajo global (10): Alt+Space\n"
        "DORIX: no se pudo registrar el atajo global (10): Alt+Shift+Space\n"
        "DORIX: no se pudo preparar el modelo de voz: El idioma es-ES no está disponible para el dictado en "
        "este Mac.\n"
        "DORIX: ready\n");
    EXPECT_EQ(app->state().hud.get().kind, HUDPhase::Kind::error);
}

/// The first run, whose window notes down what is asked of it.
class FirstRunTest : public AppControllerTest {
 protected:
    void launch() {
        app.reset();
        asked.clear();
        app = std::make_unique<AppController>(platform());
        app->windows.onboarding = &window;
        app->applicationDidFinishLaunching();
        executor.runPosted();
    }
    void SetUp() override { testing::internal::CaptureStderr(); }
    Onboarding& firstRun() const { return app->onboarding(); }
    OnboardingRow row(const std::string& id) const {
        for (auto& one : firstRun().rows()) {
            if (one.id == id) return one;
        }
        return {};
    }

    std::vector<std::string> asked;
    RecordingWindow window{asked};
};

TEST_F(FirstRunTest, LeadsThroughFourStepsAndComesAgainOnlyForWhatIsNewlyMissing) {
    TaskScope scope(executor);
    scope.spawn(keychain.save("session-token", "secret"));
    defaults.set("DORIXServerURL", "https://dorix.example");
    defaults.set("onboardingDone", false);
    grants.trusted = false;
    launch();
    EXPECT_THAT(asked, ElementsAre("place", "show"));
    EXPECT_FALSE(app->state().showFirstRunHint.get());
    for (const auto step :
         {Onboarding::Step::permissions, Onboarding::Step::practice, Onboarding::Step::end}) {
        firstRun().next();
        EXPECT_EQ(firstRun().step().get(), step);
    }
    app->state().onboardingOpen.set(true);
    const auto menu = app->iconMenu();
    const auto again = std::ranges::find(menu, "Primeros pasos…", &ClosureMenuItem::label);
    ASSERT_NE(again, menu.end());
    again->handler();
    EXPECT_EQ(firstRun().step().get(), Onboarding::Step::end) << "it goes on where the user is";
    EXPECT_EQ(firstRun().endLabel(), "Continuar sin todos los permisos");
    EXPECT_EQ(firstRun().missing(), "Falta todavía: Accesibilidad.");
    firstRun().next();
    EXPECT_TRUE(app->settings().onboardingDone.get());
    EXPECT_TRUE(app->state().showFirstRunHint.get()) << "forced";
    EXPECT_EQ(asked.back(), "hide");

    launch();
    executor.advanceBy(30);
    EXPECT_THAT(asked, testing::IsEmpty()) << "the user has chosen to do without";
    grants.speech = SpeechAuthorizationStatus::denied;
    launch();
    executor.advanceBy(30);
    EXPECT_THAT(asked, ElementsAre("place", "show"));
    EXPECT_EQ(firstRun().step().get(), Onboarding::Step::permissions);
}

TEST_F(FirstRunTest, EachRowSaysWhatIsMissingAndFollowsItsRemedy) {
    defaults.set("onboardingDone", false);
    grants.trusted = false;
    audio.format.channelCount = 0;
    launch();
    EXPECT_EQ(row("microphone").tone, OnboardingRow::Tone::warning);
    firstRun().press("microphone", "allow");
    EXPECT_THAT(grants.log, testing::Contains("open Privacy_Microphone"));
    firstRun().press("accessibility", "allow");
    EXPECT_THAT(grants.log, testing::Contains("prompt for trust"));
    EXPECT_EQ(row("screen").id, "screen") << "who answers questions looks at it";

    int changes = 0;
    const auto observer = firstRun().observe([&] { ++changes; });
    grants.trusted = true;
    audio.format.channelCount = 1;
    executor.advanceBy(1.1);
    EXPECT_GT(changes, 0);
    for (const auto* id : {"microphone", "speech", "accessibility"})
        EXPECT_EQ(row(id).tone, OnboardingRow::Tone::good) << id;
    EXPECT_EQ(firstRun().endLabel(), "Empezar");
    EXPECT_EQ(firstRun().missing(), "");
}

TEST_F(FirstRunTest, ThePracticeNamesAKeyThatWorksAndItsFieldGetsTheWords) {
    defaults.set("onboardingDone", false);
    launch();
    EXPECT_FALSE(firstRun().needsHoldKey());
    hotKeys.refuseWith = 10;
    keyboard.holdKeyIsAltGr = true;
    executor.advanceBy(1.1);
    EXPECT_THAT(firstRun().practiceText(),
                testing::StartsWith("Mantén pulsado AltGr y habla. Si dictas, DORIX lo"));
    EXPECT_TRUE(firstRun().needsHoldKey());
    firstRun().chooseHoldKey("rightControl");
    keyboard.holdKeyIsAltGr = false;
    executor.advanceBy(1.1);
    EXPECT_THAT(firstRun().practiceText(), testing::StartsWith("Mantén pulsado ⌃ derecha y habla."));

    workspace.frontmost = RunningApplication{.processIdentifier = 42, .bundleIdentifier = workspace.own};
    poster.onPost = [this](std::uint16_t) {
        firstRun().fieldChanged(pasteboard.fetch(*workspace.frontmost, executor.now()));
    };
    const auto dictate = [this] {
        keyboard.flags(keycode::rightControl, modifier::control | modifier::deviceRightControl);
        executor.advanceBy(0.5);
        say("hola");
        keyboard.flags(keycode::rightControl, 0);
        executor.advanceBy(1);
    };
    dictate();
    EXPECT_FALSE(firstRun().hasPractised().get()) << "the cursor is not in the field";
    firstRun().setFieldFocused(true);
    firstRun().fieldChanged("h");
    EXPECT_FALSE(firstRun().hasPractised().get()) << "that was typed";
    dictate();
    EXPECT_TRUE(firstRun().hasPractised().get());
    EXPECT_EQ(app->state().hud.get(), HUDPhase::done("Escrito en DORIX"));
    firstRun().end();
    EXPECT_FALSE(app->state().practises.get());
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

TEST_F(AppControllerTest, AnItemOfThePanelIsReadAloudUntilItsButtonIsPressedAgain) {
    launch();
    const auto file = folder.path() / "trace.jsonl";
    app->traceTo(file);
    const HistoryItem item{.id = "a", .answer = "**Hola**"};
    app->panel().actions.speak(item);
    ASSERT_TRUE(synthesizer.speaking);
    EXPECT_EQ(synthesizer.speaking->text, "Hola");
    EXPECT_EQ(synthesizer.speaking->language, "es-ES");
    app->panel().actions.speak(item);
    EXPECT_FALSE(synthesizer.speaking);
    EXPECT_THAT(eventsOf(file), ElementsAre(R"({"speaking":true})", R"({"speaking":false})"));
}

TEST_F(AppControllerTest, AnAnswerComesUpOnItsCardIsCalledByASecondStartAndGoesForAShortcut) {
    launch();
    std::vector<std::string> asked;
    RecordingWindow window(asked);
    app->windows.card = &window;
    app->assistant().ask({.question = "¿Qué dice?"});
    EXPECT_EQ(asked, (std::vector<std::string>{"place", "show"}));
    EXPECT_EQ(app->answerCard().head.get().waiting, "Pensando…");
    app->reopen();
    EXPECT_EQ(asked.back(), "takeKeyboard");
    EXPECT_FALSE(app->state().panelOpen.get());
    hotKeys.send(1, HotKeyRegistrar::eventPressed);
    executor.runPosted();
    EXPECT_FALSE(app->answerCard().isShown.get());
    EXPECT_FALSE(app->assistant().card.get());
    executor.advanceBy(1);
    EXPECT_EQ(asked.back(), "hide");
}

TEST_F(AppControllerTest, EscapeClosesTheCardThoughTheKeyboardIsElsewhere) {
    launch();
    app->assistant().ask({.question = "¿Qué dice?"});
    EXPECT_TRUE(app->answerCard().isShown.get());
    keyboard.keyDown(keycode::escape);
    EXPECT_FALSE(app->answerCard().isShown.get());
    EXPECT_FALSE(app->assistant().card.get());
    EXPECT_FALSE(keyboard.withheld()) << "the application gets it too";
}

TEST_F(AppControllerTest, WhatIsDictatedOverAClickedCardGoesToWhereItWasAskedFrom) {
    launch();
    const RunningApplication notes{.processIdentifier = 7, .bundleIdentifier = "org.example.notes"};
    app->assistant().ask({.question = "¿Qué dice?", .context = {.app = notes, .displayName = "Notas"}});
    workspace.frontmost = RunningApplication{.processIdentifier = 42, .bundleIdentifier = workspace.own};
    press();
    executor.advanceBy(0.3);
    EXPECT_FALSE(app->answerCard().isShown.get());
    workspace.frontmost = notes;
    say("nos vemos mañana");
    release();
    executor.advanceBy(5);
    EXPECT_THAT(pasteboard.log, testing::Contains("setString Nos vemos mañana."));
    app.reset();
    const HistoryStore history(folder.path() / "DORIX" / "dorix.sqlite");
    const auto dictated = std::ranges::find(history.items(), HistoryKind::dictado, &HistoryItem::kind);
    ASSERT_NE(dictated, history.items().end());
    EXPECT_EQ(dictated->app, "Notas");
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
