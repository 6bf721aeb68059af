#pragma once

#include "platform/AudioEngine.h"

#include <memory>
#include <optional>
#include <span>
#include <vector>

struct SRC_STATE_tag;

namespace dorix {

/// Converts a running sound from one format to another: channels first, then the sample rate. It carries the
/// resampler's state from buffer to buffer, so that no click marks their edges. One thread at a time.
class SampleConverter {
 public:
    /// Both formats have a positive rate and at least one channel. Throws MessageError when the rates cannot
    /// be converted.
    SampleConverter(AudioFormat from, AudioFormat to);
    ~SampleConverter();

    /// The sound that follows what was given before, converted as far as it is complete: the last
    /// milliseconds come with the next call. Nothing on an error, which loses this buffer. It allocates the
    /// result, and a scratch buffer when a call is longer than all before.
    std::optional<std::vector<float>> convert(std::span<const float> samples);

 private:
    struct Deleter {
        void operator()(SRC_STATE_tag* state) const;
    };

    std::span<const float> mix(std::span<const float> samples);

    const AudioFormat from_;
    const AudioFormat to_;
    const double ratio_;
    std::unique_ptr<SRC_STATE_tag, Deleter> resampler_;  // none when the rates are equal
    std::vector<float> mixed_;
};

}  // namespace dorix
