#include "SpeechEngineBench.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace dorix {
namespace {

using testing::ElementsAre;

using SpeechEngineTest = SpeechEngineBench;

TEST_F(SpeechEngineTest, ARecordingGivesItsTranscript) {
    std::vector<std::string> partials;
    const auto watching =
        engine->partial.subscribe([&](const std::string& text) { partials.push_back(text); });
    EXPECT_EQ(outcome(start()), "done");
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
    EXPECT_EQ(outcome(first), "pending");
    recognition.current().end();
    executor.runPosted();
    EXPECT_EQ(outcome(first), "late words");
    EXPECT_EQ(outcome(second), "late words");
    EXPECT_FALSE(executor.hasTimers());
}

TEST_F(SpeechEngineTest, TheNextRecordingIsHeardWhileTheOneBeforeIsStillMadeOut) {
    recognition.atFinish = FakeSpeechRecognition::AtFinish::stayOpen;
    start();
    hear(1);
    const auto first = stop();
    start();
    EXPECT_TRUE(engine->isBehind());
    hear(1);
    recognition.transcriptions[0]->say("first");
    executor.runPosted();
    EXPECT_EQ(engine->partial.get(), "") << "that was the one before";
    const auto second = stop();
    const auto third = start();
    engine->cancel();
    executor.advanceBy(9.5);
    EXPECT_EQ(outcome(second), "pending");
    recognition.transcriptions[0]->sayFinal("first words");
    recognition.transcriptions[0]->end();
    executor.advanceBy(9.5);
    EXPECT_EQ(outcome(first), "first words");
    EXPECT_EQ(outcome(second), "pending") << "its time began with its turn";
    recognition.transcriptions[1]->say("second");
    executor.runPosted();
    engine->hurry();
    EXPECT_EQ(outcome(second), "second");
    EXPECT_EQ(outcome(third), "done");
    EXPECT_FALSE(executor.hasTimers());
}

TEST_F(SpeechEngineTest, StoppedBeforeTheRecogniserWasReadyItGivesWhatWasHeard) {
    recognition.atFinish = FakeSpeechRecognition::AtFinish::stayOpen;
    prepare();
    recognition.formatGate.emplace();
    const auto first = start();
    hear(1);
    const auto words = stop();
    EXPECT_FALSE(audio.isRunning()) << "the user has ended it";
    start("es");
    recognition.formatGate->complete();
    EXPECT_EQ(outcome(first), "done");
    ASSERT_EQ(recognition.transcriptions.size(), 2U);
    EXPECT_EQ(recognition.transcriptions[0]->locale, "en-US");
    recognition.transcriptions[0]->sayFinal("at once");
    recognition.transcriptions[0]->end();
    executor.runPosted();
    EXPECT_EQ(outcome(words), "at once");
    EXPECT_TRUE(audio.isRunning());
}

TEST_F(SpeechEngineTest, ARecogniserThatNeverEndsHasFailedAndASlowOneHasNot) {
    recognition.atFinish = FakeSpeechRecognition::AtFinish::stayOpen;
    start();
    hear(30);
    recognition.current().say("one");
    auto stopped = stop();
    executor.advanceBy(200);
    recognition.current().sayFinal("one two");
    EXPECT_EQ(outcome(stopped), "pending");
    recognition.current().end();
    EXPECT_EQ(outcome(stopped), "one two");
    start();
    hear(2);
    stopped = stop();
    for (int second = 0; second < 129; ++second) {
        recognition.current().say(std::to_string(second));
        executor.advanceBy(1);
    }
    EXPECT_EQ(outcome(stopped), "No se pudo preparar el formato de audio.");
    EXPECT_FALSE(engine->isRunning());
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
    EXPECT_FALSE(engine->isRunning() || audio.isRunning() || executor.hasTimers());
    EXPECT_EQ(outcome(start()), "done");
}

TEST_F(SpeechEngineTest, AFailedResultStreamIsLoggedAndToldAndTheNextRecordingIsHeard) {
    start();
    recognition.current().sayFinal("so far");
    int failures = 0;
    engine->onRecognitionFailed = [&] { ++failures; };
    recognition.current().results.finish(std::make_exception_ptr(MessageError("broken")));
    EXPECT_EQ(logOf([&] { executor.runPosted(); }), "DORIX: error de transcripción: broken\n");
    EXPECT_EQ(failures, 1);
    EXPECT_TRUE(engine->isRunning());
    const auto failed = stop();
    EXPECT_EQ(outcome(failed), "broken");
    start();
    recognition.current().sayFinal("more");
    EXPECT_EQ(outcome(stop()), "more");
}

TEST_F(SpeechEngineTest, InstallsMissingModelsTellingHowFarItIs) {
    const auto install = [&] {
        recognition.status = SpeechRecognition::AssetStatus::supported;
        recognition.installGate.emplace();
        return start();
    };
    auto started = install();
    EXPECT_EQ(engine->downloadProgress.get(), 0);
    recognition.progress(0.5);
    EXPECT_EQ(engine->downloadProgress.get(), 0.5);
    engine->cancel();
    recognition.installGate->complete();
    EXPECT_EQ(outcome(started), "done");
    EXPECT_EQ(audio.opened, 0) << "cancelled during the download, the later steps are left out";
    EXPECT_FALSE(engine->modelReady.get());
    recognition.progress(0.9);  // late: the observation has ended
    EXPECT_EQ(engine->downloadProgress.get(), std::nullopt);

    started = install();
    recognition.installGate->fail(std::make_exception_ptr(MessageError("no network")));
    EXPECT_EQ(outcome(started), "no network");
    EXPECT_EQ(engine->downloadProgress.get(), std::nullopt);
    EXPECT_FALSE(engine->isRunning());
    started = install();
    recognition.installGate->complete();
    EXPECT_EQ(outcome(started), "done");
    EXPECT_TRUE(audio.isRunning());
}

TEST_F(SpeechEngineTest, ASecondStartCancelsTheFirstAndAStopRequestTheRecording) {
    prepare();
    recognition.formatGate.emplace();
    const auto first = start();
    const auto second = start();
    recognition.formatGate->complete();
    EXPECT_EQ(outcome(first), "done");
    EXPECT_EQ(outcome(second), "done");
    EXPECT_EQ(recognition.transcriptions.size(), 1U);
    start();
    recognition.transcriptions[0]->say("from the first");
    executor.runPosted();
    EXPECT_EQ(engine->partial.get(), "");

    recognition.formatGate.emplace();
    const auto third = start();
    EXPECT_TRUE(audio.isRunning());
    third.cancel();
    EXPECT_EQ(outcome(third), "cancelled");
    EXPECT_FALSE(audio.isRunning() || engine->isRunning());
}

TEST_F(SpeechEngineTest, MayBeDestroyedAtAnyMoment) {
    prepare();
    recognition.formatGate.emplace();
    const auto starting = start();
    audio.deliver(std::vector<float>(480, 0.5F));  // a level is on its way
    engine.reset();
    recognition.formatGate->complete();
    EXPECT_EQ(outcome(starting), "cancelled");

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
