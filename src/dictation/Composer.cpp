#include "dictation/Composer.h"

#include "assistant/Assistant.h"
#include "base/Error.h"
#include "base/text/Text.h"
#include "dictation/DictationEnvironment.h"
#include "localdata/SettingsStore.h"
#include "permissions/Permissions.h"
#include "speech/Join.h"
#include "speech/SpeechInput.h"

#include <exception>
#include <string>
#include <utility>

namespace dorix {

Composer::Composer(const DictationEnvironment& env, HUDFlash& hud)
    : env_(env), hud_(hud), tasks_(env.executor) {}

void Composer::send(AppContext target) {
    AppState& state = env_.state;
    const std::string text(text::trim(state.composerText.get()));
    if (text.empty() || env_.assistant == nullptr) return;
    if (state.composerRecording.get()) {
        forgetRecording();
        env_.speech.cancel();
    }
    if (state.composerScreen.get() && !env_.permissions.screen.get()) {
        env_.permissions.requestScreen();
        env_.permissions.refresh();
        return;
    }
    state.composerText.set("");
    state.section.set(PanelSection::todo);
    state.query.set("");
    state.selectedID.set(
        env_.assistant->askFromComposer(text, std::move(target), state.composerScreen.get()));
}

void Composer::startRecording() {
    yieldMicrophone();
    env_.state.composerRecording.set(true);
    tasks_.spawn(record(++take_));
}

Task<void> Composer::record(int take) {
    try {
        co_await env_.speech.start(env_.settings.language.get());
    } catch (...) {
        if (take != take_) co_return;
        env_.state.composerRecording.set(false);
        hud_.flash(HUDPhase::error(localizedDescription(std::current_exception())), 3.0);
    }
}

void Composer::finishRecording() {
    env_.state.composerRecording.set(false);
    finishing_ = true;
    tasks_.spawn(takeTranscript(take_));
}

Task<void> Composer::takeTranscript(int take) {
    const std::string transcript = co_await env_.speech.stop();
    if (take != take_) co_return;
    finishing_ = false;
    append(transcript);
    env_.state.focusRequest.set(AppState::FocusTarget::composer);
}

void Composer::yieldMicrophone() {
    if (!env_.state.composerRecording.get() && !finishing_) return;
    const std::string understood = env_.speech.partial.get();
    forgetRecording();
    append(understood);
}

void Composer::forgetRecording() {
    env_.state.composerRecording.set(false);
    finishing_ = false;
    ++take_;
}

void Composer::append(const std::string& transcript) {
    if (!transcript.empty()) env_.state.composerText.set(join(env_.state.composerText.get(), transcript));
}

}  // namespace dorix
