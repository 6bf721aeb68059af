#include "shell/MicrophoneChoice.h"

#include "base/Log.h"
#include "dictation/DictationController.h"
#include "localdata/Language.h"
#include "localdata/SettingsStore.h"
#include "platform/AudioEngine.h"

#include <algorithm>
#include <string>
#include <utility>

namespace dorix {

namespace {
constexpr double secondsToRead = 6.0;
}

MicrophoneChoice::MicrophoneChoice(const SettingsStore& settings, AudioEngineFactory& audio,
                                   DictationController& dictation)
    : settings_(settings), audio_(audio), dictation_(dictation) {
    audio.useInput(settings.microphone.get());
    subscriptions_.push_back(settings.microphone.subscribe([this](const std::string& id) {
        audio_.useInput(id);
        look();
    }));
    subscriptions_.push_back(audio.inputs().subscribe([this](const auto&) { look(); }));
}

/// While no microphone is known at all the sound server may only be on its way.
void MicrophoneChoice::look() {
    const auto& inputs = audio_.inputs().get();
    const auto& chosen = settings_.microphone.get();
    if (inputs.empty()) return;
    const bool isThere = chosen.empty() || std::ranges::find(inputs, chosen, &AudioInput::id) != inputs.end();
    if (std::exchange(isMissed_, !isThere) || isThere) return;
    logLine("the chosen microphone is not there: " + chosen);
    const auto text = formatText(tr("«%@» no está conectado: mientras tanto se usa el que elija el sistema."),
                                 {settings_.microphoneName.get()});
    if (dictation_.isIdle()) dictation_.flash(HUDPhase::info(text), secondsToRead);
}

}  // namespace dorix
