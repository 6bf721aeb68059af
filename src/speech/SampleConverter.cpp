#include "speech/SampleConverter.h"

#include "base/Error.h"

#include <samplerate.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>

namespace dorix {

namespace {
// Room for what the resampler held back from the buffer before.
constexpr std::size_t spareFrames = 64;
// A first scratch buffer that no usual device buffer outgrows.
constexpr std::size_t usualFrames = 4096;

std::size_t count(int channels) { return static_cast<std::size_t>(channels); }

float average(std::span<const float> frame) {
    return std::reduce(frame.begin(), frame.end()) / static_cast<float>(frame.size());
}
}  // namespace

void SampleConverter::Deleter::operator()(SRC_STATE_tag* state) const { src_delete(state); }

SampleConverter::SampleConverter(AudioFormat from, AudioFormat to)
    : from_(from), to_(to), ratio_(to.sampleRate / from.sampleRate) {
    if (from.channelCount != to.channelCount) mixed_.reserve(usualFrames * count(to.channelCount));
    if (from.sampleRate == to.sampleRate) return;
    int error = 0;
    resampler_.reset(src_new(SRC_SINC_MEDIUM_QUALITY, to.channelCount, &error));
    if (!resampler_ || !src_is_valid_ratio(ratio_)) {
        throw MessageError(error != 0 ? src_strerror(error) : "sample rates too far apart");
    }
}

SampleConverter::~SampleConverter() = default;

std::span<const float> SampleConverter::mix(std::span<const float> samples) {
    const auto sources = count(from_.channelCount);
    const auto targets = count(to_.channelCount);
    if (sources == targets) return samples;
    const auto frames = samples.size() / sources;
    mixed_.resize(frames * targets);
    for (std::size_t frame = 0; frame < frames; ++frame) {
        const auto in = samples.subspan(frame * sources, sources);
        const auto out = std::span(mixed_).subspan(frame * targets, targets);
        if (targets == 1) {
            out[0] = average(in);
        } else {
            for (std::size_t channel = 0; channel < targets; ++channel) {
                out[channel] = in[std::min(channel, sources - 1)];
            }
        }
    }
    return mixed_;
}

std::optional<std::vector<float>> SampleConverter::convert(std::span<const float> samples) {
    const auto input = mix(samples);
    if (!resampler_) return std::vector<float>(input.begin(), input.end());
    const auto channels = count(to_.channelCount);
    const auto frames = input.size() / channels;
    const auto capacity =
        static_cast<std::size_t>(std::ceil(ratio_ * static_cast<double>(frames))) + spareFrames;
    std::vector<float> output(capacity * channels);
    std::size_t used = 0;
    std::size_t made = 0;
    while (true) {
        SRC_DATA data{};
        data.data_in = input.data() + used * channels;
        data.input_frames = static_cast<long>(frames - used);
        data.data_out = output.data() + made * channels;
        data.output_frames = static_cast<long>(output.size() / channels - made);
        data.src_ratio = ratio_;
        if (src_process(resampler_.get(), &data) != 0) return std::nullopt;
        used += static_cast<std::size_t>(data.input_frames_used);
        made += static_cast<std::size_t>(data.output_frames_gen);
        if (used == frames || (data.input_frames_used == 0 && data.output_frames_gen == 0)) break;
        output.resize(output.size() + capacity * channels);
    }
    output.resize(made * channels);
    return output;
}

}  // namespace dorix
