#pragma once

#include "adapters/harness/EventLoop.h"
#include "adapters/harness/OtherProgram.h"
#include "fakes/TemporaryFolder.h"
#include "linux/pulse/PulseAudioEngine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace dorix {

/// A PulseAudio server of a test's own, with virtual devices: the null sink "mic" and the source "virtmic"
/// that gives back what is played to it (16 kHz mono), "speaker" and "other" (44.1 kHz stereo) likewise.
/// Where DORIX_TEST_SOUND is "session", the session's server in its place, which has the first two.
class SoundServer {
 public:
    /// The numbers of the modules that make the sources "virtmic" and "other": they are counted as launch()
    /// loads them.
    static constexpr const char* virtmicModule = "2";
    static constexpr const char* otherModule = "4";

    static bool isOfSession() {
        // NOLINTNEXTLINE(concurrency-mt-unsafe)
        const char* chosen = std::getenv("DORIX_TEST_SOUND");
        return chosen != nullptr && std::string_view(chosen) == "session";
    }
    static bool isInstalled() { return isOfSession() || std::filesystem::exists("/usr/bin/pulseaudio"); }

    /// What names the server to a client.
    std::string address() const {
        return isOfSession() ? "" : "unix:" + (folder_.path() / "pulse/native").string();
    }

    void launch() {
        if (isOfSession()) return;
        // Without rewinds a sink renders 50 ms ahead, not 2 s, which is how long a first recording would
        // wait.
        server_.emplace(
            std::vector<std::string>{"pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1",
                                     "--disallow-exit", "--log-level=error", "-L",
                                     "module-native-protocol-unix", "-L",
                                     "module-null-sink sink_name=mic rate=16000 channels=1 norewinds=1", "-L",
                                     "module-remap-source master=mic.monitor source_name=virtmic", "-L",
                                     "module-null-sink sink_name=speaker rate=44100 channels=2 norewinds=1",
                                     "-L", "module-remap-source master=speaker.monitor source_name=other"},
            environment());
    }
    void kill() {
        server_->signal(SIGKILL);
        server_.reset();
        std::filesystem::remove_all(folder_.path() / "pulse");
    }

    /// Runs pactl with these arguments; whether it succeeded.
    bool control(const std::vector<std::string>& arguments) const {
        return OtherProgram(client("pactl", arguments), environment()).wait() == 0;
    }

    /// Plays sound into a sink; returns at once.
    void play(const std::vector<float>& samples, AudioFormat format = {16000, 1},
              const std::string& sink = "mic") {
        const std::string bytes(reinterpret_cast<const char*>(samples.data()),
                                samples.size() * sizeof(float));
        // A server-side buffer longer than the sound: a busy machine does not tear it.
        player_.emplace(client("paplay", {"-d", sink, "--raw", "--format=float32le",
                                          "--rate=" + std::to_string(std::lround(format.sampleRate)),
                                          "--channels=" + std::to_string(format.channelCount),
                                          "--latency-msec=4000", "/dev/stdin"}),
                        environment(), bytes);
    }

 private:
    std::vector<std::string> client(const std::string& program,
                                    const std::vector<std::string>& arguments) const {
        std::vector<std::string> command{program};
        if (!isOfSession()) command.insert(command.end(), {"-s", address()});
        command.insert(command.end(), arguments.begin(), arguments.end());
        return command;
    }

    Variables environment() const {
        if (isOfSession()) return {};
        // A server that finds another's name on the bus gives up.
        return {{"XDG_RUNTIME_DIR", folder_.path()},
                {"HOME", folder_.path()},
                {"PULSE_SERVER", ""},
                {"DISPLAY", ""},
                {"DBUS_SESSION_BUS_ADDRESS", ""}};
    }

    TemporaryFolder folder_;
    std::optional<OtherProgram> server_;
    std::optional<OtherProgram> player_;
};

/// What an engine's tap has got.
class Recording {
 public:
    void take(const AudioBuffer& buffer) {
        const std::scoped_lock lock(mutex_);
        samples_.insert(samples_.end(), buffer.samples.begin(), buffer.samples.end());
        longestBuffer_ = std::max(longestBuffer_, buffer.frameLength());
        onOtherThread_ = onOtherThread_ && std::this_thread::get_id() != testThread_;
    }
    std::vector<float> samples() const {
        const std::scoped_lock lock(mutex_);
        return samples_;
    }
    std::size_t size() const {
        const std::scoped_lock lock(mutex_);
        return samples_.size();
    }
    /// What has been recorded since the first sound.
    std::vector<float> sound() const {
        auto all = samples();
        const auto onset = std::ranges::find_if(all, [](float sample) { return std::abs(sample) > 1e-4F; });
        return {onset, all.end()};
    }
    void clear() {
        const std::scoped_lock lock(mutex_);
        samples_.clear();
    }
    std::size_t longestBuffer() const { return longestBuffer_; }
    bool onOtherThread() const { return onOtherThread_; }

 private:
    mutable std::mutex mutex_;
    std::vector<float> samples_;
    std::size_t longestBuffer_ = 0;
    bool onOtherThread_ = true;
    const std::thread::id testThread_ = std::this_thread::get_id();
};

class SoundTest : public testing::Test {
 protected:
    void SetUp() override {
        if (!SoundServer::isInstalled()) GTEST_SKIP() << "no pulseaudio here; PipeWire serves in its place";
    }

    void launch() {
        server.launch();
        ASSERT_TRUE(loop.runUntil([&] { return inputFormat().channelCount > 0; }));
        useSource("virtmic");
        if (SoundServer::isOfSession()) return;
        ASSERT_TRUE(loop.runUntil([&] { return inputFormat() == AudioFormat{16000, 1}; }));
    }
    void useSource(const std::string& name) { ASSERT_TRUE(server.control({"set-default-source", name})); }

    AudioFormat inputFormat() { return factory->makeEngine()->inputFormat(); }

    /// A running engine; `changes` counts what it reports.
    std::unique_ptr<AudioEngine> record(Recording& into) {
        auto engine = factory->makeEngine();
        engine->installTap(1024, engine->inputFormat(),
                           [&into](const AudioBuffer& buffer) { into.take(buffer); });
        engine->onConfigurationChange([this] { ++changes; });
        const double before = loop.main.now();
        engine->start();
        EXPECT_LT(loop.main.now() - before, 0.5);
        return engine;
    }
    bool hears(Recording& recording, std::size_t samples = 1600) {
        const auto before = recording.size();
        return loop.runUntil([&, before] { return recording.size() >= before + samples; });
    }

    EventLoop loop;
    SoundServer server;
    std::unique_ptr<PulseAudioEngineFactory> factory =
        std::make_unique<PulseAudioEngineFactory>(loop.main, server.address());
    int changes = 0;
};

}  // namespace dorix
