#pragma once

#include "base/Observable.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

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

    /// The format of the input. A rate or channel count of 0: there is no input.
    virtual AudioFormat inputFormat() const = 0;

    /// Where captured buffers go, about `bufferSize` frames each, in `format`, which is inputFormat(). Before
    /// start.
    virtual void installTap(std::size_t bufferSize, AudioFormat format, TapBlock block) = 0;
    virtual void removeTap() = 0;

    /// Called on the main executor, until the engine is destroyed, when another input is to be used or the
    /// one in use goes away. Replaces the observer before it, an empty one takes it away. It may destroy the
    /// engine, or replace itself, while it is being called.
    virtual void onConfigurationChange(std::function<void()> observer) = 0;

    /// Begins to capture; buffers come soon after. Throws an Error when the input cannot be opened.
    virtual void start() = 0;
    virtual void stop() = 0;
    virtual bool isRunning() const = 0;
};

/// A microphone.
struct AudioInput {
    std::string id;    // the same whenever it is there
    std::string name;  // for people

    bool operator==(const AudioInput&) const = default;
};

/// The sound inputs of this computer. Main executor.
class AudioEngineFactory {
 public:
    virtual ~AudioEngineFactory() = default;

    /// The microphones that are there, as they come and go.
    virtual const Observable<std::vector<AudioInput>>& inputs() const = 0;

    /// Engines open that microphone from now on, the system's own choice where the id is empty or of none
    /// that is there; one that is running is told by its onConfigurationChange.
    virtual void useInput(std::string id) = 0;

    /// An opening of the microphone in use.
    virtual std::unique_ptr<AudioEngine> makeEngine() = 0;
};

}  // namespace dorix
