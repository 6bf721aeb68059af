#pragma once

#include "platform/AudioEngine.h"

#include <filesystem>
#include <vector>

namespace dorix::lab {

/// What a sound file holds, interleaved.
struct SoundFile {
    AudioFormat format;
    std::vector<float> samples;

    double seconds() const {
        return static_cast<double>(samples.size()) / format.channelCount / format.sampleRate;
    }
};

/// Reads a WAV file of any sample format. Throws BadInput.
SoundFile readSoundFile(const std::filesystem::path& file);

}  // namespace dorix::lab
