#pragma once

#include "base/async/Executor.h"
#include "platform/AudioEngine.h"

#include <memory>
#include <string>

namespace dorix {

class PulseConnection;

/// Sound input from a PulseAudio server, or from PipeWire's stand-in for one. It connects in the background
/// and stays connected; a server that is absent or goes away is tried again, ever more rarely, and at once
/// when an engine is asked for. Without it engines have no input. Main executor; no call waits for the
/// server. Engines may outlive the factory.
class PulseAudioEngineFactory final : public AudioEngineFactory {
 public:
    /// `server` as PULSE_SERVER would name it, the user's own when empty. `main` must outlive the engines.
    explicit PulseAudioEngineFactory(Executor& main, std::string server = {});
    ~PulseAudioEngineFactory() override;

    std::unique_ptr<AudioEngine> makeEngine() override;

    /// The connection, for others that need the server.
    const std::shared_ptr<PulseConnection>& connection() const { return connection_; }

 private:
    std::shared_ptr<PulseConnection> connection_;
};

}  // namespace dorix
