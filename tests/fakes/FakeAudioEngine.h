#pragma once

#include "platform/AudioEngine.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

/// Sound inputs worked by hand: a test delivers buffers, changes the device and lets starts fail.
class FakeAudioEngineFactory final : public AudioEngineFactory {
 public:
    std::unique_ptr<AudioEngine> makeEngine() override;

    /// Hands sound to the tap of the engine that runs; false when none runs or none is tapped.
    bool deliver(const std::vector<float>& samples);

    /// Tells the newest engine's observer; false when nobody observes.
    bool changeConfiguration();

    bool isRunning() const;

    AudioFormat format{48000, 1};           // without channels there is no input
    std::optional<std::string> startError;  // the words that starts fail with
    int opened = 0;                         // engines made until now

 private:
    class Engine;
    Engine* newest_ = nullptr;
};

}  // namespace dorix
