#include "fakes/dictation/DictationBench.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <random>
#include <vector>

namespace dorix {
namespace {

using enum DictationController::Mode;
using enum DictationController::Source;

class FlowFaultsTest : public testing::Test {
 protected:
    FlowFaultsTest() { testing::internal::CaptureStderr(); }  // the log of what broke
    ~FlowFaultsTest() override { testing::internal::GetCapturedStderr(); }

    void dictateTo(DictationController& controller, std::string transcript) {
        bench.speech.transcript = std::move(transcript);
        controller.begin(holdKey, write);
        controller.showListening();
        bench.executor.advanceBy(0.5);
        controller.stopAndProcess();
    }
    void dictate(std::string transcript) {
        dictateTo(flow, std::move(transcript));
        bench.executor.advanceBy(1);
    }

    DictationBench bench{DictationBench::everything};
    DictationController& flow = bench.controller;
};

TEST_F(FlowFaultsTest, WordsThatNobodyCouldCarryOnAreInTheHistory) {
    bench.writer.breaks = true;
    dictate("una frase que no se pierde");
    EXPECT_EQ(bench.state.hud.get(), HUDPhase::error("the writer broke"));
    EXPECT_FALSE(flow.busy().get());
    ASSERT_EQ(bench.history.items().size(), 1U);
    EXPECT_EQ(bench.history.items()[0].answer, "una frase que no se pierde");
    EXPECT_EQ(bench.history.items()[0].meta.inserted, false);
    bench.writer.breaks = false;
    dictate("hola");
    EXPECT_EQ(bench.inserted, "Hola");
}

TEST_F(FlowFaultsTest, WhatOthersCancelledEndsInSilence) {
    bench.selection.selected = SelectedText{"texto", true};
    bench.assistant.cancelsTransform = true;
    dictate("tradúcelo al inglés");
    EXPECT_EQ(bench.state.hud.get(), HUDPhase::hidden());
    EXPECT_TRUE(flow.isIdle());
}

TEST_F(FlowFaultsTest, MayBeDestroyedAtAnyMoment) {
    bench.speech.lastWords = 0.2;
    for (const auto* said : {"dile que sí", "qué dice este correo", "tradúcelo al inglés", "hola"}) {
        for (int beats = 0; beats < 12; ++beats) {
            auto doomed = std::make_unique<DictationBench::Flow>(bench, DictationBench::everything);
            dictateTo(doomed->controller, said);
            bench.executor.advanceBy(0.1 * beats);
            doomed.reset();
            bench.executor.advanceBy(5);
            EXPECT_FALSE(bench.speech.onAudioLost);
        }
    }
}

// Whatever is pressed whenever: once all keys are up, nothing runs any more and no microphone is left open.
TEST_F(FlowFaultsTest, AnyOrderOfEventsComesToRest) {
    bench.speech.lastWords = 0.3;
    flow.closePanel = [this] { bench.state.panelOpen.set(false); };
    std::mt19937 random(1);
    const auto upTo = [&](int most) { return std::uniform_int_distribution(0, most)(random); };
    const auto held = [&] { return flow.source() == holdKey; };
    const std::vector<std::function<void()>> events{
        [&] { flow.shortcutPressed(upTo(1) != 0 ? write : ask); },
        [&] { flow.shortcutReleased(); },
        [&] { flow.begin(holdKey, write); },
        [&] { held() ? flow.showListening() : void(); },
        [&] { held() ? flow.stopAndProcess() : void(); },
        [&] { flow.cancelRecording(); },
        [&] { flow.toggleComposerMic(); },
        [&] { flow.sendComposer(); },
        [&] { flow.reinsert({.answer = "otra vez"}); },
        [&] { bench.state.panelOpen.set(!bench.state.panelOpen.get()); },
        [&] { bench.state.composerScreen.set(upTo(1) != 0); },
        [&] { bench.speech.onAudioLost ? bench.speech.onAudioLost() : void(); },
        [&] { bench.speech.partial.set(upTo(1) != 0 ? "hola" : "hola a todos"); },
        [&] { bench.speech.level.set(upTo(1) != 0 ? 0.5F : 0.0F); },
        [&] { bench.speech.transcript = upTo(1) != 0 ? "qué dice este correo" : "dile que sí"; },
        [&] { bench.speech.startError = upTo(3) != 0 ? "" : "roto"; },
        [&] { bench.writer.breaks = upTo(3) == 0; },
    };
    for (int round = 0; round < 300; ++round) {
        for (int step = 0; step < 40; ++step) {
            events[static_cast<std::size_t>(upTo(static_cast<int>(events.size()) - 1))]();
            bench.executor.advanceBy(0.05 * upTo(12));
            EXPECT_FALSE(flow.busy().get() && flow.isRecording());
            EXPECT_FALSE(bench.state.handsFree.get() && !flow.isRecording());
        }
        flow.shortcutReleased();
        flow.cancelRecording();
        if (bench.state.composerRecording.get()) flow.toggleComposerMic();
        bench.executor.advanceBy(10);
        ASSERT_TRUE(flow.isIdle()) << "round " << round;
        ASSERT_FALSE(bench.speech.isOn) << "round " << round;
        ASSERT_FALSE(bench.executor.hasTimers()) << "round " << round;
    }
}

}  // namespace
}  // namespace dorix
