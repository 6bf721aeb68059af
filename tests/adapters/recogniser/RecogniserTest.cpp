#include "adapters/harness/EventLoop.h"
#include "adapters/harness/OtherProgram.h"
#include "base/Error.h"
#include "base/text/Text.h"
#include "fakes/TemporaryFolder.h"
#include "linux/process/LinuxHelperProcesses.h"
#include "speech/models/SpeechModels.h"
#include "speech/recogniser/LocalRecognition.h"
#include "speech/recogniser/ModelChoice.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <fstream>

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

/// Speaks with a synthetic voice, as mono sound at 16 kHz. `text` holds letters and blanks only.
std::vector<float> say(const std::string& text) {
    const TemporaryFolder folder;
    const std::string file = folder.path() / "said.wav";
    EXPECT_EQ(OtherProgram({"flite", "-voice", "slt", "-t", text, "-o", file}).wait(), 0);
    std::ifstream wave(file, std::ios::binary);
    wave.seekg(44);  // the header
    std::vector<float> samples;
    std::int16_t sample = 0;
    while (wave.read(reinterpret_cast<char*>(&sample), sizeof sample))
        samples.push_back(static_cast<float>(sample) / 32768);
    return samples;
}

/// The share of words that came out as they were said.
double accuracy(const std::string& said, const std::string& heard) {
    const auto expected = text::words(said);
    auto left = text::words(heard);
    const auto most = std::max(expected.size(), left.size());
    std::size_t found = 0;
    for (const auto& word : expected) {
        const auto at = std::ranges::find(left, word);
        if (at == left.end()) continue;
        left.erase(at);
        ++found;
    }
    return static_cast<double>(found) / static_cast<double>(most);
}

/// What is heard varies with what the decoder has heard before: enough to see that nothing got lost.
void expectMostly(const std::string& said, const std::string& heard) {
    EXPECT_GE(accuracy(said, heard), 0.75) << heard;
}

/// The machine may have a lot else to do.
constexpr double patience = 120;

/// One analyzer at work.
struct Transcription {
    std::unique_ptr<SpeechAnalyzer> analyzer;
    AsyncStream<AnalyzerInput> input;
    std::vector<std::string> finals;
    std::vector<std::string> partials;
    std::string error;
    bool ended = false;
    bool flushed = false;

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

class RecogniserTest : public testing::Test {
 protected:
    std::unique_ptr<Transcription> begin() {
        auto made = std::make_unique<Transcription>();
        made->analyzer = recognition->makeAnalyzer("en");
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
    /// Ends the input and waits for the rest; the text.
    std::string finish(Transcription& transcription) {
        transcription.input.finish();
        scope.spawn(flush(transcription));
        EXPECT_TRUE(loop.runUntil([&] { return transcription.ended && transcription.flushed; }, patience));
        std::string text;
        for (const auto& part : transcription.finals) text += part + " ";
        return text;
    }
    bool isUnderstoodByNow(const std::unique_ptr<Transcription>& transcription) {
        return loop.runUntil([&] { return !transcription->partials.empty(); }, patience);
    }

    std::optional<AudioFormat> loadedFormat() {
        return loop.result(recognition->bestAvailableAudioFormat("en"), patience);
    }

    /// A program that has begun to recognise, with the models of a package.
    std::unique_ptr<LocalRecognition> makeRecognition(const fs::path& packaged) {
        models = std::make_unique<SpeechModels>("/nowhere", packaged, choices);
        return std::make_unique<LocalRecognition>(loop.main, processes, modelChoice(*models, "/nowhere"));
    }

    EventLoop loop;
    LinuxHelperProcesses processes{loop.main, DORIX_PROGRAM};
    const Observable<SpeechModelChoices> choices;
    std::unique_ptr<SpeechModels> models;
    std::unique_ptr<LocalRecognition> recognition = makeRecognition(DORIX_POCKETSPHINX_MODELDIR);
    TaskScope scope{loop.main};
};

TEST_F(RecogniserTest, UnderstandsEverydaySentences) {
    ASSERT_EQ(loadedFormat(), (AudioFormat{16000, 1}));
    double sum = 0;
    for (const auto& sentence : sentences) {
        const auto transcription = begin();
        transcription->hear(say(sentence));
        sum += accuracy(sentence, finish(*transcription));
        EXPECT_THAT(transcription->partials, testing::Not(testing::IsEmpty())) << sentence;
        EXPECT_EQ(transcription->error, "");
    }
    EXPECT_GE(sum, 0.9 * static_cast<double>(sentences.size()));
}

TEST_F(RecogniserTest, WordsAreKeptOverPauses) {
    const auto transcription = begin();
    for (const std::size_t index : {2U, 4U, 8U}) {
        transcription->hear(say(sentences[index]));
        transcription->hear(silence(1));
    }
    const auto said = sentences[2] + " " + sentences[4] + " " + sentences[8];
    // Before the end of the input.
    ASSERT_TRUE(loop.runUntil(
        [&] {
            return !transcription->partials.empty() && accuracy(said, transcription->partials.back()) > 0.7;
        },
        patience));
    expectMostly(said, finish(*transcription));
    EXPECT_EQ(transcription->finals.size(), 1U);
}

TEST_F(RecogniserTest, AShortSoundAtFirstOrNoneAtAllDoesNotSpoilWhatFollows) {
    auto sound = say(sentences[0]);
    const auto spoken = sound;
    sound.resize(4800);
    for (const auto& first : {sound, silence(1), silence(0)}) {
        recognition = makeRecognition(DORIX_POCKETSPHINX_MODELDIR);
        const auto tap = begin();
        tap->hear(first);
        const auto heard = finish(*tap);
        if (first != sound) EXPECT_EQ(text::words(heard).size(), 0U) << "nothing was said";
        const auto transcription = begin();
        transcription->hear(spoken);
        expectMostly(sentences[0], finish(*transcription));
    }
}

TEST_F(RecogniserTest, ASecondTranscriptionWaitsForTheFirst) {
    const auto first = begin();
    const auto second = begin();
    second->hear(say(sentences[4]));
    second->input.finish();
    first->hear(say(sentences[2]));
    expectMostly(sentences[2], finish(*first));
    expectMostly(sentences[4], finish(*second));
}

TEST_F(RecogniserTest, ADroppedTranscriptionMakesRoomAtOnce) {
    loadedFormat();
    auto dropped = begin();
    const auto sentence = say(sentences[0]);
    for (int i = 0; i < 40; ++i) dropped->hear(sentence);  // two minutes of work
    ASSERT_TRUE(isUnderstoodByNow(dropped));
    const double before = loop.main.now();
    dropped->analyzer.reset();
    EXPECT_LT(loop.main.now() - before, 0.5);
    ASSERT_TRUE(loop.runUntil([&] { return dropped->ended; }));
    EXPECT_THAT(dropped->finals, testing::IsEmpty());
    const auto next = begin();
    next->hear(say(sentences[4]));
    expectMostly(sentences[4], finish(*next));
}

TEST_F(RecogniserTest, MayBeDestroyedAtWork) {
    auto transcription = begin();
    transcription->hear(say(sentences[0]));
    recognition.reset();  // while loading
    transcription->analyzer.reset();
    recognition = makeRecognition(DORIX_POCKETSPHINX_MODELDIR);
    loadedFormat();
    transcription = begin();
    transcription->hear(say(sentences[0]));
    ASSERT_TRUE(isUnderstoodByNow(transcription));
    recognition.reset();
    transcription->analyzer.reset();
    const auto waiting = makeRecognition(DORIX_POCKETSPHINX_MODELDIR)->makeAnalyzer("en");
    scope.spawn(waiting->start({}));
}

TEST_F(RecogniserTest, ADamagedModelIsNoFormatAndAnErrorOfTheResults) {
    const TemporaryFolder temporary;
    const auto& folder = temporary.path();
    fs::create_directories(folder / "en-us/en-us");
    for (const auto* file : {"en-us/en-us/mdef", "en-us/en-us.lm.bin", "en-us/cmudict-en-us.dict"}) {
        std::ofstream(folder / file) << "\x01\xff\a\x1b[2J\v damaged" + std::string(1000, '\xfe') +
                                            "\nmore\n";
    }
    recognition = makeRecognition(folder);
    testing::internal::CaptureStderr();
    EXPECT_EQ(loadedFormat(), std::nullopt);
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_THAT(log, testing::HasSubstr("pocketsphinx: "));
    EXPECT_TRUE(std::ranges::none_of(log, [](char c) { return c == '\a' || c == '\x1b'; })) << log;
    EXPECT_LT(log.size(), 350U);
    const auto transcription = begin();
    finish(*transcription);
    EXPECT_EQ(transcription->error, "No se pudo preparar el formato de audio.");
}

}  // namespace
}  // namespace dorix
