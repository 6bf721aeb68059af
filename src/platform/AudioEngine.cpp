#include "platform/AudioEngine.h"

#include "base/Error.h"

namespace dorix {

namespace {
class NoInput final : public AudioEngine {
 public:
    AudioFormat inputFormat() const override { return {}; }
    void installTap(std::size_t, AudioFormat, TapBlock) override {}
    void removeTap() override {}
    void onConfigurationChange(std::function<void()>) override {}
    void start() override { throw MessageError("no audio input"); }
    void stop() override {}
    bool isRunning() const override { return false; }
};
}  // namespace

std::unique_ptr<AudioEngine> UnavailableAudioEngineFactory::makeEngine() {
    return std::make_unique<NoInput>();
}

}  // namespace dorix
