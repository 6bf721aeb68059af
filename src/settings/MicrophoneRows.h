#pragma once

#include "localdata/SettingsStore.h"
#include "platform/AudioEngine.h"
#include "settings/MicrophoneTest.h"
#include "settings/SettingsRow.h"

#include <functional>
#include <vector>

namespace dorix {

/// Which microphone is listened to, and whether it hears. Main executor.
class MicrophoneRows {
 public:
    /// All must outlive it. `changed` is called when the rows are others than they were.
    MicrophoneRows(SettingsStore& settings, AudioEngineFactory& audio, MicrophoneTest& test,
                   const std::function<void()>& changed);

    void addTo(SettingsRows& rows);

 private:
    SettingsRow microphone();
    SettingsRow test();
    void choose(const std::string& id);

    SettingsStore& settings_;
    AudioEngineFactory& audio_;
    MicrophoneTest& test_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace dorix
