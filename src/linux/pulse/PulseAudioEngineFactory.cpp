#include "linux/pulse/PulseAudioEngineFactory.h"

#include "linux/pulse/PulseAudioEngine.h"
#include "linux/pulse/PulseConnection.h"

#include <utility>

namespace dorix {

PulseAudioEngineFactory::PulseAudioEngineFactory(Executor& main, std::string server)
    : connection_(std::make_shared<PulseConnection>(main, std::move(server))) {}

PulseAudioEngineFactory::~PulseAudioEngineFactory() = default;

std::unique_ptr<AudioEngine> PulseAudioEngineFactory::makeEngine() {
    connection_->retryNow();
    return std::make_unique<PulseAudioEngine>(connection_);
}

}  // namespace dorix
