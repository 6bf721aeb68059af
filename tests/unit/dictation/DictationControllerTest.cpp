#include "base/Uuid.h"
#include "fakes/dictation/DictationBench.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace dorix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using enum DictationController::Mode;
using enum DictationController::Source;

class DictationControllerTest : public testing::Test {
 protected:
    HUDPhase hud() const { return bench.state.hud.get(); }

    /// A whole dictation with the hold key.
    void dictate(std::string transcript) {
        bench.speech.transcript = std::move(transcript);
        ASSERT_TRUE(flow.begin(holdKey, write));
        flow.showListening();
        bench.executor.advanceBy(2);
        flow.stopAndProcess();
        bench.executor.advanceBy(0.45);
    }

    DictationBench bench{DictationBench::Have{.assistant = true}};
    DictationController& flow = bench.controller;
};

TEST_F(DictationControllerTest, AHoldEndsInTextAtTheCursorAndInTheHistory) {
    bench.pasteboard.copyElsewhere("lo de antes");
    bench.settings.language.set("en-US");
    bench.speech.transcript = " mañana este te llamo \n";
    EXPECT_TRUE(flow.begin(holdKey, write));
    EXPECT_EQ(hud(), HUDPhase::hidden()) << "nothing shows before the hold is sure";
    bench.executor.advanceBy(0.3);
    flow.showListening();
    EXPECT_EQ(hud(), HUDPhase::listening());
    bench.executor.advanceBy(1);
    flow.stopAndProcess();
    EXPECT_EQ(hud(), HUDPhase::processing());
    EXPECT_TRUE(flow.busy().get());
    bench.executor.advanceBy(0.45);
    EXPECT_EQ(bench.inserted, "Mañana te llamo.");
    EXPECT_EQ(hud(), HUDPhase::done("Escrito en TextEdit"));
    EXPECT_FALSE(flow.busy().get());
    bench.executor.advanceBy(1.6);
    EXPECT_EQ(bench.pasteboard.items[0][0].second, "lo de antes");
    EXPECT_EQ(hud(), HUDPhase::hidden());
    EXPECT_TRUE(flow.isIdle());

    EXPECT_THAT(bench.speech.log, ElementsAre("start en-US", "stop"));
    EXPECT_THAT(bench.sounds.played, ElementsAre("Tink 0.25", "Pop 0.25"));
    ASSERT_EQ(bench.history.items().size(), 1U);
    const auto& item = bench.history.items()[0];
    EXPECT_EQ(item.query, "mañana este te llamo");
    EXPECT_EQ(item.answer, "Mañana te llamo.");
    EXPECT_EQ(item.bundleID, "com.apple.TextEdit");
    EXPECT_EQ(item.createdAt, 1'750'000'000);
    EXPECT_EQ(item.meta.tone, "Natural");
    EXPECT_EQ(item.meta.durationMs, 1299);
    EXPECT_EQ(item.meta.source, "voz");
}

TEST_F(DictationControllerTest, WithNowhereToTypeTheTextStaysOnTheClipboard) {
    bench.setFocus(false);
    dictate("hola");
    EXPECT_EQ(hud(), HUDPhase::done("Escrito en TextEdit · también en el portapapeles (⌘V)"));
    bench.executor.advanceBy(1.8);
    EXPECT_THAT(bench.pasteboard.items, ElementsAre(ElementsAre(std::pair<std::string, std::string>(
                                            std::string(Pasteboard::stringType), "Hola"))));
    EXPECT_NE(hud(), HUDPhase::hidden());
    bench.executor.advanceBy(0.6);
    EXPECT_EQ(hud(), HUDPhase::hidden());
}

TEST_F(DictationControllerTest, OnlyWhatWasDeliveredIsSaidToBeWritten) {
    bench.takesPastes = false;
    dictate("hola");
    EXPECT_EQ(hud(), HUDPhase::processing());
    bench.executor.advanceBy(4);
    EXPECT_EQ(hud(), HUDPhase::info("TextEdit no ha recogido el texto · está en el portapapeles (⌘V)"));
    bench.executor.advanceBy(4);
    EXPECT_EQ(bench.pasteboard.items[0][0].second, "Hola");
    ASSERT_EQ(bench.history.items().size(), 1U);
    EXPECT_EQ(bench.history.items()[0].meta.inserted, false);

    bench.takesPastes = true;
    bench.pasteboard.readable = Pasteboard::Reading::State::partial;
    bench.pasteboard.copyElsewhere("lo de antes");
    dictate("hola");
    EXPECT_EQ(hud(), HUDPhase::done("Escrito en TextEdit · del portapapeles solo ha vuelto una parte"));
}

TEST_F(DictationControllerTest, ASentenceIsNotGluedToWhatStandsBeforeTheCursor) {
    const auto field = bench.accessibility.focus(DictationBench::appProcess, "AXTextField");
    const auto dictateAfter = [&](const char* atBegin, const char* atEnd) {
        field->attributes.insert_or_assign("AXTextBeforeCursor", AXValue(std::string(atBegin)));
        flow.begin(holdKey, write);
        flow.showListening();
        bench.speech.transcript = "hola";
        field->attributes.insert_or_assign("AXTextBeforeCursor", AXValue(std::string(atEnd)));
        flow.stopAndProcess();
        bench.executor.advanceBy(5);
        return *bench.inserted;
    };
    EXPECT_EQ(dictateAfter("", "a."), " Hola") << "the sentence before has come meanwhile";
    EXPECT_EQ(bench.history.items().front().answer, "Hola");
    for (const auto* before : {"", "\n", "a ", "a\n", "a(", " \"", "(\"", "a/", "\u00A0", "¿"}) {
        EXPECT_EQ(dictateAfter("x", before), "Hola") << '"' << before << '"';
    }
    EXPECT_EQ(dictateAfter("x", "a\""), " Hola") << "it closes a quotation";
    bench.takesPastes = false;
    dictateAfter("x", "a.");
    EXPECT_EQ(bench.pasteboard.items[0][0].second, "Hola") << "to be pasted by hand";
    bench.takesPastes = true;
    field->attributes.insert_or_assign("AXSubrole", AXValue(std::string("AXSecureTextField")));
    EXPECT_EQ(dictateAfter("x", "a."), "Hola");
}

TEST_F(DictationControllerTest, APasswordIsWrittenAndNothingElse) {
    bench.accessibility.focus(DictationBench::appProcess, "AXTextField")->attributes["AXSubrole"] =
        std::string("AXSecureTextField");
    bench.speech.transcript = "dile que clave secreta";
    ASSERT_TRUE(flow.begin(holdKey, write));
    flow.showListening();
    EXPECT_TRUE(bench.state.hidesWords.get());
    flow.stopAndProcess();
    bench.executor.advanceBy(1);
    EXPECT_EQ(bench.inserted, "Dile que clave secreta.");
    EXPECT_TRUE(bench.history.items().empty());
    EXPECT_TRUE(bench.writer.requests.empty()) << "no engine is told of it";
}

TEST_F(DictationControllerTest, NothingIsPastedOverASelectionWhenNothingWasSaid) {
    dictate("este");
    EXPECT_EQ(bench.inserted, std::nullopt);
    EXPECT_EQ(hud(), HUDPhase::info("No había nada que escribir."));
    ASSERT_EQ(bench.history.items().size(), 1U) << "it may have been meant";
    EXPECT_EQ(bench.history.items()[0].meta.inserted, false);
    dictate("¿Vale?");
    EXPECT_EQ(bench.inserted, "¿Vale?");
}

TEST_F(DictationControllerTest, RefusalsSayWhatTheUserCanDo) {
    bench.settings.paused.set(true);
    EXPECT_FALSE(flow.begin(holdKey, write));
    bench.settings.paused.set(false);
    flow.accountReady = [] { return false; };
    EXPECT_FALSE(flow.begin(holdKey, write));
    EXPECT_EQ(hud(), HUDPhase::hidden());
    flow.accountReady = [] { return true; };
    bench.grants.microphone = AuthorizationStatus::denied;
    EXPECT_FALSE(flow.begin(holdKey, write));
    EXPECT_EQ(hud(), HUDPhase::error("DORIX necesita acceso al micrófono. Ábrelo desde Ajustes."));
    bench.grants.microphone = AuthorizationStatus::authorized;
    bench.grants.screen = false;
    EXPECT_FALSE(flow.begin(shortcut, ask));
    EXPECT_EQ(hud().kind, HUDPhase::Kind::error);
    EXPECT_THAT(bench.grants.log, ElementsAre("request screen", "open Privacy_ScreenCapture"));
    bench.executor.advanceBy(5);
    EXPECT_EQ(hud(), HUDPhase::hidden());
    EXPECT_TRUE(flow.begin(holdKey, write)) << "writing needs no screen";
    EXPECT_FALSE(flow.begin(shortcut, write)) << "one recording at a time";
}

TEST_F(DictationControllerTest, FailuresOfSpeechEndInAMessageAndFreeTheFlow) {
    bench.speech.startError = "No hay micrófono disponible.";
    dictate("nunca");
    EXPECT_EQ(hud(), HUDPhase::error("No hay micrófono disponible."));
    EXPECT_FALSE(flow.busy().get());
    EXPECT_EQ(bench.inserted, std::nullopt);
    flow.shortcutPressed(write);
    flow.shortcutReleased();
    EXPECT_EQ(hud(), HUDPhase::error("No hay micrófono disponible.")) << "nobody is left talking to it";
    EXPECT_FALSE(flow.isRecording() || bench.state.handsFree.get());
    bench.executor.advanceBy(4);
    flow.begin(holdKey, write);
    flow.cancelRecording();
    EXPECT_EQ(hud(), HUDPhase::hidden()) << "a tap shows nothing";
    bench.speech.startError.clear();
    dictate(" \n ");
    EXPECT_EQ(hud(), HUDPhase::info("No te he oído. Mantén pulsado ⌥ Espacio mientras hablas."));
}

TEST_F(DictationControllerTest, HalfASentenceIsNotTypedButKept) {
    const std::string silence =
        "No me llega sonido del micrófono. Si acabas de conectar unos auriculares, prueba otra vez.";
    const std::string half =
        "Me he quedado sin micrófono a mitad de frase. Lo que he oído está en el historial.";
    bench.speech.transcript = "no le digas";
    bench.speech.lastWords = 0.5;
    flow.begin(holdKey, write);
    flow.showListening();
    bench.speech.onAudioLost();
    EXPECT_EQ(hud(), HUDPhase::error(silence));
    EXPECT_FALSE(flow.isRecording() || bench.speech.isOn);
    bench.executor.advanceBy(0.5);
    EXPECT_EQ(hud(), HUDPhase::error(half));
    bench.executor.advanceBy(4);
    EXPECT_EQ(hud(), HUDPhase::hidden());

    flow.begin(holdKey, write);
    flow.showListening();
    bench.speech.hasGap = true;
    flow.stopAndProcess();
    bench.executor.advanceBy(0.5);
    EXPECT_EQ(hud(), HUDPhase::error(half));
    EXPECT_EQ(bench.inserted, std::nullopt);
    ASSERT_EQ(bench.history.items().size(), 2U);
    EXPECT_EQ(bench.history.items()[0].answer, "no le digas");

    bench.speech.isGivenUp = true;
    dictate("no le digas que");
    bench.executor.advanceBy(0.5);
    EXPECT_EQ(hud(), HUDPhase::error("no format"));
    EXPECT_EQ(bench.inserted, std::nullopt);
    EXPECT_EQ(bench.history.items()[0].answer, "no le digas que");

    bench.executor.advanceBy(4);
    bench.speech.transcript = "no le digas nada";
    flow.begin(holdKey, write);
    flow.showListening();
    bench.speech.onRecognitionFailed();
    EXPECT_FALSE(flow.isRecording() || bench.speech.isOn) << "nobody is left talking in vain";
    bench.executor.advanceBy(0.5);
    EXPECT_EQ(hud(), HUDPhase::error("no format"));
    EXPECT_EQ(bench.history.items()[0].answer, "no le digas nada");

    bench.speech.isGivenUp = false;
    bench.speech.transcript.clear();
    flow.begin(holdKey, write);
    bench.speech.onAudioLost();
    bench.executor.advanceBy(1);
    EXPECT_EQ(hud(), HUDPhase::error(silence));
}

TEST_F(DictationControllerTest, AfterTheReleaseItIsSeenThroughHoweverSlowlyTheEngineStartsAndStops) {
    bench.speech.holdStart = true;
    bench.speech.lastWords = 1;
    bench.speech.transcript = "una frase de prueba";
    flow.begin(holdKey, write);
    flow.stopAndProcess();
    bench.executor.advanceBy(3);
    EXPECT_EQ(hud(), HUDPhase::processing());
    bench.speech.started.complete();
    bench.executor.advanceBy(0.5);
    flow.cancelRecording();
    bench.settings.paused.set(true);
    bench.executor.advanceBy(0.5 + 0.45);
    EXPECT_EQ(bench.inserted, "Una frase de prueba.");
}

TEST_F(DictationControllerTest, AShortcutHeldIsHoldToTalkAndTappedIsHandsFree) {
    bench.speech.transcript = "hola";
    flow.shortcutPressed(write);
    flow.shortcutPressed(write);  // auto-repeat
    bench.executor.advanceBy(0.4);
    flow.shortcutReleased();
    EXPECT_EQ(hud(), HUDPhase::processing());
    bench.executor.advanceBy(10);

    flow.shortcutPressed(write);
    bench.executor.advanceBy(0.39);
    flow.shortcutReleased();
    EXPECT_TRUE(bench.state.handsFree.get());
    flow.shortcutPressed(write);
    EXPECT_FALSE(bench.state.handsFree.get());
    EXPECT_EQ(hud(), HUDPhase::processing());
    bench.executor.advanceBy(0.45);
    EXPECT_EQ(bench.inserted, "Hola");
    flow.shortcutReleased();
    EXPECT_FALSE(flow.isRecording());
}

TEST_F(DictationControllerTest, HandsFreeEndsWithSilenceOrAtTheLimit) {
    bench.speech.transcript = "hola";
    const auto lasts = [this](std::string words, float level) {
        flow.shortcutPressed(write);
        flow.shortcutReleased();
        const double start = bench.executor.now();
        bench.speech.partial.set(std::move(words));
        bench.speech.level.set(level);
        while (flow.isRecording()) bench.executor.advanceBy(0.01);
        return bench.executor.now() - start;
    };
    EXPECT_NEAR(lasts("", 0.9F), 8.1, 0.011) << "noise without words does not keep it open";
    EXPECT_EQ(hud(), HUDPhase::info("No te he oído. Pulsa ⌥ Espacio y habla."));
    bench.executor.advanceBy(2.4);
    EXPECT_EQ(hud(), HUDPhase::hidden());
    EXPECT_TRUE(bench.history.items().empty());

    bench.executor.after(1, [this] { bench.speech.partial.set("hola"); });
    EXPECT_NEAR(lasts("", 0), 1.05 + 1.95, 0.011) << "the first beat past 1.8 s after the change was seen";
    bench.executor.advanceBy(10);
    EXPECT_EQ(bench.inserted, "Hola");
    EXPECT_NEAR(lasts("hola", 0.36F), 120.15, 0.011) << "noise keeps it open";
    bench.executor.advanceBy(10);
    EXPECT_EQ(bench.history.items().size(), 2U);
}

TEST_F(DictationControllerTest, TheRequestTellsTheWriterWhereTheTextGoes) {
    bench.workspace.frontmost->bundleIdentifier = "com.apple.mail";
    bench.workspace.frontmost->localizedName = "Mail";
    const auto remember = [this](std::string text, std::optional<bool> inserted = true,
                                 std::string tone = "Profesional") {
        bench.history.add({.id = makeUuid(), .answer = text, .meta = {.tone = tone, .inserted = inserted}},
                          HistoryStore::Persist::yes);
    };
    const auto longText = [](char letter) { return std::string(41, letter); };
    for (const char old : {'e', 'd'}) remember(longText(old));
    remember(std::string(40, 'x'));
    remember(longText('x'), std::nullopt);
    remember(longText('x'), true, "Informal");
    for (const char recent : {'c', 'b'}) remember(longText(recent));
    bench.settings.signatureName.set("Teo");
    dictate("hola");
    ASSERT_EQ(bench.writer.requests.size(), 1U);
    const auto& request = bench.writer.requests[0];
    EXPECT_EQ(request.tone, Tone::profesional);
    EXPECT_EQ(request.appName, "Mail");
    EXPECT_EQ(request.signatureName, "Teo");
    EXPECT_THAT(request.styleExamples, ElementsAre(longText('b'), longText('c'), longText('d')));
    ASSERT_EQ(bench.writer.prewarmed.size(), 1U);
    EXPECT_EQ(bench.writer.prewarmed[0].transcript, "");
    EXPECT_EQ(bench.writer.connections, 0);

    bench.writer.cloud = true;
    bench.settings.adaptTone.set(false);
    dictate("hola");
    EXPECT_EQ(bench.writer.requests[1].tone, Tone::neutral);
    EXPECT_EQ(bench.history.items()[0].meta.tone, "Natural");
    EXPECT_EQ(bench.writer.prewarmed.size(), 1U) << "the service writes";
    EXPECT_EQ(bench.writer.connections, 1);
}

TEST_F(DictationControllerTest, WhatIsSaidWhileTheLastTextIsOnItsWayComesAfterIt) {
    bench.speech.lastWords = 3;
    std::vector<std::string> typed;
    bench.onInserted = [&] { typed.push_back(*bench.inserted); };
    for (const auto* words : {"uno", "dos", "tres"}) {
        bench.speech.transcript = words;
        ASSERT_TRUE(flow.begin(holdKey, write));
        flow.showListening();
        EXPECT_TRUE(bench.speech.isOn) << "heard from the first word on";
        bench.executor.advanceBy(0.5);
        flow.stopAndProcess();
    }
    EXPECT_FALSE(flow.begin(holdKey, write));
    EXPECT_EQ(hud(), HUDPhase::info("Aún estoy con lo que has dicho antes. Espera un momento y repítelo."));
    bench.executor.advanceBy(2.5);
    EXPECT_EQ(hud(), HUDPhase::done("Escrito en TextEdit"));
    bench.executor.advanceBy(1.6);
    EXPECT_EQ(hud(), HUDPhase::processing()) << "the next one is still to come";
    bench.executor.advanceBy(10);
    EXPECT_THAT(typed, ElementsAre("Uno", "Dos", "Tres"));
    EXPECT_TRUE(flow.isIdle());
}

TEST_F(DictationControllerTest, AShortSentenceDoesNotOvertakeALongOne) {
    std::vector<std::string> typed;
    bench.onInserted = [&] { typed.push_back(*bench.inserted); };
    for (const auto& [words, seconds] : {std::pair{"uno", 3.0}, {"dos", 0.0}}) {
        bench.writer.duration = seconds;
        bench.speech.transcript = words;
        flow.begin(holdKey, write);
        flow.showListening();
        bench.executor.advanceBy(0.5);
        flow.stopAndProcess();
        bench.executor.advanceBy(0.5);
    }
    EXPECT_THAT(typed, IsEmpty());
    bench.executor.advanceBy(10);
    EXPECT_THAT(typed, ElementsAre("Uno", "Dos"));
}

TEST_F(DictationControllerTest, NoMessageTakesTheHUDFromARecording) {
    flow.begin(holdKey, write);
    flow.showListening();
    flow.flash(HUDPhase::done("Historial guardado"), 4);
    bench.executor.advanceBy(1);
    EXPECT_EQ(hud(), HUDPhase::listening());
    flow.cancelRecording();
    EXPECT_EQ(hud(), HUDPhase::done("Historial guardado"));
    bench.executor.advanceBy(3);
    EXPECT_EQ(hud(), HUDPhase::hidden()) << "what is left of its time";

    flow.begin(holdKey, write);
    flow.showListening();
    flow.flash(HUDPhase::error("roto"), 2);
    flow.flash(HUDPhase::done("bien"), 2);
    bench.executor.advanceBy(60);
    flow.cancelRecording();
    EXPECT_EQ(hud(), HUDPhase::error("roto")) << "what went wrong has to be seen";
    bench.executor.advanceBy(2);
    EXPECT_EQ(hud(), HUDPhase::hidden());
}

TEST_F(DictationControllerTest, BeforeALockedScreenNothingIsHeardOrTyped) {
    const auto lock = [this](bool locked) { bench.session.locked.set(locked); };
    bench.speech.transcript = "uno";
    bench.speech.lastWords = 1;
    flow.begin(holdKey, write);
    flow.showListening();
    flow.stopAndProcess();
    flow.shortcutPressed(write);
    lock(true);
    EXPECT_FALSE(flow.isRecording() || bench.speech.isOn);
    EXPECT_FALSE(flow.begin(holdKey, write));
    bench.executor.advanceBy(5);
    EXPECT_EQ(bench.inserted, std::nullopt);
    ASSERT_EQ(bench.history.items().size(), 1U);
    EXPECT_EQ(bench.history.items()[0].answer, "uno");
    EXPECT_EQ(hud(), HUDPhase::hidden());
    lock(false);
    EXPECT_EQ(hud().kind, HUDPhase::Kind::info) << "the user is told where it is";
    flow.shortcutPressed(write);
    EXPECT_TRUE(flow.isRecording());
}

TEST_F(DictationControllerTest, MessagesLastTheirFullTime) {
    flow.flash(HUDPhase::info("uno"), 2);
    bench.executor.advanceBy(1.5);
    flow.flash(HUDPhase::info("uno"), 2);
    bench.executor.advanceBy(1.5);
    EXPECT_EQ(hud(), HUDPhase::info("uno"));
    bench.executor.advanceBy(0.5);
    EXPECT_EQ(hud(), HUDPhase::hidden());
    flow.flash(HUDPhase::info("dos"), 1);
    bench.state.hud.set(HUDPhase::info("tres"));
    bench.executor.advanceBy(2);
    EXPECT_EQ(hud(), HUDPhase::info("tres"));
    flow.flash(HUDPhase::learned("cuatro"), 1, HUDFlash::Sticky::yes);
    bench.executor.advanceBy(60);
    EXPECT_EQ(hud(), HUDPhase::learned("cuatro"));
}

}  // namespace
}  // namespace dorix
