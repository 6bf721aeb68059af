#include "base/Log.h"
#include "base/async/ManualExecutor.h"
#include "fakes/FakeAudioEngine.h"
#include "fakes/FakeSpeechRecognition.h"
#include "speech/SpeechEngine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace dorix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Log lines of one test at a time; the sink itself can be set only once.
std::vector<std::string>& loggedLines() {
    static std::vector<std::string> lines;
    static const bool installed = [] {
        setLogSink([](std::string_view line) { lines.emplace_back(line); });
        return true;
    }();
    static_cast<void>(installed);
    return lines;
}

class SpeechEngineTest : public testing::Test {
 protected:
    SpeechEngineTest() {
        loggedLines().clear();
        makeEngine();
    }

    void makeEngine() {
        engine = std::make_unique<SpeechEngine>(executor, audio, recognition);
        engine->onAudioLost = [this] { ++lost; };
    }

    TaskHandle<void> start(const std::string& language = "en") {
        auto handle = scope.spawn(engine->start(language));
        executor.runPosted();
        return handle;
    }
    TaskHandle<std::string> stop() {
        auto handle = scope.spawn(engine->stop());
        executor.runPosted();
        return handle;
    }
    void prepare(const std::string& language = "en") {
        const auto handle = scope.spawn(engine->prepare(language));
        executor.runPosted();
        ASSERT_TRUE(handle.isDone());
    }

    static Task<void> note(TaskHandle<std::string> handle, std::string& into) {
        try {
            into = co_await handle;
        } catch (const Cancelled&) {
            into = "(cancelled)";
        } catch (...) {
            into = localizedDescription(std::current_exception());
        }
    }
    static Task<std::string> asText(TaskHandle<void> handle) {
        co_await handle;
        co_return "(done)";
    }

    /// What a task gave; "(pending)" when it has not ended.
    std::string outcome(const TaskHandle<std::string>& handle) {
        std::string into = "(pending)";
        TaskScope watching(executor);
        watching.spawn(note(handle, into));
        executor.runPosted();
        return into;
    }
    std::string outcome(const TaskHandle<void>& handle) {
        TaskScope watching(executor);
        return outcome(watching.spawn(asText(handle)));
    }

    /// Lets time pass while the microphone delivers sound ten times a second.
    void hear(double seconds) {
        for (double until = executor.now() + seconds; executor.now() < until;) {
            EXPECT_TRUE(audio.deliver(std::vector<float>(480, 0.5F)));
            executor.advanceBy(0.1);
        }
    }

    ManualExecutor executor;
    FakeAudioEngineFactory audio;
    FakeSpeechRecognition recognition;
    std::unique_ptr<SpeechEngine> engine;
    int lost = 0;
    TaskScope scope{executor};
};

TEST_F(SpeechEngineTest, ARecordingGivesItsTranscript) {
    std::vector<std::string> partials;
    const auto watching =
        engine->partial.subscribe([&](const std::string& text) { partials.push_back(text); });
    EXPECT_EQ(outcome(start()), "(done)");
    hear(0.2);
    EXPECT_GT(engine->level.get(), 0);
    recognition.current().say("hello ");
    recognition.current().say("hello world");
    recognition.current().sayFinal("Hello, world. ");
    recognition.current().say(" how");
    executor.runPosted();
    EXPECT_THAT(partials, ElementsAre("hello", "hello world", "Hello, world.", "Hello, world. how"));
    const auto stopped = stop();
    EXPECT_FALSE(audio.isRunning());
    EXPECT_EQ(engine->level.get(), 0);
    EXPECT_TRUE(recognition.current().finishCalled);
    EXPECT_EQ(outcome(stopped), "Hello, world. how");
    EXPECT_FALSE(engine->isRunning());
    EXPECT_FALSE(executor.hasTimers());
    EXPECT_EQ(outcome(stop()), "Hello, world. how");  // no recording runs: what is known
}

TEST_F(SpeechEngineTest, StopTakesTheWordsThatComeWhileTheRecogniserFinishes) {
    recognition.atFinish = FakeSpeechRecognition::AtFinish::stayOpen;
    start();
    const auto first = stop();
    const auto second = stop();
    recognition.current().sayFinal("late words");
    executor.runPosted();
    EXPECT_EQ(outcome(first), "(pending)");
    recognition.current().end();
    executor.runPosted();
    EXPECT_EQ(outcome(first), "late words");
    EXPECT_EQ(outcome(second), "late words");
    start();
    EXPECT_EQ(engine->partial.get(), "");
}

TEST_F(SpeechEngineTest, StopGivesUpOnARecogniserThatFallsSilentButNotOnASlowOne) {
    recognition.atFinish = FakeSpeechRecognition::AtFinish::stayOpen;
    start();
    hear(30);
    recognition.current().say("one");
    executor.runPosted();
    const auto stopped = stop();
    executor.advanceBy(9);
    recognition.current().say("one two");
    executor.advanceBy(9);
    recognition.current().say("one two three");
    executor.advanceBy(9.5);
    EXPECT_EQ(outcome(stopped), "(pending)");
    executor.advanceBy(1);
    EXPECT_EQ(outcome(stopped), "one two three");
    EXPECT_FALSE(engine->isRunning());
}

TEST_F(SpeechEngineTest, StopEndsThoughTheRecogniserTalksForEver) {
    recognition.atFinish = FakeSpeechRecognition::AtFinish::stayOpen;
    start();
    hear(2);
    const auto stopped = stop();
    for (int second = 0; second < 13; ++second) {
        recognition.current().say(std::to_string(second));
        executor.advanceBy(1);
    }
    EXPECT_EQ(outcome(stopped), "11");
}

TEST_F(SpeechEngineTest, PreparedLanguageOpensTheMicrophoneBeforeTheRest) {
    EXPECT_FALSE(engine->modelReady.get());
    prepare();
    EXPECT_TRUE(engine->modelReady.get());
    EXPECT_EQ(audio.opened, 0);
    recognition.formatGate.emplace();
    const auto started = start();
    EXPECT_TRUE(audio.deliver({0.1F, 0.2F, 0.3F}));  // no word is lost while the rest gets ready
    recognition.formatGate->complete();
    EXPECT_EQ(outcome(started), "(done)");
    EXPECT_EQ(audio.opened, 1);
    EXPECT_TRUE(recognition.current().input.has_value());
    const auto other = start("es");  // not prepared: opened after the rest
    EXPECT_EQ(outcome(other), "(done)");
    EXPECT_EQ(recognition.current().locale, "es-ES");
    EXPECT_EQ(audio.opened, 2);
}

TEST_F(SpeechEngineTest, ChangedAnalyserFormatReopensAndDropsWhatWasHeardInTheOldOne) {
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

TEST_F(SpeechEngineTest, FailuresReachTheCallerAndEndTheRecording) {
    EXPECT_EQ(outcome(start("xx")), "El idioma xx no está disponible para el dictado en este Mac.");
    recognition.format.reset();
    EXPECT_EQ(outcome(start()), "No se pudo preparar el formato de audio.");
    recognition.format = AudioFormat{16000, 1};
    audio.format = {48000, 0};
    EXPECT_EQ(outcome(start()), "No hay micrófono disponible.");
    audio.format = {48000, 2};
    audio.startError = "busy";
    EXPECT_EQ(outcome(start()), "busy");
    audio.startError.reset();
    recognition.startError = std::make_exception_ptr(MessageError("no model"));
    EXPECT_EQ(outcome(start()), "no model");
    EXPECT_FALSE(engine->isRunning());
    EXPECT_FALSE(audio.isRunning());
    EXPECT_FALSE(executor.hasTimers());
    recognition.startError = nullptr;
    EXPECT_EQ(outcome(start()), "(done)");
}

TEST_F(SpeechEngineTest, AFailedResultStreamIsLoggedAndWhatWasHeardIsKept) {
    start();
    recognition.current().sayFinal("so far");
    recognition.current().results.finish(std::make_exception_ptr(MessageError("broken")));
    executor.runPosted();
    EXPECT_THAT(loggedLines(), ElementsAre("DORIX: error de transcripción: broken"));
    EXPECT_TRUE(engine->isRunning());
    EXPECT_EQ(outcome(stop()), "so far");
}

TEST_F(SpeechEngineTest, InstallsMissingModelsTellingHowFarItIs) {
    recognition.status = SpeechRecognition::AssetStatus::supported;
    recognition.installGate.emplace();
    const auto started = start();
    EXPECT_EQ(engine->downloadProgress.get(), 0);
    recognition.progress(0.5);
    EXPECT_EQ(engine->downloadProgress.get(), 0.5);
    recognition.installGate->complete();
    EXPECT_EQ(outcome(started), "(done)");
    EXPECT_EQ(engine->downloadProgress.get(), std::nullopt);
    recognition.progress(0.9);  // late: the observation has ended
    EXPECT_EQ(engine->downloadProgress.get(), std::nullopt);

    engine->cancel();
    recognition.status = SpeechRecognition::AssetStatus::supported;
    recognition.installGate.emplace();
    recognition.installGate->fail(std::make_exception_ptr(MessageError("no network")));
    EXPECT_EQ(outcome(start()), "no network");
    EXPECT_EQ(engine->downloadProgress.get(), std::nullopt);
    EXPECT_FALSE(engine->isRunning());
}

TEST_F(SpeechEngineTest, CancelDuringTheDownloadStopsTheLaterSteps) {
    recognition.status = SpeechRecognition::AssetStatus::supported;
    recognition.installGate.emplace();
    const auto started = start();
    engine->cancel();
    recognition.installGate->complete();
    EXPECT_EQ(outcome(started), "(done)");
    EXPECT_EQ(audio.opened, 0);
    EXPECT_THAT(recognition.transcriptions, IsEmpty());
    EXPECT_FALSE(engine->modelReady.get());
}

TEST_F(SpeechEngineTest, CancellingTheWaitingTaskCancelsTheRecording) {
    prepare();
    recognition.formatGate.emplace();
    const auto started = start();
    EXPECT_TRUE(audio.isRunning());
    started.cancel();
    EXPECT_EQ(outcome(started), "(cancelled)");
    EXPECT_FALSE(audio.isRunning());
    EXPECT_FALSE(engine->isRunning());
}

TEST_F(SpeechEngineTest, ASecondStartCancelsTheFirst) {
    prepare();
    recognition.formatGate.emplace();
    const auto first = start();
    const auto second = start();
    recognition.formatGate->complete();
    EXPECT_EQ(outcome(first), "(done)");
    EXPECT_EQ(outcome(second), "(done)");
    EXPECT_EQ(recognition.transcriptions.size(), 1U);
    start();
    auto& stale = *recognition.transcriptions[0];
    stale.say("from the first");
    executor.runPosted();
    EXPECT_EQ(engine->partial.get(), "");
}

TEST_F(SpeechEngineTest, CancelWhileStoppingReleasesWhoeverWaits) {
    recognition.atFinish = FakeSpeechRecognition::AtFinish::stayOpen;
    start();
    recognition.current().sayFinal("words");
    executor.runPosted();
    const auto stopped = stop();
    engine->cancel();
    EXPECT_EQ(outcome(stopped), "");
    EXPECT_FALSE(executor.hasTimers());
}

TEST_F(SpeechEngineTest, AChangedMicrophoneIsReopenedAndTheTextGoesOn) {
    start();
    hear(0.5);
    recognition.current().sayFinal("before");
    audio.format = {44100, 2};
    EXPECT_TRUE(audio.changeConfiguration());
    EXPECT_THAT(loggedLines(), ElementsAre("DORIX: reabriendo el micrófono (cambio de micrófono)"));
    EXPECT_EQ(audio.opened, 2);
    EXPECT_TRUE(audio.deliver(std::vector<float>(960, 0.5F)));
    recognition.current().sayFinal("after");
    executor.runPosted();
    EXPECT_EQ(outcome(stop()), "before after");
    EXPECT_FALSE(audio.changeConfiguration());  // nobody observes a closed microphone
}

TEST_F(SpeechEngineTest, ASilentMicrophoneIsReopenedTwiceThenReportedOnce) {
    start();
    const std::string reopened = "DORIX: reabriendo el micrófono (no llega sonido)";
    executor.advanceTo(1.5);
    EXPECT_EQ(audio.opened, 1);
    executor.advanceTo(1.75);
    EXPECT_EQ(audio.opened, 2);
    executor.advanceTo(3.5);
    EXPECT_EQ(audio.opened, 3);
    executor.advanceTo(6.5);
    EXPECT_EQ(lost, 0);
    executor.advanceTo(6.75);
    EXPECT_EQ(lost, 1);
    // Another device changes nothing about that: it is told once in a recording.
    EXPECT_TRUE(audio.changeConfiguration());
    executor.advanceTo(30);
    EXPECT_EQ(lost, 1);
    EXPECT_THAT(loggedLines(),
                ElementsAre(reopened, reopened, "DORIX: reabriendo el micrófono (cambio de micrófono)"));
    engine->cancel();
    start();
    executor.advanceBy(7);
    EXPECT_EQ(lost, 2);  // the next recording starts afresh
}

TEST_F(SpeechEngineTest, SoundThatComesBackIsNoLoss) {
    start();
    executor.advanceBy(4);
    hear(20);
    EXPECT_EQ(audio.opened, 3);
    EXPECT_GT(engine->level.get(), 0);
    executor.advanceBy(0.6);
    EXPECT_EQ(engine->level.get(), 0);  // a silent line shows as silent
    EXPECT_EQ(lost, 0);
}

TEST_F(SpeechEngineTest, FailedReopeningIsLoggedAndEndsInTheReport) {
    start();
    audio.format = {0, 0};
    audio.changeConfiguration();
    EXPECT_EQ(loggedLines().back(), "DORIX: no se pudo reabrir el micrófono: No hay micrófono disponible.");
    EXPECT_TRUE(engine->isRunning());
    engine->onAudioLost = [this] {
        ++lost;
        engine->cancel();
    };
    executor.advanceTo(3.25);
    EXPECT_EQ(lost, 1);
    EXPECT_FALSE(engine->isRunning());
}

TEST_F(SpeechEngineTest, MayBeDestroyedAtAnyMoment) {
    prepare();
    recognition.formatGate.emplace();
    const auto starting = start();
    audio.deliver(std::vector<float>(480, 0.5F));  // a level is on its way
    engine.reset();
    recognition.formatGate->complete();
    EXPECT_EQ(outcome(starting), "(cancelled)");

    recognition.formatGate.reset();
    recognition.atFinish = FakeSpeechRecognition::AtFinish::stayOpen;
    makeEngine();
    start();
    hear(1);
    const auto stopping = stop();
    engine.reset();
    recognition.current().end();
    EXPECT_EQ(outcome(stopping), "");
    EXPECT_FALSE(executor.hasTimers());
    EXPECT_FALSE(audio.isRunning());
}

}  // namespace
}  // namespace dorix
