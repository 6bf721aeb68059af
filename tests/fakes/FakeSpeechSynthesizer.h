#pragma once

#include "platform/SpeechSynthesizer.h"

#include <optional>
#include <vector>

namespace dorix {

/// Notes what is to be read aloud.
class FakeSpeechSynthesizer final : public SpeechSynthesizer {
 public:
    Task<std::vector<SpeechSynthesisVoice>> speechVoices() override { co_return voices; }
    void speak(SpeechUtterance utterance) override { speaking = std::move(utterance); }
    void stopSpeaking() override { speaking.reset(); }

    std::vector<SpeechSynthesisVoice> voices;
    std::optional<SpeechUtterance> speaking;
};

}  // namespace dorix
