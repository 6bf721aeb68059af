#include "base/async/Completion.h"
#include "base/async/ManualExecutor.h"
#include "base/text/Regex.h"
#include "fakes/FakeSpeechSynthesizer.h"
#include "fakes/MemoryUserDefaults.h"
#include "localdata/Language.h"
#include "speech/Speaker.h"
#include "speech/SpokenText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace dorix {
namespace {

using ::testing::ElementsAre;
using ::testing::Optional;

std::string plainly(std::string text) {
    for (const std::string mark : {"**", "`"}) {
        for (auto at = text.find(mark); at != std::string::npos; at = text.find(mark))
            text.erase(at, mark.size());
    }
    return Regex(R"((?m)^\s*[-•]\s+)").replaceAll(text, "");
}

TEST(SpokenTextTest, LeavesOutMarkUpAsThePlainPatternsWould) {
    EXPECT_EQ(spokenText("**Sí**: usa `ls`.\n- uno\n  • dos\n-tres - cuatro"),
              "Sí: usa ls.\nuno\ndos\n-tres - cuatro");
    for (const std::string text :
         {"a\n\n\n- b", "- \n- b\n", "  - \n\n", "a\r\n\t• b\r\n", "-", "- ", "\n\n", "a \n \n b\n -c\n",
          "***a***", "a\u2028\u00A0• b\u0085-\u3000c", "  a\n", "•\n\n• •  x\n\n\n-\ty"}) {
        EXPECT_EQ(spokenText(text), plainly(text)) << text;
    }
    // A gap as long as an answer may be is gone through once.
    const std::string gap(400'000, '\n');
    EXPECT_EQ(spokenText("a" + gap + "b"), "a" + gap + "b");
}

TEST(SpokenTextTest, ReadsInTheLanguageOfTheText) {
    struct Case {
        std::optional<LanguageHypothesis> detected;
        std::string language, appLanguage, expected;
    };
    for (const auto& [detected, language, appLanguage, expected] : std::vector<Case>{
             {{{"es", 0.9}}, "es-MX", "en", "es-MX"},  // the user's own variant
             {{{"en", 0.9}}, "es-ES", "es", "en-US"},
             {{{"PT-BR", 0.9}}, "es-ES", "es", "pt-PT"},
             {{{"ja", 0.9}}, "es-ES", "es", "ja"},
             {{{"en", 0.5}}, "es-ES", "es", "es-ES"},  // not certain enough
             {std::nullopt, "es-MX", "es", "es-MX"},
             {std::nullopt, "fr-FR", "es", "es-ES"},
             {std::nullopt, "fr-FR", "en", "en-US"},
             {{{"", 1.0}}, "en-GB", "en", "en-GB"},
         }) {
        EXPECT_EQ(languageFor(detected, language, appLanguage), expected);
    }
}

TEST(SpokenTextTest, ChoosesTheBestVoiceThatIsNoJoke) {
    const auto voice = [](const char* name, const char* language, int quality = 1) {
        return SpeechSynthesisVoice{name, name, language, quality};
    };
    const std::vector all{voice("Eddy", "es-ES", 3), voice("Ana", "es-MX", 3), voice("Luz", "es-ES"),
                          voice("Eva", "es-ES", 2),  voice("Mar", "es-ES", 2), voice("Flo", "it-IT"),
                          voice("Bea", "pt-BR")};
    EXPECT_THAT(voiceFor(all, "es-ES"), Optional(voice("Eva", "es-ES", 2)));
    EXPECT_THAT(voiceFor(all, "es-AR"), Optional(voice("Ana", "es-MX", 3)));
    EXPECT_THAT(voiceFor(all, "pt-PT"), Optional(voice("Bea", "pt-BR")));
    EXPECT_EQ(voiceFor(all, "it-IT"), std::nullopt);
    EXPECT_EQ(voiceFor(all, "de-DE"), std::nullopt);
}

class SpeakerTest : public testing::Test, public LanguageRecognizer {
 protected:
    SpeakerTest() { installLanguage(defaults, {}); }
    ~SpeakerTest() override { uninstallLanguage(); }

    std::optional<LanguageHypothesis> dominantLanguage(std::string_view) const override {
        return LanguageHypothesis{"es", 1};
    }

    MemoryUserDefaults defaults;
    ManualExecutor executor;
    FakeSpeechSynthesizer synthesizer;
    Speaker speaker{executor, synthesizer, *this};
};

TEST_F(SpeakerTest, TheSecondPressStopsAndAnotherAnswerReplacesTheFirst) {
    std::vector<std::optional<std::string>> lit;
    const auto watch = speaker.speakingID.subscribe([&](const auto& id) { lit.push_back(id); });
    synthesizer.voices = {{"Luz", "luz", "es-ES"}};
    speaker.toggle("**Hola**", "a", "es-MX");
    ASSERT_TRUE(synthesizer.speaking);
    EXPECT_EQ(synthesizer.speaking->text, "Hola");
    EXPECT_EQ(synthesizer.speaking->language, "es-MX");
    EXPECT_EQ(synthesizer.speaking->voice, synthesizer.voices.front());
    EXPECT_DOUBLE_EQ(synthesizer.speaking->rate, defaultSpeechRate * 1.02);
    const auto first = synthesizer.speaking->number;

    speaker.toggle("Adiós", "b", "es-ES");
    EXPECT_EQ(synthesizer.speaking->text, "Adiós");
    // What is told of the first comes late.
    synthesizer.onCancel(first);
    synthesizer.onFinish(first);
    EXPECT_THAT(speaker.speakingID.get(), Optional(std::string("b")));

    speaker.toggle("Adiós", "b", "es-ES");
    EXPECT_FALSE(synthesizer.speaking);
    speaker.toggle("Adiós", "b", "es-ES");
    synthesizer.onFinish(synthesizer.speaking->number);
    EXPECT_THAT(lit, ElementsAre("a", "b", std::nullopt, "b", std::nullopt));
}

TEST_F(SpeakerTest, WhereNothingCanSpeakTheButtonComesBack) {
    UnavailableSpeechSynthesizer none;
    Speaker silent(executor, none, *this);
    silent.toggle("Hola", "a", "es-ES");
    executor.runPosted();
    EXPECT_EQ(silent.speakingID.get(), std::nullopt);
}

/// Gives its voices late, as a system does that has to be asked.
class SlowSynthesizer final : public SpeechSynthesizer {
 public:
    Task<std::vector<SpeechSynthesisVoice>> speechVoices() override {
        co_await asked;
        co_return {};
    }
    void speak(SpeechUtterance utterance) override { spoken.push_back(utterance.text); }
    void stopSpeaking() override {}

    Completion<void> asked;
    std::vector<std::string> spoken;
};

TEST_F(SpeakerTest, WhatWasStoppedBeforeItBeganIsNotRead) {
    SlowSynthesizer slow;
    Speaker late(executor, slow, *this);
    late.toggle("uno", "a", "es-ES");
    late.toggle("uno", "a", "es-ES");
    late.toggle("dos", "b", "es-ES");
    late.toggle("tres", "c", "es-ES");
    slow.asked.complete();
    executor.runPosted();
    EXPECT_THAT(slow.spoken, ElementsAre("tres"));
}

}  // namespace
}  // namespace dorix
