#include "fakes/dictation/DictationBench.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace dorix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using enum DictationController::Mode;
using enum DictationController::Source;

/// The panel is open and its microphone is at hand.
class ComposerTest : public testing::Test {
 protected:
    ComposerTest() {
        bench.state.panelOpen.set(true);
        bench.speech.transcript = "qué hora es";
    }
    std::string text() const { return bench.state.composerText.get(); }

    DictationBench bench{DictationBench::Have{.assistant = true}};
    DictationController& flow = bench.controller;
};

TEST_F(ComposerTest, ItsMicrophoneAddsToTheText) {
    bench.state.composerText.set("Dime ");
    flow.toggleComposerMic();
    EXPECT_TRUE(bench.state.composerRecording.get());
    EXPECT_FALSE(flow.isIdle());
    flow.toggleComposerMic();
    bench.executor.advanceBy(0);
    EXPECT_EQ(text(), "Dime qué hora es");
    EXPECT_EQ(bench.state.focusRequest.get(), AppState::FocusTarget::composer);

    bench.speech.startError = "roto";
    flow.toggleComposerMic();
    EXPECT_FALSE(bench.state.composerRecording.get());
    EXPECT_EQ(bench.state.hud.get(), HUDPhase::error("roto"));
}

TEST_F(ComposerTest, WhoTakesTheMicrophoneDoesNotTakeTheWords) {
    const auto speak = [this](std::string words) {
        flow.toggleComposerMic();
        bench.speech.transcript = std::move(words);
    };
    bench.speech.lastWords = 1;
    speak("busca");
    flow.begin(holdKey, write);
    EXPECT_FALSE(bench.state.composerRecording.get());
    flow.cancelRecording();
    speak("el");
    flow.toggleComposerMic();
    bench.executor.advanceBy(0.5);  // its last words are still to come
    flow.begin(holdKey, write);
    flow.cancelRecording();
    speak("contrato");
    bench.speech.onAudioLost();
    EXPECT_FALSE(bench.state.composerRecording.get());
    EXPECT_EQ(bench.state.hud.get().kind, HUDPhase::Kind::error);
    bench.executor.advanceBy(5);
    EXPECT_EQ(text(), "busca el contrato");

    flow.toggleComposerMic();
    flow.dropComposerRecording();
    EXPECT_FALSE(bench.speech.isOn);
    bench.executor.advanceBy(5);
    EXPECT_EQ(text(), "busca el contrato");
}

TEST_F(ComposerTest, AMicrophoneThatFailsTooLateDisturbsNobody) {
    bench.speech.holdStart = true;
    bench.speech.startError = "sin red";
    flow.toggleComposerMic();
    bench.speech.holdStart = false;
    bench.speech.startError.clear();
    flow.begin(holdKey, write);
    flow.showListening();
    bench.speech.startError = "sin red";
    bench.speech.started.complete();
    bench.executor.advanceBy(1);
    EXPECT_EQ(bench.state.hud.get(), HUDPhase::listening());
}

TEST_F(ComposerTest, TheMicrophoneIsRefusedWhileADictationHasIt) {
    bench.settings.paused.set(true);
    flow.toggleComposerMic();
    bench.settings.paused.set(false);
    flow.begin(holdKey, write);
    flow.toggleComposerMic();
    EXPECT_FALSE(bench.state.composerRecording.get());
    EXPECT_THAT(bench.speech.log, ElementsAre("start es-ES"));
    bench.speech.lastWords = 1;
    flow.stopAndProcess();
    flow.toggleComposerMic();
    EXPECT_TRUE(bench.state.composerRecording.get());
    bench.executor.advanceBy(5);
    EXPECT_EQ(bench.history.items().at(0).query, "qué hora es") << "its last words were still to come";
}

TEST_F(ComposerTest, ItsQuestionGoesToTheAssistant) {
    flow.panelTarget.displayName = "Notas";
    flow.sendComposer();
    bench.state.composerText.set(" dime\n");
    bench.state.query.set("x");
    bench.state.section.set(PanelSection::accion);
    bench.state.composerScreen.set(true);
    bench.grants.screen = false;
    bench.permissions.refresh();
    flow.sendComposer();
    EXPECT_THAT(bench.grants.log, ElementsAre("request screen", "open Privacy_ScreenCapture"));
    EXPECT_EQ(text(), " dime\n") << "it can be sent once it is granted";
    EXPECT_THAT(bench.assistant.log, IsEmpty());
    bench.state.composerScreen.set(false);
    bench.speech.lastWords = 1;
    flow.toggleComposerMic();
    flow.sendComposer();
    flow.sendComposer();
    EXPECT_FALSE(bench.state.composerRecording.get());
    EXPECT_FALSE(bench.speech.isOn);
    EXPECT_THAT(bench.assistant.log, IsEmpty()) << "its last words are still to come";
    bench.executor.advanceBy(1);
    EXPECT_THAT(bench.assistant.log, ElementsAre("compose dime qué hora es in Notas"));
    EXPECT_EQ(text(), "");
    EXPECT_EQ(bench.state.query.get(), "");
    EXPECT_EQ(bench.state.section.get(), PanelSection::todo);
    EXPECT_EQ(bench.state.selectedID.get(), "id");

    bench.speech.isGivenUp = true;
    flow.toggleComposerMic();
    flow.sendComposer();
    bench.executor.advanceBy(1);
    EXPECT_EQ(bench.assistant.log.size(), 1U);
    EXPECT_EQ(text(), "qué hora es") << "perhaps half of what was said";
}

}  // namespace
}  // namespace dorix
