#pragma once

#include "linux/pulse/PulseConnection.h"
#include "platform/AudioEngine.h"

#include <pulse/pulseaudio.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace dorix {

/// A recording from the source that is to be recorded from, in that source's own format. The tap runs on the
/// connection's thread. Trouble after start shows as a configuration change, or as silence when the stream
/// never came to be.
class PulseAudioEngine final : public AudioEngine {
 public:
    explicit PulseAudioEngine(std::shared_ptr<PulseConnection> connection);
    ~PulseAudioEngine() override;

    AudioFormat inputFormat() const override { return source_.format; }
    void installTap(std::size_t bufferSize, AudioFormat format, TapBlock block) override;
    void removeTap() override;
    void onConfigurationChange(std::function<void()> observer) override;
    void start() override;
    void stop() override;
    bool isRunning() const override { return stream_ != nullptr; }

 private:
    struct CloseStream {
        void operator()(pa_stream* stream) const;
    };
    /// Main executor; what the connection's thread posts holds it weakly.
    struct Reporter {
        std::function<void()> observer;
    };

    void openStream(pa_context* context);
    void watchStream();
    void stateChanged();
    void suspect();
    void read();
    void sourcesRefreshed();

    const std::shared_ptr<PulseConnection> connection_;
    const PulseConnection::Source source_;
    const std::shared_ptr<Reporter> reporter_ = std::make_shared<Reporter>();
    std::size_t bufferSize_ = 0;
    AudioFormat format_;

    // Changed on the main executor under the connection's lock, used on the connection's thread:
    std::unique_ptr<pa_stream, CloseStream> stream_;
    TapBlock tap_;
    bool wasReady_ = false;
    bool suspected_ = false;
    bool reported_ = false;
    Subscription refreshes_;
};

/// Sound input from a PulseAudio server, or from PipeWire's stand-in for one. It connects in the background
/// and stays connected; a server that is absent or goes away is tried again, ever more rarely, and at once
/// when an engine is asked for. Without it engines have no input. Main executor; no call waits for the
/// server. Engines may outlive the factory.
class PulseAudioEngineFactory final : public AudioEngineFactory {
 public:
    /// `server` as PULSE_SERVER would name it, the user's own when empty. `main` must outlive the engines.
    explicit PulseAudioEngineFactory(Executor& main, std::string server = {});
    ~PulseAudioEngineFactory() override;

    const Observable<std::vector<AudioInput>>& inputs() const override { return *inputs_; }
    void useInput(std::string id) override { connection_->choose(std::move(id)); }
    std::unique_ptr<AudioEngine> makeEngine() override;

    /// The connection, for others that need the server.
    const std::shared_ptr<PulseConnection>& connection() const { return connection_; }

 private:
    using Inputs = Observable<std::vector<AudioInput>>;

    static PulseConnection::Listed listInto(Executor& main, const std::shared_ptr<Inputs>& inputs);

    /// Main executor; what the connection's thread posts holds it weakly.
    const std::shared_ptr<Inputs> inputs_ = std::make_shared<Inputs>();
    std::shared_ptr<PulseConnection> connection_;
};

}  // namespace dorix
