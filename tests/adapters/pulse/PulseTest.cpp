#include "adapters/pulse/SoundServer.h"
#include "base/Error.h"
#include "linux/pulse/PulseAudioEngine.h"
#include "linux/pulse/PulseSystemSounds.h"

#include <atomic>
#include <cmath>
#include <future>
#include <numbers>

namespace dorix {
namespace {

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

using PulseAudioEngineTest = SoundTest;

TEST_F(PulseAudioEngineTest, RecordsEverySampleOfWhatIsPlayed) {
    launch();
    Recording recording;
    const auto engine = record(recording);
    ASSERT_TRUE(hears(recording));
    const auto played = sweep(1.5);
    server.play(played);
    ASSERT_TRUE(loop.runUntil([&] { return recording.sound().size() > played.size(); }));
    engine->stop();
    const auto heard = recording.sound();
    float worst = 0;
    for (std::size_t i = 0; i < played.size(); ++i) worst = std::max(worst, std::abs(heard[i] - played[i]));
    EXPECT_LT(worst, 0.001);
    EXPECT_TRUE(recording.onOtherThread());
    EXPECT_LE(recording.longestBuffer(), 320U) << "20 ms: what lags behind is lost when the stream stops";
    EXPECT_EQ(changes, 0);
}

TEST_F(PulseAudioEngineTest, NoTapRunsAfterStop) {
    launch();
    for (int round = 0; round < 12; ++round) {
        auto engine = factory->makeEngine();
        std::atomic<bool> stopped = false;
        std::atomic<int> calls = 0;
        std::atomic<int> lateCalls = 0;
        engine->installTap(1024, engine->inputFormat(),
                           [&](const AudioBuffer&) { ++(stopped ? lateCalls : calls); });
        engine->start();
        ASSERT_TRUE(loop.runUntil([&] { return calls >= 1 + round % 3; }));
        round % 2 == 0 ? engine->stop() : engine.reset();
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
    useSource("speaker.monitor");
    EXPECT_TRUE(loop.runUntil([&] { return inputFormat().channelCount == 0; }))
        << "what the computer plays is no microphone";
}

TEST_F(PulseAudioEngineTest, TheChosenMicrophoneIsUsedWhileItIsThere) {
    launch();
    const auto isListed = [this](const std::string& id) {
        return std::ranges::count(factory->inputs().get(), id, &AudioInput::id) == 1;
    };
    ASSERT_TRUE(loop.runUntil([&] { return isListed("virtmic") && isListed("other"); }));
    EXPECT_FALSE(isListed("speaker.monitor")) << "what the computer plays is no microphone";

    Recording recording;
    auto engine = record(recording);
    ASSERT_TRUE(hears(recording));
    factory->useInput("other");
    ASSERT_TRUE(loop.runUntil([&] { return changes == 1; })) << "the one that runs is told";
    engine = record(recording);
    EXPECT_EQ(engine->inputFormat(), (AudioFormat{44100, 2}));
    ASSERT_TRUE(hears(recording));
    useSource("mic.monitor");
    useSource("virtmic");
    loop.runFor(0.5);
    EXPECT_EQ(changes, 1) << "the system's choice is nothing to one who has chosen";

    ASSERT_TRUE(server.control({"unload-module", SoundServer::otherModule}));
    ASSERT_TRUE(loop.runUntil([&] { return changes == 2 && !isListed("other"); }));
    engine = record(recording);
    EXPECT_EQ(engine->inputFormat(), (AudioFormat{16000, 1})) << "the default stands in";
    ASSERT_TRUE(hears(recording));
    ASSERT_TRUE(server.control(
        {"load-module", "module-remap-source", "master=speaker.monitor", "source_name=other"}));
    EXPECT_TRUE(loop.runUntil([&] { return changes == 3; })) << "and goes when the chosen one is back";
    EXPECT_EQ(inputFormat(), (AudioFormat{44100, 2}));
    factory->useInput("");
    EXPECT_TRUE(loop.runUntil([&] { return inputFormat() == AudioFormat{16000, 1}; }));
}

TEST_F(PulseAudioEngineTest, ASourceThatIsSuspendedOrGoesAwayIsReported) {
    launch();
    Recording recording;
    auto engine = record(recording);
    ASSERT_TRUE(hears(recording));
    ASSERT_TRUE(server.control({"suspend-source", "virtmic", "1"}));
    EXPECT_TRUE(loop.runUntil([&] { return changes == 1; }));
    ASSERT_TRUE(server.control({"suspend-source", "virtmic", "0"}));

    engine = record(recording);
    ASSERT_TRUE(hears(recording));
    // The observer may do what the speech engine does: open anew, which destroys the engine that calls it.
    Recording after;
    engine->onConfigurationChange([&] { engine = record(after); });
    ASSERT_TRUE(server.control({"unload-module", SoundServer::virtmicModule}));
    EXPECT_TRUE(hears(after));
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
    const auto engine = factory->makeEngine();
    EXPECT_EQ(engine->inputFormat(), AudioFormat{});
    EXPECT_LT(loop.main.now() - before, 0.5);
    loop.runFor(0.2);
    EXPECT_THROW(engine->start(), Error);
    EXPECT_FALSE(engine->isRunning());
    factory.reset();  // an engine may outlive it
}

TEST(PulseConnectionTest, ABusyConnectionKeepsNobodyWaiting) {
    EventLoop loop;
    const auto connection = std::make_shared<PulseConnection>(loop.main, "unix:/nonexistent");
    PulseSystemSounds sounds(connection);
    // As busy as looking a server up makes the connection's thread.
    std::atomic<bool> isBusy = false;
    std::promise<void> released;
    Subscription refreshes;
    {
        const PulseConnection::Lock lock(*connection);
        refreshes = connection->onRefresh([&, release = released.get_future().share()] {
            isBusy = true;
            release.wait();
        });
    }
    connection->retryNow();
    ASSERT_TRUE(loop.runUntil([&] { return isBusy.load(); }));
    const double before = loop.main.now();
    connection->retryNow();
    PulseAudioEngine engine(connection);
    EXPECT_THROW(engine.start(), Error);
    engine.stop();
    sounds.play("Tink", 0);
    EXPECT_LT(loop.main.now() - before, 0.5);
    released.set_value();
    const PulseConnection::Lock lock(*connection);
    refreshes.reset();
}

TEST(PulseConnectionTest, MayGoWhileItIsToTryAgain) {
    EventLoop loop;
    for (int round = 0; round < 50; ++round) {
        PulseConnection connection(loop.main, "unix:/nonexistent");
        if (round % 2 == 0) std::this_thread::yield();
        connection.retryNow();
    }
}

class PulseSystemSoundsTest : public SoundTest {
 protected:
    PulseSystemSounds sounds{factory->connection()};
};

float peakOf(const Recording& recording) {
    float peak = 0;
    for (const float sample : recording.samples()) peak = std::max(peak, std::abs(sample));
    return peak;
}

TEST_F(PulseSystemSoundsTest, PlaysAtTheVolumeAskedAndFromTheStart) {
    launch();
    ASSERT_TRUE(server.control({"set-default-sink", "mic"}));
    Recording heard;
    const auto engine = record(heard);
    for (const char* name : {"Tink", "Pop"}) {
        for (const double volume : {0.25, 1.0}) {
            const auto expected = static_cast<float>(0.7 * volume);
            heard.clear();
            const double time = loop.main.now();
            sounds.play(name, volume);
            sounds.play(name, volume);
            EXPECT_LT(loop.main.now() - time, 0.5);
            EXPECT_TRUE(loop.runUntil([&] { return peakOf(heard) > 0.8F * expected; })) << name;
            EXPECT_TRUE(hears(heard, 8000));
            EXPECT_LT(peakOf(heard), 1.2F * expected) << name << ": it was heard twice at a time";
            EXPECT_LT(std::ranges::count_if(heard.samples(),
                                            [](float sample) { return std::abs(sample) > 0.002F; }),
                      16000 / 4)
                << name << ": it is short";
        }
    }
    heard.clear();
    sounds.play("Basso", 1);
    EXPECT_TRUE(hears(heard, 3200));
    EXPECT_EQ(peakOf(heard), 0);

    server.kill();
    for (int i = 0; i < 10; ++i) {
        sounds.play("Tink", 1);
        loop.runFor(0.01);
    }
}

}  // namespace
}  // namespace dorix
