#pragma once

#include "base/async/TaskScope.h"
#include "context/AppContext.h"
#include "dictation/HUDFlash.h"

#include <optional>
#include <string>

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

    /// Asks what stands there, about `target` where it matters. What is being said joins it first: then it is
    /// asked when the last words are there, unless they were not understood or a new recording has begun. The
    /// text stays when there is nobody to ask, or when it cannot be asked yet.
    void send(AppContext target);

    /// What is said from now on will join the text. No other recording runs.
    void startRecording();
    /// What was said joins the text, which gets the keyboard.
    void finishRecording();

    // Nothing happens without a recording:

    /// The microphone is wanted elsewhere: what was said so far joins the text.
    void yieldMicrophone();
    /// Ends it without a word, and without its words.
    void dropRecording();

 private:
    enum class Then { nothing, focus, send };

    Task<void> record(int take);
    void endRecording(Then then);
    void audioLost();
    Task<void> takeWords(Task<std::string> words, Then then);

    AppState& state_;
    SettingsStore& settings_;
    Permissions& permissions_;
    SpeechInput& speech_;
    HUDFlash& hud_;
    Assistant* const assistant_;
    int take_ = 0;                      // the newest recording
    std::optional<AppContext> sendTo_;  // when the last words are there
    TaskScope tasks_;
};

}  // namespace dorix
