#include "SpeechEngineBench.h"

#include <gmock/gmock.h>

#include <array>
#include <string>
#include <vector>

namespace dorix {
namespace {

using SpeechMicrophoneTest = SpeechEngineBench;

TEST_F(SpeechMicrophoneTest, PreparedLanguageOpensTheMicrophoneBeforeTheRest) {
    EXPECT_FALSE(engine->modelReady.get());
    prepare();
    EXPECT_TRUE(engine->modelReady.get());
    EXPECT_EQ(audio.opened, 0);
    recognition.formatGate.emplace();
    const auto started = start();
    EXPECT_TRUE(audio.deliver({0.1F, 0.2F, 0.3F}));  // no word is lost while the rest gets ready
    recognition.formatGate->complete();
    EXPECT_EQ(outcome(started), "done");
    EXPECT_EQ(audio.opened, 1);
    EXPECT_TRUE(recognition.current().input.has_value());
    const auto other = start("es");  // not prepared: opened after the rest
    EXPECT_EQ(outcome(other), "done");
    EXPECT_EQ(recognition.current().locale, "es-ES");
    EXPECT_EQ(audio.opened, 2);
}

TEST_F(SpeechMicrophoneTest, ChangedAnalyserFormatReopensAndDropsWhatWasHeardInTheOldOne) {
    audio.format = {16000, 1};
    prepare();
    recognition.format = AudioFormat{8000, 1};
    recognition.formatGate.emplace();
    start();
    EXPECT_TRUE(audio.deliver(std::vector<float>(160, 0.5F)));
    recognition.formatGate->complete();
    executor.runPosted();
    EXPECT_EQ(audio.opened, 2);
    EXPECT_TRUE(audio.deliver(std::vector<float>(1600, 0.5F)));
    const auto input = scope.spawn([](AsyncStream<AnalyzerInput> from) -> Task<std::string> {
        const auto first = co_await from.next();
        co_return std::to_string(first->samples.size() / 100);
    }(*recognition.current().input));
    EXPECT_EQ(outcome(input), "7");  // the resampler holds a little back
}

TEST_F(SpeechMicrophoneTest, AChangedMicrophoneIsReopenedAndTheTextGoesOn) {
    start();
    hear(0.5);
    recognition.current().sayFinal("before");
    audio.format = {44100, 2};
    EXPECT_EQ(logOf([&] { audio.changeConfiguration(); }),
              "DORIX: reabriendo el micrófono (cambio de micrófono)\n");
    EXPECT_EQ(audio.opened, 2);
    EXPECT_TRUE(audio.deliver(std::vector<float>(960, 0.5F)));
    recognition.current().sayFinal("after");
    executor.runPosted();
    EXPECT_EQ(outcome(stop()), "before after");
    EXPECT_FALSE(audio.changeConfiguration());  // nobody observes a closed microphone
}

TEST_F(SpeechMicrophoneTest, ASilentMicrophoneIsReopenedTwiceThenReportedOnce) {
    start();
    const auto log = logOf([&] {
        for (const auto& [until, opened, losses] :
             {std::array{1.5, 1.0, 0.0}, {1.75, 2, 0}, {3.5, 3, 0}, {6.5, 3, 0}, {6.75, 3, 1}}) {
            executor.advanceTo(until);
            EXPECT_EQ(audio.opened, opened) << until;
            EXPECT_EQ(lost, losses) << until;
        }
        EXPECT_TRUE(audio.changeConfiguration());
        executor.advanceTo(30);
    });
    EXPECT_EQ(lost, 1) << "another device changes nothing about that: it is told once in a recording";
    EXPECT_EQ(log,
              "DORIX: reabriendo el micrófono (no llega sonido)\n"
              "DORIX: reabriendo el micrófono (no llega sonido)\n"
              "DORIX: reabriendo el micrófono (cambio de micrófono)\n");
    engine->cancel();
    start();
    executor.advanceBy(7);
    EXPECT_EQ(lost, 2) << "the next recording starts afresh";
}

TEST_F(SpeechMicrophoneTest, SoundThatComesBackIsNoLoss) {
    start();
    executor.advanceBy(4);
    hear(20);
    EXPECT_EQ(audio.opened, 3);
    EXPECT_GT(engine->level.get(), 0);
    executor.advanceBy(0.6);
    EXPECT_EQ(engine->level.get(), 0);  // a silent line shows as silent
    EXPECT_EQ(lost, 0);
}

TEST_F(SpeechMicrophoneTest, ItTellsWhetherSoundIsMissing) {
    start();
    executor.advanceBy(1.4);
    EXPECT_FALSE(engine->lacksSound()) << "a device that takes its time to begin has missed nothing";
    hear(1);
    audio.changeConfiguration();
    EXPECT_FALSE(engine->lacksSound()) << "another device goes on";
    hear(1);
    executor.advanceBy(1.2);
    EXPECT_TRUE(engine->lacksSound());
    executor.advanceBy(0.8);
    hear(1);
    EXPECT_TRUE(engine->lacksSound()) << "it came back, but not what was said meanwhile";
    start();
    hear(1);
    EXPECT_FALSE(engine->lacksSound());
    audio.format = {0, 0};
    audio.changeConfiguration();
    EXPECT_TRUE(engine->lacksSound()) << "no device is left";
}

TEST_F(SpeechMicrophoneTest, FailedReopeningIsLoggedAndEndsInTheReport) {
    start();
    audio.format = {0, 0};
    EXPECT_THAT(logOf([&] { audio.changeConfiguration(); }),
                testing::EndsWith("no se pudo reabrir el micrófono: No hay micrófono disponible.\n"));
    EXPECT_TRUE(engine->isRunning());
    engine->onAudioLost = [this] {
        ++lost;
        engine->cancel();
    };
    executor.advanceTo(2.5);
    audio.format = {48000, 1};
    executor.advanceTo(2.75);
    EXPECT_TRUE(audio.isRunning()) << "one that comes back is taken, however often reopening has failed";
    audio.format = {0, 0};
    audio.changeConfiguration();
    executor.advanceTo(6);
    EXPECT_EQ(lost, 1);
    EXPECT_FALSE(engine->isRunning());
}

}  // namespace
}  // namespace dorix
