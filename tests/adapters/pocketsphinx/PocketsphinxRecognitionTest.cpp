#include "adapters/EventLoop.h"
#include "adapters/pocketsphinx/Speaker.h"
#include "base/Error.h"
#include "base/async/TaskScope.h"
#include "base/text/Text.h"
#include "fakes/FakeAudioEngine.h"
#include "linux/pocketsphinx/PocketsphinxRecognition.h"
#include "speech/Join.h"
#include "speech/SpeechEngine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

namespace dorix {
namespace {

namespace fs = std::filesystem;

/// Sentences of everyday dictation.
const std::vector<std::string> sentences{
    "please send the report to the whole team before noon",
    "i will be ten minutes late for the meeting this afternoon",
    "can you tell me where the nearest train station is",
    "we need to talk about the budget for next year",
    "thank you very much for your help with the project",
    "the weather is nice today and we should go for a walk",
    "remember to buy milk and bread on the way home",
    "she said that the new office will open in september",
    "let me know if you have any questions about the contract",
    "i think we should move the call to next friday morning",
};

/// How many words must be put in, taken out or replaced to make one text the other.
std::size_t wordErrors(const std::string& said, const std::string& heard) {
    const auto a = text::words(said);
    const auto b = text::words(heard);
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j < row.size(); ++j) row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        auto diagonal = std::exchange(row[0], i);
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const auto replaced = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
            diagonal = std::exchange(row[j], std::min({row[j] + 1, row[j - 1] + 1, replaced}));
        }
    }
    return row.back();
}

/// What is heard varies with what the decoder has heard before: enough to see that nothing got lost.
bool isMostly(const std::string& said, const std::string& heard) {
    return wordErrors(said, heard) * 4 <= text::words(said).size();
}

/// One analyzer at work.
struct Transcription {
    std::unique_ptr<SpeechAnalyzer> analyzer;
    AsyncStream<AnalyzerInput> input;
    std::vector<std::string> finals;
    std::vector<std::string> partials;
    std::string error;
    bool ended = false;
    bool flushed = false;

    std::string text() const {
        return std::accumulate(finals.begin(), finals.end(), std::string(),
                               [](const auto& a, const auto& b) { return join(a, b); });
    }
    void hear(const std::vector<float>& samples) const {
        for (std::size_t at = 0; at < samples.size(); at += 320) {
            const auto end = std::min(at + 320, samples.size());
            input.push({std::vector<float>(samples.begin() + static_cast<std::ptrdiff_t>(at),
                                           samples.begin() + static_cast<std::ptrdiff_t>(end))});
        }
    }
};

std::vector<float> silence(double seconds) {
    return std::vector<float>(static_cast<std::size_t>(seconds * 16000));
}

class PocketsphinxRecognitionTest : public testing::Test {
 protected:
    std::unique_ptr<Transcription> begin() {
        auto made = std::make_unique<Transcription>();
        made->analyzer = recognition->makeAnalyzer("en-US");
        scope.spawn(read(*made, made->analyzer->results()));
        scope.spawn(made->analyzer->start(made->input));
        return made;
    }
    static Task<void> read(Transcription& into, AsyncStream<TranscriptionResult> results) {
        try {
            while (const auto result = co_await results.next()) {
                (result->isFinal ? into.finals : into.partials).push_back(result->text);
            }
        } catch (const Error& error) {
            into.error = error.localizedDescription();
        }
        into.ended = true;
    }
    static Task<void> flush(Transcription& transcription) {
        co_await transcription.analyzer->finalizeAndFinishThroughEndOfInput();
        transcription.flushed = true;
    }
    /// Ends the input and waits for the rest.
    void finish(Transcription& transcription) {
        transcription.input.finish();
        scope.spawn(flush(transcription));
        EXPECT_TRUE(loop.runUntil([&] { return transcription.ended && transcription.flushed; }, 60));
    }

    std::optional<AudioFormat> loadedFormat() {
        std::optional<AudioFormat> found;
        bool done = false;
        scope.spawn(
            [](PocketsphinxRecognition& of, std::optional<AudioFormat>& into, bool& ended) -> Task<void> {
                into = co_await of.bestAvailableAudioFormat("en-US");
                ended = true;
            }(*recognition, found, done));
        EXPECT_TRUE(loop.runUntil([&] { return done; }, 60));
        return found;
    }

    EventLoop loop;
    Speaker speaker;
    std::unique_ptr<PocketsphinxRecognition> recognition = std::make_unique<PocketsphinxRecognition>();
    TaskScope scope{loop.main};
};

TEST_F(PocketsphinxRecognitionTest, UnderstandsEverydaySentences) {
    ASSERT_EQ(loadedFormat(), (AudioFormat{16000, 1}));
    std::size_t errors = 0;
    std::size_t words = 0;
    double spoken = 0;
    double busy = 0;
    for (const auto& sentence : sentences) {
        const auto sound = speaker.say(sentence);
        const double before = loop.main.now();
        const auto transcription = begin();
        transcription->hear(sound);
        finish(*transcription);
        busy += loop.main.now() - before;
        spoken += static_cast<double>(sound.size()) / 16000;
        errors += wordErrors(sentence, transcription->text());
        words += text::words(sentence).size();
        EXPECT_THAT(transcription->partials, testing::Not(testing::IsEmpty())) << sentence;
        EXPECT_EQ(transcription->error, "");
    }
    const double accuracy = 1 - static_cast<double>(errors) / static_cast<double>(words);
    RecordProperty("accuracy", std::to_string(accuracy));
    RecordProperty("realTimeFactor", std::to_string(busy / spoken));
    EXPECT_GE(accuracy, 0.9);
}

TEST_F(PocketsphinxRecognitionTest, PausesCutTheSoundIntoFinalResultsWithoutLosingWords) {
    const auto transcription = begin();
    for (const std::size_t index : {2U, 4U, 8U}) {
        transcription->hear(speaker.say(sentences[index]));
        transcription->hear(silence(1));
    }
    ASSERT_TRUE(
        loop.runUntil([&] { return transcription->finals.size() == 3; }, 60));  // before the end of the input
    EXPECT_TRUE(isMostly(sentences[2] + " " + sentences[4] + " " + sentences[8], transcription->text()))
        << transcription->text();
    finish(*transcription);
    EXPECT_EQ(transcription->finals.size(), 3U);
}

TEST_F(PocketsphinxRecognitionTest, AShortSoundAtFirstDoesNotSpoilWhatFollows) {
    for (const auto& sentence : {sentences[0], sentences[3]}) {
        recognition = std::make_unique<PocketsphinxRecognition>();
        auto sound = speaker.say(sentence);
        const auto spoken = sound;
        sound.resize(4800);
        const auto tap = begin();
        tap->hear(sound);
        finish(*tap);
        const auto transcription = begin();
        transcription->hear(spoken);
        finish(*transcription);
        EXPECT_TRUE(isMostly(sentence, transcription->text())) << transcription->text();
    }
}

TEST_F(PocketsphinxRecognitionTest, NothingSaidGivesNothing) {
    const auto quiet = begin();
    quiet->hear(silence(1));
    finish(*quiet);
    EXPECT_EQ(quiet->text(), "");
    const auto empty = begin();
    finish(*empty);
    EXPECT_EQ(empty->text(), "");
}

TEST_F(PocketsphinxRecognitionTest, ASecondTranscriptionWaitsForTheFirst) {
    const auto first = begin();
    const auto second = begin();
    second->hear(speaker.say(sentences[4]));
    second->input.finish();
    first->hear(speaker.say(sentences[2]));
    finish(*first);
    finish(*second);
    EXPECT_TRUE(isMostly(sentences[2], first->text())) << first->text();
    EXPECT_TRUE(isMostly(sentences[4], second->text())) << second->text();
}

TEST_F(PocketsphinxRecognitionTest, ADroppedTranscriptionMakesRoomAtOnce) {
    loadedFormat();
    auto dropped = begin();
    const auto sentence = speaker.say(sentences[0]);
    for (int i = 0; i < 40; ++i) dropped->hear(sentence);  // two minutes of work
    ASSERT_TRUE(loop.runUntil([&] { return !dropped->partials.empty(); }));
    const double before = loop.main.now();
    dropped->analyzer.reset();
    EXPECT_LT(loop.main.now() - before, 0.05);
    ASSERT_TRUE(loop.runUntil([&] { return dropped->ended; }, 5));
    EXPECT_THAT(dropped->finals, testing::IsEmpty());
    const auto next = begin();
    next->hear(speaker.say(sentences[4]));
    finish(*next);
    EXPECT_TRUE(isMostly(sentences[4], next->text())) << next->text();
}

TEST_F(PocketsphinxRecognitionTest, MayBeDestroyedAtWork) {
    auto transcription = begin();
    transcription->hear(speaker.say(sentences[0]));
    recognition.reset();  // while loading
    transcription->analyzer.reset();
    recognition = std::make_unique<PocketsphinxRecognition>();
    loadedFormat();
    transcription = begin();
    transcription->hear(speaker.say(sentences[0]));
    ASSERT_TRUE(loop.runUntil([&] { return !transcription->partials.empty(); }));
    recognition.reset();
    transcription->analyzer.reset();
    const auto waiting = std::make_unique<PocketsphinxRecognition>()->makeAnalyzer("en-US");
    scope.spawn(waiting->start({}));
}

TEST_F(PocketsphinxRecognitionTest, KnowsItsLanguagesAndWhenItHasNoModel) {
    EXPECT_EQ(recognition->supportedLocale("en-GB"), "en-US");
    EXPECT_EQ(recognition->supportedLocale("en"), "en-US");
    EXPECT_EQ(recognition->supportedLocale("es-ES"), std::nullopt);
    EXPECT_EQ(recognition->assetStatus("en-US"), SpeechRecognition::AssetStatus::installed);
    recognition = std::make_unique<PocketsphinxRecognition>("/nowhere");
    EXPECT_EQ(recognition->supportedLocale("en-US"), std::nullopt);
    EXPECT_EQ(recognition->assetStatus("en-US"), SpeechRecognition::AssetStatus::unsupported);
    EXPECT_EQ(loadedFormat(), std::nullopt);
    // NOLINTBEGIN(concurrency-mt-unsafe): nobody else reads the environment here
    setenv("DORIX_POCKETSPHINX_MODELS", "/elsewhere", 1);
    EXPECT_EQ(PocketsphinxRecognition::defaultModelFolder(), "/elsewhere");
    unsetenv("DORIX_POCKETSPHINX_MODELS");
    // NOLINTEND(concurrency-mt-unsafe)
}

TEST_F(PocketsphinxRecognitionTest, ADamagedModelIsNoFormatAndAnErrorOfTheResults) {
    auto pattern = (fs::temp_directory_path() / "dorix-model-XXXXXX").string();
    const fs::path folder = mkdtemp(pattern.data());
    fs::create_directories(folder / "en-us/en-us");
    for (const auto* file : {"en-us/en-us/mdef", "en-us/en-us.lm.bin", "en-us/cmudict-en-us.dict"}) {
        std::ofstream(folder / file) << "\x01\xff\a\x1b[2J\v damaged" + std::string(1000, '\xfe') +
                                            "\nmore\n";
    }
    recognition = std::make_unique<PocketsphinxRecognition>(folder);
    EXPECT_EQ(loadedFormat(), std::nullopt);
    const auto transcription = begin();
    finish(*transcription);
    EXPECT_THAT(transcription->error, testing::HasSubstr("pocketsphinx: "));
    // It is logged: one line that a terminal can show.
    EXPECT_TRUE(std::ranges::all_of(transcription->error, [](char c) { return c >= ' ' && c <= '~'; }))
        << transcription->error;
    EXPECT_LT(transcription->error.size(), 250U);
    fs::remove_all(folder);
}

TEST_F(PocketsphinxRecognitionTest, ServesTheSpeechEngineFromAMicrophoneOfAnotherFormat) {
    FakeAudioEngineFactory audio;
    audio.format = {48000, 2};
    SpeechEngine engine(loop.main, audio, *recognition);
    const auto started = scope.spawn(engine.start("en-GB"));
    ASSERT_TRUE(loop.runUntil([&] { return started.isDone(); }, 60));
    std::vector<float> buffer;
    for (const auto sample : speaker.say(sentences[4])) {
        for (int i = 0; i < 3; ++i) buffer.insert(buffer.end(), {sample, sample});
        if (buffer.size() < 2048) continue;
        audio.deliver(buffer);
        buffer.clear();
    }
    std::string heard;
    scope.spawn(
        [](SpeechEngine& of, std::string& into) -> Task<void> { into = co_await of.stop(); }(engine, heard));
    ASSERT_TRUE(loop.runUntil([&] { return !engine.isRunning() && !heard.empty(); }, 60));
    EXPECT_TRUE(isMostly(sentences[4], heard)) << heard;
}

}  // namespace
}  // namespace dorix
