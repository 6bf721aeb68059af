#pragma once

#include <span>
#include <string>

namespace dorix::recogniser {

/// The bytes of a WAV file, 16 bit, of sound as Engine takes it.
std::string waveFile(std::span<const float> samples);

}  // namespace dorix::recogniser
