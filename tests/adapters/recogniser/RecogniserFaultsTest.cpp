#include "adapters/harness/EventLoop.h"
#include "adapters/harness/NumberFrom.h"
#include "fakes/ToneSpeech.h"
#include "linux/process/LinuxHelperProcesses.h"
#include "speech/models/SpeechModels.h"
#include "speech/recogniser/LocalRecognition.h"
#include "speech/recogniser/ModelChoice.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <random>

namespace dorix {
namespace {

namespace fs = std::filesystem;

constexpr int processFaults = 12;  // DORIX_RECOGNISER_FAULTS asks for more
constexpr double patience = 90;

/// The recogniser that this process has started last; none when none runs.
pid_t recogniser() {
    std::ifstream children("/proc/self/task/" + std::to_string(::getpid()) + "/children");
    pid_t newest = 0;
    for (pid_t child = 0; children >> child;) {
        std::string name;
        std::getline(std::ifstream("/proc/" + std::to_string(child) + "/comm"), name);
        if (name == "dorix-recognise") newest = child;
    }
    return newest;
}

class RecogniserFaultsTest : public testing::Test {
 protected:
    void SetUp() override {
        if (!fs::exists(DORIX_SPEECH_ENGINES)) GTEST_SKIP() << "the speech engine of the tests is not here";
    }

    /// Says the sound a quarter of a second at a time, ten times as fast as a person, and gives what was
    /// understood of it. `fault` is sent to the recogniser at that share of the sound.
    std::string transcribe(const std::vector<float>& sound, int fault, double share) {
        const auto analyzer = recognition.makeAnalyzer("es");
        const AsyncStream<AnalyzerInput> input;
        std::string text;
        bool hasEnded = false;
        TaskScope scope(loop.main);
        scope.spawn([](SpeechAnalyzer& of, AsyncStream<AnalyzerInput> from) -> Task<void> {
            co_await of.start(from);
        }(*analyzer, input));
        scope.spawn(read(analyzer->results(), text, hasEnded));
        const auto faultAt = static_cast<std::size_t>(share * static_cast<double>(sound.size()));
        for (std::size_t at = 0; at < sound.size(); at += piece) {
            if (fault != 0 && at <= faultAt && faultAt < at + piece) strike(fault);
            const auto end = std::min(at + piece, sound.size());
            input.push({{sound.begin() + static_cast<std::ptrdiff_t>(at),
                         sound.begin() + static_cast<std::ptrdiff_t>(end)}});
            loop.runFor(0.025);
        }
        input.finish();
        EXPECT_TRUE(loop.runUntil([&] { return hasEnded; }, patience));
        return text;
    }

    static Task<void> read(AsyncStream<TranscriptionResult> results, std::string& text, bool& hasEnded) {
        while (const auto result = co_await results.next()) text = result->text;
        hasEnded = true;
    }

    void strike(int fault) {
        const auto process = recogniser();
        if (process == 0) return;
        ::kill(process, fault);
        ++struck;
    }

    static constexpr std::size_t piece = ToneSpeech::sampleRate / 4;

    EventLoop loop;
    LinuxHelperProcesses processes{loop.main, DORIX_PROGRAM};
    const Observable<SpeechModelChoices> choices{{{"es", "tones-streaming"}}};
    SpeechModels models{DORIX_TONE_MODELS, {}, choices};
    LocalRecognition recognition{loop.main, processes, modelChoice(models, DORIX_SPEECH_ENGINES)};
    int struck = 0;
};

TEST_F(RecogniserFaultsTest, WhateverBefallsTheRecogniserNoWordIsLost) {
    std::mt19937 random(11);
    std::uniform_real_distribution moment(0.0, 1.0);
    std::uniform_int_distribution words(3, 25);
    const int count = numberFrom("DORIX_RECOGNISER_FAULTS", processFaults);
    for (int round = 0; round < count; ++round) {
        ToneSpeech speech;
        for (int left = words(random); left > 0; --left) speech.sayAny(random);
        const int fault = std::array{SIGKILL, SIGSEGV, SIGSTOP}.at(static_cast<std::size_t>(round % 3));
        const auto undisturbed = transcribe(speech.samples(), 0, 0);
        EXPECT_EQ(undisturbed, speech.text());
        ASSERT_EQ(transcribe(speech.samples(), fault, moment(random)), undisturbed) << round;
    }
    EXPECT_EQ(struck, count);
}

}  // namespace
}  // namespace dorix
