#include "fakes/dictation/DictationBench.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <string_view>
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

TEST_F(FlowFaultsTest, WordsThatAreLongInWritingAreInTheHistoryBeforeAnythingHappensToThem) {
    bench.writer.duration = 5;
    dictate("una frase que no se pierde");
    ASSERT_EQ(bench.history.items().size(), 1U);
    EXPECT_EQ(bench.history.items()[0].query, "una frase que no se pierde");
    EXPECT_EQ(bench.history.items()[0].meta.inserted, false);
    bench.executor.advanceBy(6);
    ASSERT_EQ(bench.history.items().size(), 1U);
    EXPECT_EQ(bench.history.items()[0].answer, "Una frase que no se pierde.");
    EXPECT_EQ(bench.history.items()[0].meta.inserted, true);
    bench.writer.duration = 0.4;
    bench.takesPastes = false;
    dictate("otra frase entera");
    EXPECT_EQ(bench.history.items()[0].answer, "Otra frase entera.") << "what is written stays so";
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

TEST_F(FlowFaultsTest, AtTheEndOfTheProgramEveryWordIsTypedOrKept) {
    struct Case {
        const char* what;
        double lastWords, writing, longest;
        bool stopped;
        std::vector<std::string> kept;
    };
    for (const auto& [what, lastWords, writing, longest, stopped, kept] : {
             Case{"nothing is slow", 0.5, 0, 1, true, {"Una frase larga."}},
             Case{"it is still being said", 0.5, 0, 1, false, {"una frase larga"}},
             Case{"the recogniser is slow: what it knows", 60, 0, 3.6, true, {"una frase"}},
             Case{"the writer is slow", 0.5, 60, 3.6, true, {"una frase larga"}},
         }) {
        SCOPED_TRACE(what);
        DictationBench own;
        own.speech.lastWords = lastWords;
        own.writer.duration = writing;
        own.speech.transcript = "una frase larga";
        own.controller.begin(holdKey, write);
        own.controller.showListening();
        own.speech.partial.set("una frase");
        own.executor.advanceBy(1);
        if (stopped) own.controller.stopAndProcess();
        TaskScope scope(own.executor);
        const auto end = scope.spawn(own.controller.settled());
        EXPECT_FALSE(own.controller.begin(holdKey, write));
        own.executor.advanceBy(longest);
        EXPECT_TRUE(end.isDone());
        EXPECT_FALSE(own.speech.isOn);
        std::vector<std::string> answers;
        for (const auto& item : own.history.items()) answers.push_back(item.answer);
        EXPECT_EQ(answers, kept);
    }
}

constexpr std::string_view digits = "bcdfghjklmnpqrstvwxz";

/// What is said is numbered, so that what comes of it can be counted and its order told.
class FlowSoak : public FlowFaultsTest {
 protected:
    /// A number in letters, which no rule of writing changes; and back.
    static std::string sentence(int number) {
        std::string letters;
        for (int place = 0; place < 5; ++place, number /= 20)
            letters.insert(letters.begin(), digits[static_cast<std::size_t>(number % 20)]);
        return "palabra a" + letters;
    }
    static int numberIn(std::string_view letters) {
        int number = 0;
        for (const char letter : letters) number = number * 20 + static_cast<int>(digits.find(letter));
        return number;
    }
    /// The numbers of all that stands in `text`, in that order.
    static std::vector<int> numbersIn(const std::string& text) {
        constexpr std::string_view before = "palabra a";
        std::vector<int> numbers;
        for (auto at = text.find(before); at != std::string::npos; at = text.find(before, at + 1))
            numbers.push_back(numberIn(text.substr(at + before.size(), 5)));
        return numbers;
    }
    int upTo(int most) { return std::uniform_int_distribution(0, most)(random); }
    bool rarely() { return upTo(20) == 0; }

    std::mt19937 random{1};
    int next = 0;  // the number of the next thing to be said
};

// Whatever is pressed and whatever breaks whenever, for two hours.
TEST_F(FlowSoak, NoWordIsLostAndNothingIsLeftRunning) {
    flow.closePanel = [this] { bench.state.panelOpen.set(false); };
    bench.speech.onStop = [this] { bench.speech.transcript = sentence(next++); };
    const auto held = [&] { return flow.source() == holdKey; };
    const std::vector<std::function<void()>> events{
        [&] { flow.shortcutPressed(upTo(3) != 0 ? write : ask); },
        [&] { flow.shortcutReleased(); },
        [&] { flow.begin(holdKey, write); },
        [&] { held() ? flow.showListening() : void(); },
        [&] { held() ? flow.stopAndProcess() : void(); },
        [&] { rarely() ? flow.cancelRecording() : void(); },
        [&] { flow.toggleComposerMic(); },
        [&] { flow.sendComposer(); },
        [&] { flow.dropComposerRecording(); },
        [&] { flow.reinsert({.answer = "otra vez"}); },
        [&] { flow.flash(HUDPhase::done("Historial guardado"), 4); },
        [&] { bench.state.panelOpen.set(!bench.state.panelOpen.get()); },
        [&] { rarely() && bench.speech.isOn ? bench.speech.onAudioLost() : void(); },
        [&] { rarely() ? void(bench.speech.hasGap = true) : void(); },
        [&] { bench.session.locked.set(rarely()); },
        [&] { bench.speech.isOn ? bench.speech.partial.set("palabra") : void(); },
        [&] { bench.speech.level.set(upTo(1) != 0 ? 0.5F : 0.0F); },
        [&] { bench.speech.startError = rarely() ? "roto" : ""; },
        [&] { bench.speech.lastWords = 0.1 * upTo(rarely() ? 100 : 10); },
        [&] { bench.writer.duration = 0.1 * upTo(rarely() ? 100 : 10); },
        [&] { bench.writer.breaks = rarely(); },
    };
    while (bench.executor.now() < 2 * 3600) {
        for (int step = 0; step < 100; ++step) {
            events[static_cast<std::size_t>(upTo(static_cast<int>(events.size()) - 1))]();
            bench.executor.advanceBy(0.05 * upTo(12));
            EXPECT_FALSE(flow.isRecording() && bench.state.composerRecording.get());
            EXPECT_TRUE(!bench.speech.isOn || flow.isRecording() || bench.state.composerRecording.get());
            EXPECT_FALSE(bench.state.handsFree.get() && !flow.isRecording());
            EXPECT_EQ(bench.state.hud.get() == HUDPhase::listening(), bench.flow.hud.isListening());
            EXPECT_FALSE(bench.flow.hud.isListening() && !flow.isRecording());
        }
        bench.session.locked.set(false);
        flow.shortcutReleased();
        flow.cancelRecording();
        flow.dropComposerRecording();
        for (int second = 0; second < 90 && bench.executor.hasTimers(); ++second) bench.executor.advanceBy(1);
        ASSERT_TRUE(flow.isIdle()) << bench.executor.now();
        ASSERT_FALSE(bench.speech.isOn || bench.executor.hasTimers()) << bench.executor.now();
    }
    std::string written;
    std::string asked;
    std::string composed;
    for (const auto& item : bench.history.items()) written.insert(0, item.query + "\n");
    for (const auto& request : bench.assistant.asked) asked += request.question + "\n";
    for (const auto& question : bench.assistant.log) composed += question + "\n";
    composed += bench.state.composerText.get();
    std::vector<int> arrived;
    for (const auto& words : {written, asked, composed}) {
        const auto numbers = numbersIn(words);
        EXPECT_TRUE(std::ranges::is_sorted(numbers)) << "in the order of speech";
        arrived.insert(arrived.end(), numbers.begin(), numbers.end());
    }
    std::ranges::sort(arrived);
    std::vector<int> said(static_cast<std::size_t>(next));
    std::ranges::generate(said, [number = 0]() mutable { return number++; });
    EXPECT_GT(next, 500);
    EXPECT_EQ(arrived, said) << "each once";
}

}  // namespace
}  // namespace dorix
