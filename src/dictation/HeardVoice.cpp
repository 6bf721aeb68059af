#include "dictation/HeardVoice.h"

#include "speech/SpeechInput.h"

namespace dorix {

HeardVoice::HeardVoice(SpeechInput& speech) {
    subscriptions_.push_back(
        speech.partial.subscribe([this](const auto& words) { hasWords_ = hasWords_ || !words.empty(); }));
    subscriptions_.push_back(
        speech.level.subscribe([this](float level) { loudTells_ += level > audibleLevel ? 1 : 0; }));
}

void HeardVoice::forget() {
    hasWords_ = false;
    loudTells_ = 0;
}

bool HeardVoice::isHeard() const { return hasWords_ || loudTells_ >= enoughLoudTells; }

}  // namespace dorix
