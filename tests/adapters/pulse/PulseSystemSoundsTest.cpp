#include "adapters/EventLoop.h"
#include "adapters/pulse/SoundServer.h"
#include "linux/pulse/PulseAudioEngineFactory.h"
#include "linux/pulse/PulseSystemSounds.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <mutex>

namespace dorix {
namespace {

/// How loud what the speakers play has been, and for how long.
struct Loudness {
    std::mutex mutex;
    float peak = 0;
    std::size_t loud = 0;  // samples

    void take(const AudioBuffer& buffer) {
        const std::scoped_lock lock(mutex);
        for (const float sample : buffer.samples) {
            peak = std::max(peak, std::abs(sample));
            loud += std::abs(sample) > 0.002F ? 1 : 0;
        }
    }
    float peakNow() {
        const std::scoped_lock lock(mutex);
        return peak;
    }
    void reset() {
        const std::scoped_lock lock(mutex);
        peak = 0;
        loud = 0;
    }
};

class PulseSystemSoundsTest : public testing::Test {
 protected:
    void SetUp() override {
        if (!SoundServer::isInstalled()) GTEST_SKIP() << "no pulseaudio here; PipeWire serves in its place";
    }

    EventLoop loop;
    SoundServer server;
};

TEST_F(PulseSystemSoundsTest, PlaysAtTheVolumeAskedAndFromTheStart) {
    server.launch();
    PulseAudioEngineFactory factory(loop.main, server.address());
    ASSERT_TRUE(loop.runUntil([&] { return factory.makeEngine()->inputFormat().channelCount > 0; }));
    ASSERT_TRUE(server.control({"set-default-source", "virtmic"}));
    ASSERT_TRUE(server.control({"set-default-sink", "mic"}));
    ASSERT_TRUE(loop.runUntil([&] { return factory.makeEngine()->inputFormat() == AudioFormat{16000, 1}; }));
    Loudness heard;
    const auto engine = factory.makeEngine();
    engine->installTap(1024, engine->inputFormat(), [&](const AudioBuffer& buffer) { heard.take(buffer); });
    engine->start();

    PulseSystemSounds sounds(factory.connection());
    for (const char* name : {"Tink", "Pop"}) {
        for (const double volume : {0.25, 1.0}) {
            const auto expected = static_cast<float>(0.7 * volume);
            heard.reset();
            const double time = loop.main.now();
            sounds.play(name, volume);
            sounds.play(name, volume);
            EXPECT_LT(loop.main.now() - time, 0.1);
            EXPECT_TRUE(loop.runUntil([&] { return heard.peakNow() > 0.8F * expected; })) << name;
            loop.runFor(0.5);
            EXPECT_LT(heard.peakNow(), 1.2F * expected) << name << ": it was heard twice at a time";
            EXPECT_LT(heard.loud, 16000U / 4) << name << ": it is short";
        }
    }
    heard.reset();
    sounds.play("Basso", 1);
    loop.runFor(0.2);
    EXPECT_EQ(heard.peakNow(), 0);

    server.kill();
    for (int i = 0; i < 10; ++i) {
        sounds.play("Tink", 1);
        loop.runFor(0.01);
    }
}

TEST_F(PulseSystemSoundsTest, IsSilentWithoutAServer) {
    PulseAudioEngineFactory factory(loop.main, server.address());
    PulseSystemSounds sounds(factory.connection());
    const double time = loop.main.now();
    sounds.play("Tink", 0.25);
    loop.runFor(0.05);
    sounds.play("Pop", 0.25);
    EXPECT_LT(loop.main.now() - time, 0.5);
}

}  // namespace
}  // namespace dorix
