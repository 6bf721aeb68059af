#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <span>

namespace dorix {

/// Interleaved 32-bit floating-point samples, -1 to 1.
struct AudioFormat {
    double sampleRate = 0;  // frames a second
    int channelCount = 0;

    bool operator==(const AudioFormat&) const = default;
};

/// A view of captured sound: frames × channels samples, interleaved. Valid during the call only.
struct AudioBuffer {
    std::span<const float> samples;
    AudioFormat format;

    std::size_t frameLength() const {
        return format.channelCount > 0 ? samples.size() / static_cast<std::size_t>(format.channelCount) : 0;
    }
};

/// One opening of the sound input. Made for one recording and thrown away. Main executor, but for the tap.
class AudioEngine {
 public:
    /// Runs on the engine's audio thread: it must not block, and allocate as little as it can.
    using TapBlock = std::function<void(const AudioBuffer&)>;

    /// Stops. When it returns the tap is not running and will not run again.
    virtual ~AudioEngine() = default;

    /// The format of the default input. A rate or channel count of 0: there is no input.
    virtual AudioFormat inputFormat() const = 0;

    /// Where captured buffers go, about `bufferSize` frames each, in `format`, which is inputFormat(). Before
    /// start.
    virtual void installTap(std::size_t bufferSize, AudioFormat format, TapBlock block) = 0;
    virtual void removeTap() = 0;

    /// Called on the main executor, until the engine is destroyed, when the default input changes or the one
    /// in use goes away. Replaces the observer before it, an empty one takes it away. It may destroy the
    /// engine, or replace itself, while it is being called.
    virtual void onConfigurationChange(std::function<void()> observer) = 0;

    /// Begins to capture; buffers come soon after. Throws an Error when the input cannot be opened.
    virtual void start() = 0;
    virtual void stop() = 0;
    virtual bool isRunning() const = 0;
};

class AudioEngineFactory {
 public:
    virtual ~AudioEngineFactory() = default;
    virtual std::unique_ptr<AudioEngine> makeEngine() = 0;
};

}  // namespace dorix
