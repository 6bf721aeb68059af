#include "base/Json.h"
#include "fakes/FakePlatform.h"
#include "fakes/overlay/RecordingWindow.h"
#include "localdata/Language.h"
#include "platform/KeyCodes.h"
#include "shell/AppController.h"
#include "shell/FirstRunHint.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace dorix {
namespace {

using ::testing::ElementsAre;

constexpr std::uint32_t dictationKey = 1;
constexpr std::uint32_t askKey = 2;

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
    void hotKey(std::uint32_t id, std::uint32_t kind) {
        hotKeys.send(id, kind);
        executor.runPosted();
    }
    void say(std::string words) {
        recognition.current().sayFinal(std::move(words));
        executor.runPosted();
    }
    std::string pasted() const {
        for (const auto& entry : pasteboard.log) {
            if (entry.starts_with("setString ")) return entry.substr(10);
        }
        return "";
    }

    std::unique_ptr<AppController> app;
};

TEST_F(AppControllerTest, AHeldKeyBecomesTextAtTheCursor) {
    launch();
    EXPECT_EQ(log(), "DORIX: listo\n");
    press();
    EXPECT_TRUE(audio.isRunning()) << "the microphone opens with the key, before the hold is sure";
    executor.advanceBy(0.3);
    say("hola a todos");
    release();
    executor.advanceBy(0.45);
    EXPECT_EQ(pasted(), "Hola a todos.");
    EXPECT_EQ(app->state().hud.get(), HUDPhase::done("Escrito en Escritorio"));
    EXPECT_FALSE(audio.isRunning());
}

TEST_F(AppControllerTest, TracesWhatItDoesForTheUserAlone) {
    launch();
    const auto file = folder.path() / "trace.jsonl";
    app->traceTo(file);
    press();
    executor.advanceBy(0.3);
    say("hola a todos");
    release();
    executor.advanceBy(5);
    std::ifstream lines(file);
    std::vector<std::string> told;
    for (std::string line; std::getline(lines, line);) {
        auto event = Json::parse(line);
        EXPECT_GT(event.at("at"), 0);
        event.erase("at");
        told.push_back(event.dump());
    }
    EXPECT_THAT(told, ElementsAre(R"({"hud":"listening","text":""})", R"({"busy":true})",
                                  R"({"hud":"processing","text":""})", R"({"route":"plain"})",
                                  R"({"hud":"done","text":"Escrito en Escritorio"})", R"({"busy":false})",
                                  R"({"hud":"hidden","text":""})"));
    using std::filesystem::perms;
    EXPECT_EQ(std::filesystem::status(file).permissions(), perms::owner_read | perms::owner_write);

    log();
    app->traceTo(folder.path() / "nowhere" / "trace.jsonl");
    EXPECT_EQ(log(),
              "DORIX: no se pudo abrir la traza " + (folder.path() / "nowhere/trace.jsonl").string() + "\n");
}

TEST_F(AppControllerTest, RemembersWhatWasDictated) {
    launch();
    press();
    executor.advanceBy(0.3);
    say("nos vemos mañana");
    release();
    executor.advanceBy(0.45);
    app.reset();
    const HistoryStore history(folder.path() / "DORIX" / "dorix.sqlite");
    ASSERT_EQ(history.items().size(), 1U);
    EXPECT_EQ(history.items()[0].query, "nos vemos mañana");
    EXPECT_EQ(history.items()[0].answer, "Nos vemos mañana.");
}

TEST_F(AppControllerTest, ATapOrEscapeLeavesNothingBehind) {
    launch();
    press();
    release();
    EXPECT_FALSE(audio.isRunning());
    press();
    executor.advanceBy(0.3);
    keyboard.keyDown(keycode::escape);
    EXPECT_FALSE(audio.isRunning());
    release();
    executor.advanceBy(10);
    EXPECT_EQ(app->state().hud.get(), HUDPhase::hidden());
    EXPECT_EQ(pasted(), "");

    hotKey(dictationKey, HotKeyRegistrar::eventPressed);
    hotKey(dictationKey, HotKeyRegistrar::eventReleased);
    EXPECT_TRUE(audio.isRunning()) << "hands-free";
    EXPECT_TRUE(keyboard.send(KeyEventMask::keyDown, {keycode::escape, 0}, true)) << "Esc was of use";
    EXPECT_FALSE(audio.isRunning());
    EXPECT_FALSE(keyboard.send(KeyEventMask::keyDown, {keycode::escape, 0}, true));
}

TEST_F(AppControllerTest, AHotKeyTakesOverFromTheHoldKey) {
    launch();
    press();
    executor.advanceBy(1);
    hotKey(askKey, HotKeyRegistrar::eventPressed);
    release();  // the press it belonged to is over
    EXPECT_TRUE(audio.isRunning());
    say("¿qué es esto?");
    executor.advanceBy(0.5);
    hotKey(askKey, HotKeyRegistrar::eventReleased);
    executor.advanceBy(1);
    EXPECT_EQ(pasted(), "") << "a question is not typed";
    hotKey(dictationKey, HotKeyRegistrar::eventPressed);
    say("y ahora esto");
    executor.advanceBy(0.5);
    hotKey(dictationKey, HotKeyRegistrar::eventReleased);
    executor.advanceBy(1);
    EXPECT_EQ(pasted(), "Ahora esto");
}

TEST_F(AppControllerTest, PausedItNeverOpensTheMicrophone) {
    defaults.set("paused", true);
    launch();
    press();
    EXPECT_FALSE(audio.isRunning());
    EXPECT_EQ(audio.opened, 0);
}

TEST_F(AppControllerTest, AGrantThatComesWithAPressDoesNotLoseThePress) {
    grants.trusted = false;
    launch();
    grants.trusted = true;
    press();  // reads the grants anew
    executor.advanceBy(0.3);
    EXPECT_EQ(app->state().hud.get(), HUDPhase::listening());
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

TEST_F(AppControllerTest, TheMenuPausesRestartsAndQuits) {
    const auto labels = [](const Menu& menu) {
        std::vector<std::string> out;
        for (const auto& item : menu) out.push_back(item.label);
        return out;
    };
    launch();
    press();
    auto menu = app->iconMenu();
    EXPECT_THAT(labels(menu), testing::ElementsAre("Abrir historial", "", "Pausar DORIX", "",
                                                   "Reiniciar DORIX", "Salir de DORIX"));
    menu[2].handler();
    EXPECT_FALSE(audio.isRunning()) << "pausing ends a press";
    release();
    press();
    EXPECT_FALSE(audio.isRunning());
    EXPECT_EQ(defaults.boolean("paused"), true);
    menu = app->iconMenu();
    EXPECT_EQ(menu[2].label, "Reanudar DORIX");
    menu[2].handler();
    release();
    press();
    EXPECT_TRUE(audio.isRunning());
    menu[4].handler();
    menu[5].handler();
    EXPECT_EQ(application.relaunches, 1);
    EXPECT_EQ(application.terminations, 1);
}

TEST_F(AppControllerTest, ThePanelOpensAndClosesByWhateverIsClicked) {
    launch();
    std::vector<std::string> asked;
    RecordingWindow window(asked);
    app->windows.panel = &window;
    const auto& open = app->state().panelOpen;
    app->iconClicked();
    EXPECT_TRUE(open.get() && app->state().panelAnchorRight.get());
    EXPECT_FALSE(app->state().showFirstRunHint.get());
    EXPECT_EQ(app->iconMenu()[0].label, "Cerrar historial");
    app->iconClicked();
    EXPECT_FALSE(open.get());
    EXPECT_FALSE(mouse.isMonitored());
    executor.advanceBy(0.2);
    EXPECT_THAT(asked, ElementsAre("place", "show", "hide"));

    app->reopen();
    mouse.click();
    EXPECT_FALSE(open.get());
    statusItem.clicked();
    EXPECT_FALSE(open.get()) << "the same click, which has just closed it";
    executor.advanceBy(1);
    statusItem.clicked();
    EXPECT_TRUE(open.get());

    app->panel().exportHistory(HistoryExportFormat::markdown, 7);
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

TEST_F(AppControllerTest, ADictationOverThePanelGoesToWhatWasInFront) {
    workspace.frontmost = RunningApplication{
        .processIdentifier = 7, .bundleIdentifier = "com.apple.Notes", .localizedName = "Notas"};
    launch();
    app->iconClicked();
    workspace.frontmost = std::nullopt;
    press();
    executor.advanceBy(0.3);
    EXPECT_FALSE(app->state().panelOpen.get());
    say("hola");
    release();
    executor.advanceBy(0.45);
    EXPECT_EQ(app->state().hud.get(), HUDPhase::done("Escrito en Notas"));

    app->iconClicked();
    app->panel().openLink("https://a.example/");
    app->panel().openLink("file:///etc/passwd");
    EXPECT_THAT(urls.opened, testing::ElementsAre("https://a.example/"));
}

TEST_F(AppControllerTest, AToastDisturbsNothing) {
    launch();
    EXPECT_FALSE(app->showToast("nuevo")) << "the hint of the first run shows";
    executor.advanceBy(6);
    app->state().panelOpen.set(true);
    EXPECT_FALSE(app->showToast("nuevo"));
    app->state().panelOpen.set(false);
    press();
    EXPECT_FALSE(app->showToast("nuevo"));
    release();
    EXPECT_TRUE(app->showToast("nuevo"));
    executor.advanceBy(4.9);
    EXPECT_EQ(app->state().hud.get(), HUDPhase::learned("nuevo"));
    executor.advanceBy(0.1);
    EXPECT_EQ(app->state().hud.get(), HUDPhase::hidden());
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
