#pragma once

#include "base/Error.h"
#include "base/Observable.h"
#include "base/async/Task.h"

#include <functional>
#include <string>
#include <utility>

namespace dorix {

/// Spoken words as text: what a dictation needs of the speech engine. One recording at a time; while the
/// words of one that was stopped are still being made out, the next may run. Main executor.
class SpeechInput {
 public:
    virtual ~SpeechInput() = default;

    /// What has been understood so far of the newest recording, final or not.
    Observable<std::string> partial;
    /// How loud the input is, 0 to 1.
    Observable<float> level;
    /// Called when no sound arrives any more, whatever was tried: at most once in a recording, which goes on
    /// until it is stopped or cancelled. It may call any function of the input. Whoever starts a recording
    /// sets it to their own.
    std::function<void()> onAudioLost;
    /// Called when the recogniser has given up the recording that runs: what is said from now on is in vain.
    /// The same holds for it.
    std::function<void()> onRecognitionFailed;

    /// Begins to listen in the language with this id; a recording that runs is dropped first. Throws an
    /// Error; the recording is dropped then.
    virtual Task<void> start(std::string language) = 0;

    class RecognitionFailed;

    /// Ends the recording inside the call; the task gives all that was said in it, also when start() is still
    /// under way, and the empty string when that fails. Throws RecognitionFailed.
    virtual Task<std::string> stop() = 0;

    /// Drops the recording that runs. Those that were stopped are not touched.
    virtual void cancel() = 0;

    /// Nobody can wait any longer: the recordings that were stopped give what is known of them by now.
    virtual void hurry() = 0;

    /// Whether sound that there should have been is missing from the recording that runs, so that its words
    /// are no more than a part of what was said.
    virtual bool lacksSound() const = 0;

    /// Whether the recogniser still is at the recording before: nothing is known of what is said now.
    virtual bool isBehind() const = 0;
};

/// The recogniser gave a recording up: what it had understood may be half of what was said.
class SpeechInput::RecognitionFailed : public MessageError {
 public:
    RecognitionFailed(std::string heard, std::string message)
        : MessageError(std::move(message)), heard_(std::move(heard)) {}
    const std::string& heard() const { return heard_; }

 private:
    std::string heard_;
};

}  // namespace dorix
