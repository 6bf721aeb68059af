#include "dictation/Composer.h"

#include "assistant/Assistant.h"
#include "base/Error.h"
#include "base/text/Text.h"
#include "localdata/SettingsStore.h"
#include "permissions/Permissions.h"
#include "speech/Join.h"
#include "speech/SpeechInput.h"

#include <exception>
#include <string>
#include <utility>

namespace dorix {

Composer::Composer(Executor& executor, AppState& state, SettingsStore& settings, Permissions& permissions,
                   SpeechInput& speech, HUDFlash& hud, Assistant* assistant)
    : state_(state),
      settings_(settings),
      permissions_(permissions),
      speech_(speech),
      hud_(hud),
      assistant_(assistant),
      tasks_(executor) {}

void Composer::send(AppContext target) {
    if (sendTo_) return;
    if (state_.composerRecording.get()) {
        sendTo_ = std::move(target);
        return endRecording(Then::send);
    }
    const std::string text(text::trim(state_.composerText.get()));
    if (text.empty() || assistant_ == nullptr) return;
    if (state_.composerScreen.get() && !permissions_.screen.get()) {
        permissions_.requestScreen();
        permissions_.refresh();
        return;
    }
    state_.composerText.set("");
    state_.section.set(PanelSection::todo);
    state_.query.set("");
    state_.selectedID.set(assistant_->askFromComposer(text, std::move(target), state_.composerScreen.get()));
}

void Composer::startRecording() {
    sendTo_.reset();
    state_.composerRecording.set(true);
    speech_.onAudioLost = [this] { audioLost(); };
    speech_.onRecognitionFailed = [this] { yieldMicrophone(); };
    tasks_.spawn(record(++take_));
}

Task<void> Composer::record(int take) {
    try {
        co_await speech_.start(settings_.language.get());
    } catch (const Cancelled&) {
        throw;
    } catch (...) {
        if (take != take_) co_return;
        state_.composerRecording.set(false);
        hud_.flash(HUDPhase::error(localizedDescription(std::current_exception())), 3.0);
    }
}

void Composer::finishRecording() { endRecording(Then::focus); }

void Composer::yieldMicrophone() {
    if (state_.composerRecording.get()) endRecording(Then::nothing);
}

void Composer::endRecording(Then then) {
    state_.composerRecording.set(false);
    ++take_;
    tasks_.spawn(takeWords(speech_.stop(), then));
}

void Composer::audioLost() {
    yieldMicrophone();
    hud_.flashNoSound();
}

Task<void> Composer::takeWords(Task<std::string> words, Then then) {
    std::string transcript;
    bool isUnderstood = true;
    try {
        transcript = co_await std::move(words);
    } catch (const SpeechInput::RecognitionFailed& error) {
        transcript = error.heard();
        isUnderstood = false;
        hud_.flash(HUDPhase::error(error.localizedDescription()), 3.0);
    }
    if (!transcript.empty()) state_.composerText.set(join(state_.composerText.get(), transcript));
    if (then == Then::send) {
        const auto target = std::exchange(sendTo_, std::nullopt);
        if (target && isUnderstood) send(*target);
    }
    if (then == Then::focus) state_.focusRequest.set(AppState::FocusTarget::composer);
}

void Composer::dropRecording() {
    if (!state_.composerRecording.get()) return;
    state_.composerRecording.set(false);
    ++take_;
    speech_.cancel();
}

}  // namespace dorix
