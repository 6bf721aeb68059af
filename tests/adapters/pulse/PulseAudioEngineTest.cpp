#include "adapters/EventLoop.h"
#include "adapters/pulse/SoundServer.h"
#include "base/Error.h"
#include "linux/pulse/PulseAudioEngine.h"
#include "linux/pulse/PulseAudioEngineFactory.h"
#include "linux/pulse/PulseSystemSounds.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <future>
#include <memory>
#include <mutex>
#include <numbers>
#include <thread>
#include <vector>

namespace dorix {
namespace {

/// What an engine's tap has got, with the thread and the lengths of its buffers.
struct Recording {
    std::mutex mutex;
    std::vector<float> samples;
    std::size_t longestBuffer = 0;
    bool onOtherThread = true;
    std::thread::id testThread = std::this_thread::get_id();

    void take(const AudioBuffer& buffer) {
        std::scoped_lock lock(mutex);
        samples.insert(samples.end(), buffer.samples.begin(), buffer.samples.end());
        longestBuffer = std::max(longestBuffer, buffer.frameLength());
        onOtherThread = onOtherThread && std::this_thread::get_id() != testThread;
    }
    std::size_t size() {
        std::scoped_lock lock(mutex);
        return samples.size();
    }
    /// The index of the first sound, or the size.
    std::size_t onset() {
        std::scoped_lock lock(mutex);
        std::size_t at = 0;
        while (at < samples.size() && std::abs(samples[at]) < 1e-4) ++at;
        return at;
    }
};

/// A tone that rises through the range of speech, so that every moment of it is told from every other.
std::vector<float> sweep(double seconds) {
    std::vector<float> samples(static_cast<std::size_t>(seconds * 16000));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double time = static_cast<double>(i) / 16000;
        const double phase = 2 * std::numbers::pi * (200 * time + 1000 * time * time / seconds);
        samples[i] = 0.5F * static_cast<float>(std::cos(phase));
    }
    return samples;
}

class PulseAudioEngineTest : public testing::Test {
 protected:
    void SetUp() override {
        if (!SoundServer::isInstalled()) GTEST_SKIP() << "no pulseaudio here; PipeWire serves in its place";
    }

    void launch() {
        server.launch();
        factory = std::make_unique<PulseAudioEngineFactory>(loop.main, server.address());
        ASSERT_TRUE(loop.runUntil([&] { return inputFormat().channelCount > 0; }));
        useSource("virtmic");
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
        EXPECT_LT(loop.main.now() - before, 0.1);
        return engine;
    }
    bool hears(Recording& recording, std::size_t samples = 1600) {
        const auto before = recording.size();
        return loop.runUntil([&, before] { return recording.size() >= before + samples; });
    }

    EventLoop loop;
    SoundServer server;
    std::unique_ptr<PulseAudioEngineFactory> factory;
    int changes = 0;
};

TEST_F(PulseAudioEngineTest, RecordsEverySampleOfWhatIsPlayed) {
    launch();
    Recording recording;
    const auto engine = record(recording);
    ASSERT_TRUE(hears(recording));
    const auto played = sweep(1.5);
    server.play(played);
    ASSERT_TRUE(loop.runUntil([&] { return recording.size() > recording.onset() + played.size(); }));
    engine->stop();
    const auto onset = recording.onset();
    float worst = 0;
    for (std::size_t i = 0; i < played.size(); ++i) {
        worst = std::max(worst, std::abs(recording.samples[onset + i] - played[i]));
    }
    EXPECT_LT(worst, 0.001) << "onset " << onset;
    EXPECT_TRUE(recording.onOtherThread);
    EXPECT_LE(recording.longestBuffer, 1024U);
    EXPECT_EQ(changes, 0);
}

TEST_F(PulseAudioEngineTest, WhatTheComputerPlaysIsNoMicrophone) {
    launch();
    useSource("speaker.monitor");
    EXPECT_TRUE(loop.runUntil([&] { return inputFormat().channelCount == 0; }));
}

TEST_F(PulseAudioEngineTest, NoTapRunsAfterStop) {
    launch();
    for (int round = 0; round < 20; ++round) {
        auto engine = factory->makeEngine();
        std::atomic<bool> stopped = false;
        std::atomic<int> calls = 0;
        std::atomic<int> lateCalls = 0;
        engine->installTap(1024, engine->inputFormat(),
                           [&](const AudioBuffer&) { ++(stopped ? lateCalls : calls); });
        engine->start();
        ASSERT_TRUE(loop.runUntil([&] { return calls >= 1 + round % 3; }));
        if (round % 2 == 0) {
            engine->stop();
        } else {
            engine.reset();
        }
        stopped = true;
        loop.runFor(0.03);
        EXPECT_EQ(lateCalls, 0);
    }
}

TEST_F(PulseAudioEngineTest, ANewDefaultSourceIsReportedOnceAndThenUsed) {
    launch();
    Recording recording;
    auto engine = record(recording);
    ASSERT_TRUE(hears(recording));
    useSource("other");
    ASSERT_TRUE(loop.runUntil([&] { return changes > 0; }));
    loop.runFor(0.2);
    EXPECT_EQ(changes, 1);
    Recording fromOther;
    engine = record(fromOther);
    EXPECT_EQ(engine->inputFormat(), (AudioFormat{44100, 2}));
    EXPECT_TRUE(hears(fromOther));
    EXPECT_EQ(changes, 1);
}

TEST_F(PulseAudioEngineTest, ASourceThatGoesAwayIsReported) {
    launch();
    Recording recording;
    auto engine = record(recording);
    ASSERT_TRUE(hears(recording));
    // The observer may do what the speech engine does: open anew, which destroys the engine that calls it.
    Recording after;
    engine->onConfigurationChange([&] { engine = record(after); });
    ASSERT_TRUE(server.control({"unload-module", SoundServer::virtmicModule}));
    EXPECT_TRUE(hears(after));
}

TEST_F(PulseAudioEngineTest, ASuspendedSourceIsReported) {
    launch();
    Recording recording;
    const auto engine = record(recording);
    ASSERT_TRUE(hears(recording));
    ASSERT_TRUE(server.control({"suspend-source", "virtmic", "1"}));
    EXPECT_TRUE(loop.runUntil([&] { return changes == 1; }));
}

TEST_F(PulseAudioEngineTest, AServerThatDiesIsReportedAndFoundAgain) {
    launch();
    Recording recording;
    const auto engine = record(recording);
    ASSERT_TRUE(hears(recording));
    server.kill();
    ASSERT_TRUE(loop.runUntil([&] { return changes == 1; }));
    EXPECT_EQ(inputFormat(), AudioFormat{});
    auto deaf = factory->makeEngine();
    deaf->installTap(1024, {16000, 1}, [](const AudioBuffer&) {});
    EXPECT_THROW(deaf->start(), Error);
    server.launch();
    ASSERT_TRUE(loop.runUntil([&] { return inputFormat().channelCount > 0; }));
    Recording again;
    const auto next = record(again);
    EXPECT_TRUE(hears(again));
}

TEST_F(PulseAudioEngineTest, WithoutAServerThereIsNoInput) {
    const double before = loop.main.now();
    factory = std::make_unique<PulseAudioEngineFactory>(loop.main, server.address());
    const auto engine = factory->makeEngine();
    EXPECT_EQ(engine->inputFormat(), AudioFormat{});
    EXPECT_LT(loop.main.now() - before, 0.1);
    loop.runFor(0.2);
    EXPECT_THROW(engine->start(), Error);
    EXPECT_FALSE(engine->isRunning());
    factory.reset();  // an engine may outlive it
}

/// Keeps the connection's thread as busy as looking a server up does.
struct BusyWatcher final : PulseConnection::Watcher {
    void sourcesRefreshed() override {
        isBusy = true;
        release.wait();
    }

    std::atomic<bool> isBusy = false;
    std::promise<void> released;
    std::shared_future<void> release{released.get_future()};
};

TEST(PulseConnectionTest, ABusyConnectionKeepsNobodyWaiting) {
    EventLoop loop;
    const auto connection = std::make_shared<PulseConnection>(loop.main, "unix:/nonexistent");
    PulseSystemSounds sounds(connection);
    BusyWatcher watcher;
    {
        const PulseConnection::Lock lock(*connection);
        connection->addWatcher(watcher);
    }
    connection->retryNow();
    ASSERT_TRUE(loop.runUntil([&] { return watcher.isBusy.load(); }));
    const double before = loop.main.now();
    connection->retryNow();
    PulseAudioEngine engine(connection);
    EXPECT_THROW(engine.start(), Error);
    engine.stop();
    sounds.play("Tink", 0);
    EXPECT_LT(loop.main.now() - before, 0.1);
    watcher.released.set_value();
    const PulseConnection::Lock lock(*connection);
    connection->removeWatcher(watcher);
}

TEST(PulseConnectionTest, MayGoWhileItIsToTryAgain) {
    EventLoop loop;
    for (int round = 0; round < 50; ++round) {
        PulseConnection connection(loop.main, "unix:/nonexistent");
        if (round % 2 == 0) std::this_thread::yield();
        connection.retryNow();
    }
}

}  // namespace
}  // namespace dorix
