#pragma once

#include "base/async/AsyncStream.h"
#include "base/async/Completion.h"
#include "platform/SpeechRecognition.h"
#include "recognition/ModelRequest.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace dorix {

/// What is said in one go, kept until its last word is understood: a recogniser that dies meanwhile costs
/// time only, as the next one hears it from its beginning. What has been told of it before stays until the
/// new one has come as far. Main executor.
class SpokenUtterance {
 public:
    explicit SpokenUtterance(ModelRequest model) : model_(std::move(model)) {}

    const ModelRequest& model() const { return model_; }

    /// More sound, and then no more.
    void hear(std::span<const float> samples) { sound_.insert(sound_.end(), samples.begin(), samples.end()); }
    void end() { isWhole_ = true; }
    bool isWhole() const { return isWhole_; }
    double seconds() const;

    /// A recogniser begins with it, from its first sound.
    void beginAttempt();
    /// The next sound for the recogniser, as long as it has not fallen behind by much; empty when there is
    /// none.
    std::span<const float> nextSound();
    bool isAllSent() const { return isWhole_ && sent_ == sound_.size(); }
    /// Whether the recogniser has not worked on everything that it was sent.
    bool isOutstanding() const { return sent_ > heard_; }

    /// What the recogniser tells.
    void heard(std::uint64_t samples);
    void understood(TranscriptionResult result);
    /// Whether it is more than anybody says, which a damaged model may.
    bool isTooLong() const;
    /// That was all of it.
    void done();

    /// The recogniser failed it; how often that has happened.
    int countFailure() { return ++failures_; }
    /// From now on it is for another model, from its first sound.
    void takeModel(ModelRequest model);
    /// It is given up.
    void fail(std::exception_ptr error);
    /// Nobody wants its words.
    void drop() { isDropped_ = true; }
    bool isDropped() const { return isDropped_; }

    AsyncStream<TranscriptionResult> results() const { return results_; }
    /// After `results` has ended.
    Completion<void> finished() const { return finished_; }

 private:
    void tell();

    ModelRequest model_;
    std::vector<float> sound_;
    bool isWhole_ = false;
    bool isDropped_ = false;
    int failures_ = 0;

    // Of the recogniser that is at it now:
    std::size_t sent_ = 0;  // samples
    std::size_t heard_ = 0;
    std::string finalText_;
    std::string partialText_;

    std::size_t furthest_ = 0;  // that any recogniser has come
    const AsyncStream<TranscriptionResult> results_;
    const Completion<void> finished_;
};

}  // namespace dorix
