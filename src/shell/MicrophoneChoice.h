#pragma once

#include "base/Observable.h"

#include <vector>

namespace dorix {

class AudioEngineFactory;
class DictationController;
class SettingsStore;

/// Has the microphone listened to that the user chose, and tells them when that one is not there. Main
/// executor; what it is given outlives it.
class MicrophoneChoice {
 public:
    MicrophoneChoice(const SettingsStore& settings, AudioEngineFactory& audio,
                     DictationController& dictation);
    MicrophoneChoice(const MicrophoneChoice&) = delete;
    MicrophoneChoice& operator=(const MicrophoneChoice&) = delete;

 private:
    void look();

    const SettingsStore& settings_;
    AudioEngineFactory& audio_;
    DictationController& dictation_;
    bool isMissed_ = false;  // and the user has been told
    std::vector<Subscription> subscriptions_;
};

}  // namespace dorix
