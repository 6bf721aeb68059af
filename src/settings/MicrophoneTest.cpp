#include "settings/MicrophoneTest.h"

#include "base/Error.h"
#include "localdata/Language.h"
#include "speech/AudioTap.h"

#include <utility>

namespace dorix {

namespace {
constexpr std::size_t tapFrames = 2048;  // a level twenty times a second
}

MicrophoneTest::MicrophoneTest(Executor& executor, SpeechInput& speech, AudioEngineFactory& audio)
    : speech_(speech), audio_(audio), limit_(executor), tasks_(executor) {}

MicrophoneTest::~MicrophoneTest() { stopped(); }

void MicrophoneTest::start(const std::string& language) {
    if (isRunning.get()) return;
    heard.set("");
    if (!mayListen()) return failure.set(tr("Ahora no se puede probar: DORIX está en pausa o dictando."));
    failure.set("");
    isRunning.set(true);
    isUnderstanding_ = true;
    limit_.once(longestTest, [this] { finish(); });
    speech_.onAudioLost = [this] {
        failure.set(
            tr("No me llega sonido del micrófono. Si acabas de conectar unos auriculares, prueba otra "
               "vez."));
        end();
    };
    speech_.onRecognitionFailed = [this] { finish(); };
    tasks_.spawn(listen(language, ++run_));
}

Task<void> MicrophoneTest::listen(std::string language, int run) {
    std::string words;
    try {
        auto starting = speech_.start(std::move(language));
        following_.push_back(speech_.level.subscribe([this](float loud) { level.set(loud); }));
        following_.push_back(speech_.partial.subscribe([this](const std::string& text) {
            if (!text.empty()) heard.set(text);
        }));
        co_await std::move(starting);
    } catch (const Error& error) {
        words = error.localizedDescription();
    }
    if (run != run_ || words.empty()) co_return;
    following_.clear();
    isUnderstanding_ = false;
    failure.set(words);
    openLevel();
}

void MicrophoneTest::openLevel() {
    engine_ = audio_.makeEngine();
    const auto format = engine_->inputFormat();
    try {
        if (format.channelCount <= 0) throw MessageError(tr("No hay micrófono disponible."));
        opening_ = std::make_shared<bool>(true);
        const auto report = [this, &main = tasks_.executor(), open = std::weak_ptr(opening_)](float loud) {
            main.post([this, open, loud] {
                if (!open.expired()) level.set(loud);
            });
        };
        engine_->installTap(tapFrames, format, [report](const AudioBuffer& buffer) {
            if (buffer.frameLength() > 0) report(soundLevel(buffer, 0));
        });
        engine_->start();
    } catch (const Error& error) {
        failure.set(error.localizedDescription());
        end();
    }
}

void MicrophoneTest::finish() {
    if (!isRunning.get()) return;
    const bool hasWords = isUnderstanding_;
    const int run = ++run_;
    stopped();
    if (hasWords) tasks_.spawn(takeWords(speech_.stop(), run));
}

Task<void> MicrophoneTest::takeWords(Task<std::string> words, int run) {
    std::string text;
    std::string wrong;
    try {
        text = co_await std::move(words);
    } catch (const SpeechInput::RecognitionFailed& error) {
        text = error.heard();
        wrong = error.localizedDescription();
    }
    if (run != run_) co_return;
    if (!text.empty()) heard.set(text);
    if (!wrong.empty()) {
        failure.set(wrong);
    } else if (text.empty()) {
        failure.set(tr("No he entendido nada. Acércate al micrófono y prueba otra vez."));
    }
}

void MicrophoneTest::end() {
    ++run_;
    if (!isRunning.get()) return;
    const bool wasListening = isUnderstanding_;
    stopped();
    if (wasListening) speech_.cancel();
}

void MicrophoneTest::forget() {
    end();
    heard.set("");
    failure.set("");
}

void MicrophoneTest::stopped() {
    limit_.stop();
    following_.clear();
    opening_.reset();
    engine_.reset();
    isUnderstanding_ = false;
    level.set(0);
    isRunning.set(false);
}

}  // namespace dorix
