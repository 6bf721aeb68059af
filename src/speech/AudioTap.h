#pragma once

#include "base/async/AsyncStream.h"
#include "base/async/Executor.h"
#include "platform/AudioEngine.h"
#include "platform/SpeechRecognition.h"
#include "speech/SampleConverter.h"

#include <functional>
#include <limits>
#include <optional>

namespace dorix {

class BufferClock;

/// Stands between a sound input and a recogniser: marks the clock, measures the level, converts, hands on.
/// Made on the main executor, then called on the audio thread only. It takes no lock but the clock's and the
/// stream's, and allocates what it hands on and nothing else.
class AudioTap {
 public:
    using LevelCallback = std::function<void(float)>;

    /// Both formats have a positive rate and at least one channel. `onLevel` is called on the audio thread.
    /// `time` and `clock` must outlive the tap. Throws MessageError when the formats cannot be converted.
    AudioTap(AudioFormat inputFormat, AudioFormat outputFormat, const Executor& time, BufferClock& clock,
             AsyncStream<AnalyzerInput> continuation, LevelCallback onLevel);

    void operator()(const AudioBuffer& buffer);

 private:
    void measureLevel(const AudioBuffer& buffer, double now);
    void deliver(const AudioBuffer& buffer);

    const AudioFormat inputFormat_;
    const Executor& time_;
    BufferClock& clock_;
    std::optional<SampleConverter> converter_;  // none when the formats are equal
    const AsyncStream<AnalyzerInput> continuation_;
    const LevelCallback onLevel_;
    double lastLevelReport_ = -std::numeric_limits<double>::infinity();
};

/// The level of one channel of interleaved sound on a scale from -50 dB, which is 0, to 0 dB, which is 1.
float soundLevel(const AudioBuffer& buffer, std::size_t channel);

}  // namespace dorix
