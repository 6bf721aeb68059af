#pragma once

#include "base/async/TaskScope.h"
#include "context/AppContext.h"
#include "dictation/HUDFlash.h"

namespace dorix {

class Assistant;
class Permissions;
class SettingsStore;
class SpeechInput;

/// The field at the foot of the panel, where a question is typed or dictated. Main executor; what it is given
/// outlives it.
class Composer {
 public:
    /// `assistant` is null where there is nobody to ask.
    Composer(Executor& executor, AppState& state, SettingsStore& settings, Permissions& permissions,
             SpeechInput& speech, HUDFlash& hud, Assistant* assistant);

    /// Asks what stands there, about `target` where it matters. The text stays when there is nobody to ask,
    /// or when it cannot be asked yet.
    void send(AppContext target);

    /// What is said from now on will join the text.
    void startRecording();
    void finishRecording();

    /// Another recording takes the microphone: what was understood so far joins the text.
    void yieldMicrophone();

 private:
    Task<void> record(int take);
    Task<void> takeTranscript(int take);
    void forgetRecording();
    void append(const std::string& transcript);

    AppState& state_;
    SettingsStore& settings_;
    Permissions& permissions_;
    SpeechInput& speech_;
    HUDFlash& hud_;
    Assistant* const assistant_;
    int take_ = 0;            // the last recording; what is left of an earlier one comes too late
    bool finishing_ = false;  // it was ended, its last words are still to come
    TaskScope tasks_;
};

}  // namespace dorix
