#include "recogniser/server/WaveFile.h"

#include "recogniser/Engine.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>

namespace dorix::recogniser {

namespace {

static_assert(std::endian::native == std::endian::little);

struct Header {
    std::array<char, 4> riff{'R', 'I', 'F', 'F'};
    std::uint32_t restSize;
    std::array<char, 8> format{'W', 'A', 'V', 'E', 'f', 'm', 't', ' '};
    std::uint32_t formatSize = 16;
    std::uint16_t pcm = 1;
    std::uint16_t channels = 1;
    std::uint32_t sampleRate = Engine::sampleRate;
    std::uint32_t bytesPerSecond = 2 * Engine::sampleRate;
    std::uint16_t bytesPerFrame = 2;
    std::uint16_t bitsPerSample = 16;
    std::array<char, 4> data{'d', 'a', 't', 'a'};
    std::uint32_t dataSize;
};
static_assert(sizeof(Header) == 44);

}  // namespace

std::string waveFile(std::span<const float> samples) {
    const auto dataSize = static_cast<std::uint32_t>(2 * samples.size());
    const Header header{.restSize = dataSize + 36, .dataSize = dataSize};
    std::string bytes(reinterpret_cast<const char*>(&header), sizeof header);
    bytes.reserve(bytes.size() + dataSize);
    for (const auto sample : samples) {
        const auto value = static_cast<std::int16_t>(std::lround(std::clamp(sample, -1.0F, 1.0F) * 32767));
        bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
    }
    return bytes;
}

}  // namespace dorix::recogniser
