#include "speech/AudioTap.h"

#include "speech/BufferClock.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

namespace dorix {

namespace {
constexpr double levelInterval = 0.05;  // seconds: twenty times a second is as much as an eye follows
constexpr double silenceRms = 0.000001;
constexpr double levelRange = 50;  // dB
}  // namespace

float soundLevel(const AudioBuffer& buffer, std::size_t channel) {
    const auto stride = static_cast<std::size_t>(buffer.format.channelCount);
    const auto frames = buffer.frameLength();
    double sum = 0;
    for (std::size_t frame = 0; frame < frames; ++frame) {
        const double sample = buffer.samples[frame * stride + channel];
        sum += sample * sample;
    }
    const double rms = frames > 0 ? std::sqrt(sum / static_cast<double>(frames)) : 0;
    const double db = 20 * std::log10(std::max(rms, silenceRms));
    return static_cast<float>(std::clamp((db + levelRange) / levelRange, 0.0, 1.0));
}

AudioTap::AudioTap(AudioFormat inputFormat, AudioFormat outputFormat, const Executor& time,
                   BufferClock& clock, AsyncStream<AnalyzerInput> continuation, LevelCallback onLevel)
    : inputFormat_(inputFormat),
      time_(time),
      clock_(clock),
      continuation_(std::move(continuation)),
      onLevel_(std::move(onLevel)) {
    if (inputFormat != outputFormat) converter_.emplace(inputFormat, outputFormat);
}

void AudioTap::operator()(const AudioBuffer& buffer) {
    const double now = time_.now();
    clock_.set(now);
    // The converter was made for one format; a device that changes it in mid-stream is about to be reopened.
    if (buffer.format != inputFormat_ || buffer.frameLength() == 0) return;
    measureLevel(buffer, now);
    deliver(buffer);
}

void AudioTap::measureLevel(const AudioBuffer& buffer, double now) {
    if (now - lastLevelReport_ < levelInterval) return;
    lastLevelReport_ = now;
    onLevel_(soundLevel(buffer, 0));
}

void AudioTap::deliver(const AudioBuffer& buffer) {
    if (!converter_) {
        continuation_.push({std::vector<float>(buffer.samples.begin(), buffer.samples.end())});
        return;
    }
    auto converted = converter_->convert(buffer.samples);
    if (converted && !converted->empty()) continuation_.push({*std::move(converted)});
}

}  // namespace dorix
