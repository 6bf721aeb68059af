#pragma once

#include "base/Observable.h"
#include "base/async/Task.h"

#include <functional>
#include <string>

namespace dorix {

/// Spoken words as text: what a dictation needs of the speech engine. Main executor.
class SpeechInput {
 public:
    virtual ~SpeechInput() = default;

    /// What has been understood so far, final or not.
    Observable<std::string> partial;
    /// How loud the input is, 0 to 1.
    Observable<float> level;
    /// Called when no sound arrives any more, whatever was tried: at most once in a recording, which goes on
    /// until it is stopped or cancelled. It may call any function of the input.
    std::function<void()> onAudioLost;

    /// Begins to listen in the language with this id; a recording that runs is dropped first. Throws an
    /// Error.
    virtual Task<void> start(std::string language) = 0;

    /// Ends the recording and gives all that was said. Never throws an Error.
    virtual Task<std::string> stop() = 0;

    /// Drops the recording.
    virtual void cancel() = 0;
};

}  // namespace dorix
