#include "base/async/ManualExecutor.h"
#include "base/async/TaskScope.h"
#include "speech/AudioTap.h"
#include "speech/BufferClock.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

namespace dorix {
namespace {

class AudioTapTest : public testing::Test {
 protected:
    AudioTap tapFor(AudioFormat input, AudioFormat output) {
        return {input, output, executor, clock, stream, [this](float level) { levels.push_back(level); }};
    }

    /// Everything that has been handed on.
    std::vector<float> taken() {
        stream.finish();
        std::vector<float> all;
        TaskScope scope(executor);
        scope.spawn(collect(stream, all));
        return all;
    }

    static Task<void> collect(AsyncStream<AnalyzerInput> from, std::vector<float>& all) {
        while (const auto input = co_await from.next()) {
            all.insert(all.end(), input->samples.begin(), input->samples.end());
        }
    }

    ManualExecutor executor;
    BufferClock clock{executor.now()};
    AsyncStream<AnalyzerInput> stream;
    std::vector<float> levels;
};

std::vector<float> sine(double frequency, double rate, std::size_t frames, float amplitude = 0.5F) {
    std::vector<float> samples(frames);
    for (std::size_t i = 0; i < frames; ++i) {
        samples[i] =
            amplitude *
            static_cast<float>(std::sin(2 * std::numbers::pi * frequency * static_cast<double>(i) / rate));
    }
    return samples;
}

void feed(AudioTap& tap, const std::vector<float>& samples, AudioFormat format, std::size_t frames) {
    const auto step = frames * static_cast<std::size_t>(format.channelCount);
    for (std::size_t at = 0; at < samples.size(); at += step) {
        tap({std::span(samples).subspan(at, std::min(step, samples.size() - at)), format});
    }
}

/// The steepest step between two neighbours, the edges of the whole left out.
float steepestStep(const std::vector<float>& samples) {
    float steepest = 0;
    for (std::size_t i = 200; i + 200 < samples.size(); ++i) {
        steepest = std::max(steepest, std::abs(samples[i] - samples[i - 1]));
    }
    return steepest;
}

TEST_F(AudioTapTest, EqualFormatsPassUnchanged) {
    const AudioFormat format{16000, 1};
    auto tap = tapFor(format, format);
    const auto sound = sine(440, 16000, 3000);
    feed(tap, sound, format, 1024);
    EXPECT_EQ(taken(), sound);
}

TEST_F(AudioTapTest, ResamplingIsSeamlessAndKeepsTheLength) {
    for (const double rate : {44100.0, 48000.0, 8000.0}) {
        stream = {};
        auto tap = tapFor({rate, 1}, {16000, 1});
        feed(tap, sine(440, rate, static_cast<std::size_t>(rate)), {rate, 1}, 1024);
        const auto out = taken();
        EXPECT_NEAR(static_cast<double>(out.size()), 16000, 128) << rate;
        // A sine's steepest step is at its zero crossing; a click at a buffer's edge would exceed it.
        EXPECT_LT(steepestStep(out), 0.5 * 2 * std::numbers::pi * 440 / 16000 * 1.05) << rate;
        const auto level = soundLevel({std::span(out).subspan(1000, 8000), {16000, 1}}, 0);
        EXPECT_NEAR(level, soundLevel({sine(440, 16000, 8000), {16000, 1}}, 0), 0.002) << rate;
    }
}

TEST_F(AudioTapTest, ChannelsAreMixedToTheTargets) {
    auto toMono = tapFor({16000, 2}, {16000, 1});
    toMono({std::vector<float>{0.2F, 0.4F, -1, 1}, {16000, 2}});
    auto toStereo = tapFor({16000, 1}, {16000, 2});
    toStereo({std::vector<float>{0.5F}, {16000, 1}});
    const auto out = taken();
    ASSERT_EQ(out.size(), 4U);
    EXPECT_FLOAT_EQ(out[0], 0.3F);
    EXPECT_FLOAT_EQ(out[1], 0);
    EXPECT_FLOAT_EQ(out[2], 0.5F);
    EXPECT_FLOAT_EQ(out[3], 0.5F);
}

TEST_F(AudioTapTest, LevelIsOfTheFirstChannelInDecibelsAndRateLimited) {
    const AudioFormat format{16000, 2};
    auto tap = tapFor(format, format);
    const std::vector<float> silentLeft{0, 1, 0, 1};
    const std::vector<float> tenthLeft{0.1F, 0, -0.1F, 0};  // -20 dB
    const std::vector<float> fullLeft{1, 0, -1, 0};
    tap({silentLeft, format});
    tap({fullLeft, format});  // too soon
    executor.advanceBy(0.0625);
    tap({std::span<const float>(), format});  // nothing to measure
    tap({tenthLeft, format});
    executor.advanceBy(0.0625);
    tap({fullLeft, format});
    ASSERT_EQ(levels.size(), 3U);
    EXPECT_FLOAT_EQ(levels[0], 0);
    EXPECT_NEAR(levels[1], 0.6, 1e-4);
    EXPECT_FLOAT_EQ(levels[2], 1);
    EXPECT_DOUBLE_EQ(clock.value(), 0.125);
}

TEST_F(AudioTapTest, AnotherFormatThanAgreedIsDropped) {
    auto tap = tapFor({48000, 1}, {16000, 1});
    tap({std::vector<float>(2048), {44100, 2}});
    EXPECT_TRUE(taken().empty());
}

}  // namespace
}  // namespace dorix
