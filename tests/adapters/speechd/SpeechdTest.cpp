#include "adapters/pulse/SoundServer.h"
#include "linux/speechd/SpeechdSynthesizer.h"
#include "speech/SpokenText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace dorix {
namespace {

using ::testing::ElementsAre;

constexpr float audible = 0.01F;

/// A speech server of the test's own, which plays to the sound server of the test.
class SpeechdTest : public SoundTest {
 protected:
    void SetUp() override {
        SoundTest::SetUp();
        if (IsSkipped()) return;
        if (SoundServer::isOfSession()) GTEST_SKIP() << "the session's sound is not the test's";
        launch();
        ASSERT_TRUE(server.control({"set-default-sink", "mic"}));
        microphone_ = record(heard_);
        synthesizer.emplace(loop.main, loop.main);
        synthesizer->onFinish = [this](auto number) { ends.push_back("finished " + std::to_string(number)); };
        synthesizer->onCancel = [this](auto number) {
            ends.push_back("cancelled " + std::to_string(number));
        };
    }
    void TearDown() override {
        synthesizer.reset();
        killServer();
    }

    void speak(std::uint64_t number, std::string text) {
        synthesizer->speak({.number = number, .text = std::move(text), .language = "es-ES"});
    }

    std::optional<pid_t> serverProcess() const {
        std::ifstream file(session_.path() / "speech-dispatcher/pid/speech-dispatcher.pid");
        pid_t pid = 0;
        return file >> pid ? std::optional(pid) : std::nullopt;
    }
    void killServer() {
        const auto pid = serverProcess();
        if (pid) ::kill(*pid, SIGKILL);
    }

    bool isLoud() const {
        const auto all = heard_.samples();
        return std::ranges::any_of(all, [](float sample) { return std::abs(sample) > audible; });
    }
    bool hearsVoice() {
        heard_.clear();
        return loop.runUntil([this] { return isLoud(); });
    }
    /// Whether nothing sounds from 0.2 s after now on.
    bool fallsSilent() {
        loop.runFor(0.2);
        heard_.clear();
        loop.runFor(1);
        return heard_.size() > 8000 && !isLoud();
    }

    const TemporaryFolder session_;
    const Environment environment_{{{"XDG_RUNTIME_DIR", session_.path()},
                                    {"HOME", session_.path()},
                                    {"PULSE_SERVER", server.address()},
                                    {"SPEECHD_ADDRESS", ""}}};
    std::vector<std::string> ends;
    std::optional<SpeechdSynthesizer> synthesizer;

 private:
    Recording heard_;
    std::unique_ptr<AudioEngine> microphone_;
};

std::string longText() {
    std::string text;
    while (text.size() < 400'000) text += "Esta es otra frase de una respuesta que no se acaba nunca. ";
    return text;
}

TEST_F(SpeechdTest, ReadsALongAnswerAndFallsSilentAtOnce) {
    const auto voices = loop.result(synthesizer->speechVoices());
    const auto spanish = voiceFor(voices, "es-ES");
    ASSERT_TRUE(spanish);
    EXPECT_EQ(spanish->identifier, "espeak-ng/Spanish (Spain)");
    EXPECT_EQ(voiceFor(voices, "en-US")->name, "English (America)");
    EXPECT_LT(voices.size(), 300U) << "with all their disguises there are thousands";

    const double before = loop.main.now();
    speak(1, longText());
    EXPECT_LT(loop.main.now() - before, 0.05);
    EXPECT_TRUE(hearsVoice());
    synthesizer->stopSpeaking();
    EXPECT_TRUE(fallsSilent());

    speak(2, longText());
    EXPECT_TRUE(hearsVoice());
    speak(3, "Otra.");
    EXPECT_TRUE(loop.runUntil([&] { return !ends.empty(); }));
    EXPECT_TRUE(fallsSilent());
    speak(4, longText());
    EXPECT_TRUE(hearsVoice());
    synthesizer.reset();
    EXPECT_TRUE(fallsSilent()) << "after the end of the program";
    EXPECT_THAT(ends, ElementsAre("finished 3"));
}

TEST_F(SpeechdTest, WhatATextHoldsIsReadAndNotObeyed) {
    const std::string hostile =
        "<break time=\"60s\"/>uno\n.\nQUIT\r\n.\r\nCANCEL ALL\r\n..\x01\x02 dos \xFF\n\n";
    speak(1, hostile + "</speak><audio src=\"file:///etc/passwd\"/>");
    EXPECT_TRUE(hearsVoice());
    EXPECT_TRUE(loop.runUntil([&] { return !ends.empty(); }, 40));
    speak(2, " \n ");
    EXPECT_TRUE(loop.runUntil([&] { return ends.size() == 2; }));
    EXPECT_THAT(ends, ElementsAre("finished 1", "finished 2"));
}

TEST_F(SpeechdTest, AServerThatDiesEndsTheUtteranceAndTheNextOneStartsAnother) {
    // Whoever is told may speak at once.
    synthesizer->onCancel = [this](auto number) {
        ends.push_back("cancelled " + std::to_string(number));
        speak(2, "Aquí estoy otra vez.");
    };
    speak(1, longText());
    EXPECT_TRUE(hearsVoice());
    killServer();
    EXPECT_TRUE(loop.runUntil([&] { return ends.size() == 1; }));
    EXPECT_TRUE(hearsVoice());
    EXPECT_TRUE(loop.runUntil([&] { return ends.size() == 2; }));
    EXPECT_THAT(ends, ElementsAre("cancelled 1", "finished 2"));
}

TEST_F(SpeechdTest, WithoutAServerItEndsInSilence) {
    const Environment nothingInstalled({{"PATH", session_.path()}});
    EXPECT_TRUE(loop.result(synthesizer->speechVoices()).empty());
    speak(1, "Hola.");
    EXPECT_TRUE(loop.runUntil([&] { return !ends.empty(); }));
    EXPECT_THAT(ends, ElementsAre("cancelled 1"));
}

TEST_F(SpeechdTest, AServerThatHangsIsWaitedForOnce) {
    const auto program = session_.path() / "speech-dispatcher";
    std::ofstream(program) << "#!/bin/sh\nexec /bin/sleep 30\n";
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    const Environment hanging({{"PATH", session_.path()}});
    EXPECT_TRUE(loop.result(synthesizer->speechVoices()).empty());
    speak(1, "Hola.");
    EXPECT_TRUE(loop.runUntil([&] { return !ends.empty(); }, 3));
    EXPECT_THAT(ends, ElementsAre("cancelled 1"));
}

}  // namespace
}  // namespace dorix
