#include "speech/Speaker.h"

#include "localdata/Language.h"
#include "speech/SpokenText.h"

#include <utility>

namespace dorix {

namespace {
constexpr double haste = 1.02;  // in which answers are read
}

Speaker::Speaker(Executor& executor, SpeechSynthesizer& synthesizer, const LanguageRecognizer& languages)
    : synth_(synthesizer), languages_(languages), tasks_(executor) {
    synth_.onFinish = [this](std::uint64_t number) { ended(number); };
    synth_.onCancel = [this](std::uint64_t number) { ended(number); };
}

Speaker::~Speaker() {
    synth_.stopSpeaking();
    synth_.onFinish = nullptr;
    synth_.onCancel = nullptr;
}

void Speaker::toggle(std::string text, std::string id, std::string language) {
    const bool isSecondPress = speakingID.get() == id;
    synth_.stopSpeaking();
    const auto number = ++newest_;
    if (isSecondPress) {
        speakingID.set(std::nullopt);
        return;
    }
    speakingID.set(std::move(id));
    // Whoever was told may have pressed another button.
    if (number == newest_) tasks_.spawn(speak(std::move(text), std::move(language), number));
}

void Speaker::stop() {
    synth_.stopSpeaking();
    ++newest_;
    speakingID.set(std::nullopt);
}

Task<void> Speaker::speak(std::string text, std::string language, std::uint64_t number) {
    const auto voices = co_await synth_.speechVoices();
    if (number != newest_) co_return;
    SpeechUtterance utterance{.number = number, .text = spokenText(text)};
    utterance.language = languageFor(languages_.dominantLanguage(languageSample(utterance.text)), language,
                                     currentAppLanguage());
    utterance.voice = voiceFor(voices, utterance.language);
    utterance.rate = defaultSpeechRate * haste;
    synth_.speak(std::move(utterance));
}

void Speaker::ended(std::uint64_t number) {
    if (number == newest_) speakingID.set(std::nullopt);
}

}  // namespace dorix
