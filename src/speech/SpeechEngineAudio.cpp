#include "base/Log.h"
#include "localdata/Language.h"
#include "speech/AudioTap.h"
#include "speech/SpeechEngine.h"

#include <exception>
#include <utility>

namespace dorix {

namespace {
constexpr std::size_t tapFrames = 1024;
constexpr double healthInterval = 0.25;  // seconds, as those below
constexpr double silentAge = 0.3;
constexpr double reopenAge = 1.5;
constexpr double lostAge = 3.0;
constexpr double gapAge = 1.0;  // no server keeps sound back as long as that, and no busy machine
constexpr int maximumRestarts = 2;
}  // namespace

/// Has the recording's sound delivered in `format`.
void SpeechEngine::listen(SpeechSession& session, AudioFormat format) {
    if (session.soundFormat == format) return;
    if (session.soundFormat) session.dropSound();
    if (!session.isListening()) return;
    if (session.soundFormat) closeAudio(KeepHealth::no);
    session.soundFormat = format;
    openAudio(format, session.input());
}

void SpeechEngine::openAudio(AudioFormat format, SpeechSession::Input continuation) {
    hasHeard_ = hasHeard();
    audio_ = audioFactory_.makeEngine();
    installTap(format, continuation);
    tapTarget_ = TapTarget{format, std::move(continuation)};
    audio_->onConfigurationChange([this] { reopen("cambio de micrófono"); });
    openedAt_ = main_.now();
    clock_.set(openedAt_);
    try {
        audio_->start();
    } catch (...) {
        audio_->removeTap();
        throw;
    }
    if (!healthTimer_.isActive() && !audioLost_)
        healthTimer_.repeat(healthInterval, [this] { checkHealth(); });
}

void SpeechEngine::installTap(AudioFormat format, const SpeechSession::Input& continuation) {
    const auto input = audio_->inputFormat();
    if (input.sampleRate <= 0 || input.channelCount <= 0) throw EngineError::microphoneUnavailable();
    opening_ = std::make_shared<bool>(true);
    const auto reportLevel = [this, &main = main_, open = std::weak_ptr(opening_)](float value) {
        main.post([this, open, value] {
            if (!open.expired()) level.set(value);
        });
    };
    const auto tap = std::make_shared<AudioTap>(input, format, main_, clock_, continuation, reportLevel);
    audio_->installTap(tapFrames, input, [tap](const AudioBuffer& buffer) { (*tap)(buffer); });
}

void SpeechEngine::closeAudio(KeepHealth keepHealth) {
    if (audio_) audio_->onConfigurationChange(nullptr);
    if (keepHealth == KeepHealth::no) {
        healthTimer_.stop();
        restarts_ = 0;
        tapTarget_.reset();
    }
    if (audio_) {
        if (audio_->isRunning()) audio_->stop();
        audio_->removeTap();
    }
    opening_.reset();
    level.set(0);
}

void SpeechEngine::reopen(std::string_view reason) {
    if (!isRunning() || !tapTarget_) return;
    if (hasHeard() && soundAge() > gapAge) hasGap_ = true;
    logLine("reabriendo el micrófono (" + std::string(reason) + ")");
    const auto target = *tapTarget_;
    closeAudio(KeepHealth::yes);
    try {
        openAudio(target.format, target.continuation);
    } catch (...) {
        logLine("no se pudo reabrir el micrófono: " +
                describedIn(LogLanguage::spanish, std::current_exception()));
    }
}

bool SpeechEngine::lacksSound() const {
    if (!isRunning() || !hasHeard()) return false;
    return hasGap_ || !audio_->isRunning() || soundAge() > gapAge;
}

/// There was none to reopen, and now there is one.
bool SpeechEngine::hasMicrophoneCome() const {
    return audio_->inputFormat().channelCount <= 0 &&
           audioFactory_.makeEngine()->inputFormat().channelCount > 0;
}

void SpeechEngine::checkHealth() {
    if (!isRunning()) return;
    if (hasMicrophoneCome()) return reopen("cambio de micrófono");
    const double age = soundAge();
    if (age > silentAge) level.set(0);
    if (age > reopenAge && restarts_ < maximumRestarts) {
        ++restarts_;
        reopen("no llega sonido");
    } else if (age > lostAge) {
        healthTimer_.stop();
        audioLost_ = true;
        // A copy: the callback may replace it.
        if (const auto lost = onAudioLost) lost();
    }
}

}  // namespace dorix
