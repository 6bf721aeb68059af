#include "SoundFile.h"

#include "Command.h"

#include <sndfile.h>

#include <memory>
#include <span>

namespace dorix::lab {

SoundFile readSoundFile(const std::filesystem::path& file) {
    SF_INFO info{};
    const std::unique_ptr<SNDFILE, decltype(&sf_close)> sound(sf_open(file.c_str(), SFM_READ, &info),
                                                              sf_close);
    if (!sound) throw BadInput(file.string() + ": " + sf_strerror(nullptr));
    SoundFile read{.format = {static_cast<double>(info.samplerate), info.channels}, .samples = {}};
    // In pieces: the length that a damaged file states is not to be believed.
    std::vector<float> piece(static_cast<std::size_t>(info.samplerate) *
                             static_cast<std::size_t>(info.channels));
    while (const auto frames = sf_readf_float(sound.get(), piece.data(), info.samplerate)) {
        const auto count = static_cast<std::size_t>(frames) * static_cast<std::size_t>(info.channels);
        read.samples.insert(read.samples.end(), piece.begin(),
                            piece.begin() + static_cast<std::ptrdiff_t>(count));
    }
    return read;
}

}  // namespace dorix::lab
