#include "base/Error.h"
#include "base/async/ManualExecutor.h"
#include "base/async/TaskScope.h"
#include "fakes/FakeRecogniserProcesses.h"
#include "speech/recogniser/LocalRecognition.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace dorix {
namespace {

using Fault = FakeRecogniserProcesses::Fault;

constexpr double idle = 600;

ModelRequest model(const std::string& language) {
    return {.engine = "pocketsphinx",
            .kind = "embedded",
            .language = language,
            .folder = "/models/" + language,
            .files = {},
            .sha256 = {},
            .parameters = {},
            .engineFolder = {},
            .server = {}};
}

/// Sound in which the recogniser hears the numbers from 1 to `count`, and those as text.
std::vector<float> numbers(int count) {
    std::vector<float> sound;
    for (int number = 1; number <= count; ++number)
        sound.insert(sound.end(), FakeRecogniserProcesses::wordSamples, static_cast<float>(number) / 1000);
    return sound;
}
std::string text(int count) {
    std::string words = "1";
    for (int number = 2; number <= count; ++number) words += " " + std::to_string(number);
    return words;
}

class LocalRecognitionTest : public testing::Test {
 protected:
    struct Transcription {
        std::unique_ptr<SpeechAnalyzer> analyzer;
        AsyncStream<AnalyzerInput> input;
        std::vector<std::string> partials;
        std::string final;
        std::string error;
        bool ended = false;
    };

    Task<void> run(std::shared_ptr<Transcription> into) {
        const auto results = into->analyzer->results();
        co_await into->analyzer->start(into->input);
        try {
            while (const auto result = co_await results.next()) {
                if (result->isFinal) into->final = result->text;
                if (!result->isFinal) into->partials.push_back(result->text);
            }
        } catch (const Error& error) {
            into->error = error.localizedDescription();
        }
        into->ended = true;
    }
    std::shared_ptr<Transcription> begin(const std::string& language = "es") {
        auto made = std::make_shared<Transcription>();
        made->analyzer = recognition->makeAnalyzer(language);
        scope.spawn(run(made));
        executor.runPosted();
        return made;
    }
    /// A quarter of a second at a time, as it is spoken.
    void speak(const Transcription& transcription, const std::vector<float>& sound) {
        for (std::size_t at = 0; at < sound.size(); at += 4000) {
            const auto end = std::min(at + 4000, sound.size());
            transcription.input.push({std::vector<float>(sound.begin() + static_cast<std::ptrdiff_t>(at),
                                                         sound.begin() + static_cast<std::ptrdiff_t>(end))});
            executor.advanceBy(0.25);
        }
    }
    bool load(const std::string& language = "es") {
        const auto task = scope.spawn(recognition->bestAvailableAudioFormat(language));
        executor.advanceBy(60);
        EXPECT_TRUE(task.isDone());
        bool has = false;
        scope.spawn([](TaskHandle<std::optional<AudioFormat>> loaded, bool& into) -> Task<void> {
            into = (co_await loaded).has_value();
        }(task, has));
        executor.runPosted();
        return has;
    }

    ManualExecutor executor;
    FakeRecogniserProcesses processes{executor};
    std::unique_ptr<LocalRecognition> recognition = std::make_unique<LocalRecognition>(
        executor, processes, [](const std::string& language) { return std::optional(model(language)); });
    TaskScope scope{executor};
};

TEST_F(LocalRecognitionTest, AProcessIsStartedOnceAndGoesWhenUnused) {
    EXPECT_TRUE(load());
    EXPECT_TRUE(load());
    EXPECT_EQ(processes.launches, 1);
    const auto first = begin();
    speak(*first, numbers(40));
    EXPECT_THAT(first->partials, testing::Contains(text(20)));
    executor.advanceBy(2 * idle);
    EXPECT_EQ(processes.running, 1) << "an utterance is under way";
    first->input.finish();
    executor.runPosted();
    EXPECT_EQ(first->final, text(40));
    EXPECT_TRUE(first->ended);
    executor.advanceBy(idle - 1);
    EXPECT_EQ(processes.running, 1);
    executor.advanceBy(2);
    EXPECT_EQ(processes.running, 0);
    // The sound waits for the next one.
    const auto second = begin();
    speak(*second, numbers(3));
    second->input.finish();
    executor.runPosted();
    EXPECT_EQ(second->final, text(3));
    EXPECT_EQ(processes.launches, 2);
}

TEST_F(LocalRecognitionTest, AnotherLanguageIsAnotherProcessWhenItsTurnComes) {
    const auto spanish = begin("es");
    speak(*spanish, numbers(2));
    EXPECT_TRUE(load("en")) << "nobody waits for the other one";
    const auto english = begin("en");
    speak(*english, numbers(3));
    EXPECT_EQ(processes.opened.size(), 1U);
    spanish->input.finish();
    english->input.finish();
    executor.runPosted();
    EXPECT_EQ(spanish->final, text(2));
    EXPECT_EQ(english->final, text(3));
    EXPECT_EQ(processes.opened.back().language, "en");
    EXPECT_EQ(processes.running, 1);
}

TEST_F(LocalRecognitionTest, ARecogniserThatFailsOnceCostsNoWord) {
    std::mt19937 random(7);
    std::uniform_int_distribution<std::uint64_t> moment(0, 60 * 1600);
    for (int round = 0; round < 200; ++round) {
        const auto fault = static_cast<Fault>(round % 3);
        recognition->letGo("/models/es");
        processes.faults = {{moment(random), fault}};
        const auto said = begin();
        speak(*said, numbers(60));
        said->input.finish();
        executor.advanceBy(30);
        ASSERT_EQ(said->final, text(60)) << round;
        ASSERT_EQ(said->error, "");
        // What was told is never taken back.
        for (std::size_t i = 1; i < said->partials.size(); ++i)
            ASSERT_TRUE(said->partials[i].starts_with(said->partials[i - 1])) << round;
    }
}

TEST_F(LocalRecognitionTest, ARecogniserThatHangsIsReplacedWhileOneTalksOn) {
    for (const std::uint64_t heard : {0U, 4000U}) {
        recognition->letGo("/models/es");
        processes.launches = 0;
        processes.faults = {{heard, Fault::hangs}};
        const auto said = begin();
        speak(*said, numbers(250));
        EXPECT_EQ(processes.launches, 2) << heard;
        EXPECT_EQ(said->partials.back(), text(250));
        said->input.finish();
        executor.runPosted();
        EXPECT_EQ(said->final, text(250));
    }
}

TEST_F(LocalRecognitionTest, TwoFailuresAreAnErrorAndTheNextUtteranceIsHeard) {
    processes.faults = {{1600, Fault::dies}, {0, Fault::hangs}};
    const auto said = begin();
    speak(*said, numbers(5));
    const auto next = begin();
    next->input.push({numbers(4)});
    next->input.finish();
    executor.advanceBy(30);
    EXPECT_EQ(said->error, "No se pudo preparar el formato de audio.");
    EXPECT_EQ(next->final, text(4));
    // Where nothing is under way it is the loading that fails.
    recognition->letGo("/models/es");
    processes.faults = {{0, Fault::hangs}, {0, Fault::babbles}};
    std::string refused;
    recognition->onRefused([&](const ModelRequest& model) { refused = model.folder; });
    EXPECT_FALSE(load());
    EXPECT_EQ(refused, "/models/es") << "a model that kills who loads it";
    EXPECT_TRUE(load());
}

TEST_F(LocalRecognitionTest, AModelThatIsRefusedIsNotTriedAgain) {
    processes.refusal = "no model";
    std::string refused;
    recognition->onRefused([&](const ModelRequest& model) { refused = model.folder; });
    EXPECT_FALSE(load());
    EXPECT_EQ(processes.launches, 1);
    EXPECT_EQ(refused, "/models/es");
    const auto said = begin();
    executor.runPosted();
    EXPECT_EQ(said->error, "No se pudo preparar el formato de audio.");
    EXPECT_EQ(processes.running, 0);
    processes.isThere = false;
    EXPECT_FALSE(load());
}

TEST_F(LocalRecognitionTest, WhatIsSaidGoesToTheNextModelWhereOneCannotBeLoaded) {
    std::string best = "es";
    const auto choose = [&](const std::string&) { return std::optional(model(best)); };
    recognition = std::make_unique<LocalRecognition>(executor, processes, choose, choose);
    recognition->onRefused([&](const ModelRequest&) {
        best = "fr";
        processes.refusal.reset();
    });
    processes.refusal = "no model";
    EXPECT_TRUE(load());
    EXPECT_EQ(processes.opened.back().language, "fr");
    // Also in the middle of an utterance, whose process has died.
    best = "es";
    EXPECT_EQ(recognition->supportedLocale("es"), "es");
    EXPECT_TRUE(load());
    const auto said = begin();
    speak(*said, numbers(5));
    processes.refusal = "no model";
    recognition->letGo("/models/es");
    EXPECT_EQ(processes.running, 1) << "not in the middle of it";
    processes.dieAll();
    said->input.finish();
    executor.advanceBy(1);
    EXPECT_EQ(said->final, text(5));
    EXPECT_EQ(processes.opened.back().language, "fr");
}

TEST_F(LocalRecognitionTest, WhereAServerFailsAModelTakesItsPlace) {
    const auto server = [](const std::string& language) {
        auto request = model(language);
        request.server.address = "http://localhost:1";
        return std::optional(request);
    };
    const auto local = [](const std::string& language) { return std::optional(model(language)); };
    recognition = std::make_unique<LocalRecognition>(executor, processes, server, local);
    std::string failure;
    recognition->onServerFailed([&](const std::string& why) { failure = why; });
    processes.faults = {{8000, Fault::dies}, {8000, Fault::dies}};
    const auto said = begin();
    speak(*said, numbers(5));
    said->input.finish();
    executor.advanceBy(1);
    EXPECT_EQ(said->final, text(5));
    EXPECT_EQ(processes.opened.back().server.address, "");
    EXPECT_EQ(failure, "No se pudo preparar el formato de audio.");
    // One that is waited for does not keep the next utterance waiting.
    processes.faults = {{8000, Fault::hangs}};
    const auto dropped = begin();
    speak(*dropped, numbers(5));
    dropped->input.finish();
    executor.advanceBy(1);
    const auto next = begin();
    next->input.push({numbers(4)});
    next->input.finish();
    dropped->analyzer.reset();
    executor.runPosted();
    EXPECT_EQ(next->final, text(4));
}

TEST_F(LocalRecognitionTest, WhatIsDroppedMakesRoomForTheNext) {
    auto dropped = begin();
    speak(*dropped, numbers(30));
    const auto next = begin();
    next->input.push({numbers(4)});
    next->input.finish();
    dropped->analyzer.reset();
    executor.runPosted();
    EXPECT_TRUE(dropped->ended);
    EXPECT_EQ(dropped->final, "");
    EXPECT_EQ(next->final, text(4));
    EXPECT_EQ(processes.launches, 1);
    // Its owner may go while it is at work.
    const auto last = begin();
    speak(*last, numbers(3));
    recognition.reset();
    next->analyzer.reset();
    last->analyzer.reset();
    executor.runPosted();
    EXPECT_EQ(processes.running, 0);
}

}  // namespace
}  // namespace dorix
