#pragma once

#include "base/Observable.h"

#include <vector>

namespace dorix {

class SpeechInput;

/// A level above this is somebody who talks.
inline constexpr float audibleLevel = 0.35F;

/// Whether the user has said anything since the last look away: what was understood comes half a second late,
/// so that a voice counts as well, but not the click of a key. Main executor.
class HeardVoice {
 public:
    /// `speech` outlives it.
    explicit HeardVoice(SpeechInput& speech);

    void forget();
    bool isHeard() const;

 private:
    /// The level is told twenty times a second.
    static constexpr int enoughLoudTells = 4;

    bool hasWords_ = false;
    int loudTells_ = 0;
    std::vector<Subscription> subscriptions_;
};

}  // namespace dorix
