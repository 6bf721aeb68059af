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
    const std::string text(text::trim(state_.composerText.get()));
    if (text.empty() || assistant_ == nullptr) return;
    if (state_.composerRecording.get()) {
        forgetRecording();
        speech_.cancel();
    }
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
    yieldMicrophone();
    state_.composerRecording.set(true);
    tasks_.spawn(record(++take_));
}

Task<void> Composer::record(int take) {
    try {
        co_await speech_.start(settings_.language.get());
    } catch (...) {
        if (take != take_) co_return;
        state_.composerRecording.set(false);
        hud_.flash(HUDPhase::error(localizedDescription(std::current_exception())), 3.0);
    }
}

void Composer::finishRecording() {
    state_.composerRecording.set(false);
    finishing_ = true;
    tasks_.spawn(takeTranscript(take_));
}

Task<void> Composer::takeTranscript(int take) {
    const std::string transcript = co_await speech_.stop();
    if (take != take_) co_return;
    finishing_ = false;
    append(transcript);
    state_.focusRequest.set(AppState::FocusTarget::composer);
}

void Composer::yieldMicrophone() {
    if (!state_.composerRecording.get() && !finishing_) return;
    const std::string understood = speech_.partial.get();
    forgetRecording();
    append(understood);
}

void Composer::forgetRecording() {
    state_.composerRecording.set(false);
    finishing_ = false;
    ++take_;
}

void Composer::append(const std::string& transcript) {
    if (!transcript.empty()) state_.composerText.set(join(state_.composerText.get(), transcript));
}

}  // namespace dorix
