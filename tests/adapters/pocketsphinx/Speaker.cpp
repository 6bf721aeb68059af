#include "adapters/pocketsphinx/Speaker.h"

#include <cstdint>
#include <cstdlib>
#include <fstream>

namespace dorix {

namespace fs = std::filesystem;

Speaker::Speaker() {
    auto pattern = (fs::temp_directory_path() / "dorix-speaker-XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
}

Speaker::~Speaker() { fs::remove_all(folder_); }

std::vector<float> Speaker::say(const std::string& text) const {
    const auto file = folder_ / "said.wav";
    const auto command = "flite -voice slt -t '" + text + "' -o " + file.string();
    // NOLINTNEXTLINE(concurrency-mt-unsafe): one test at a time
    if (std::system(command.c_str()) != 0) return {};
    std::ifstream wave(file, std::ios::binary);
    wave.seekg(44);  // the header
    std::vector<float> samples;
    std::int16_t sample = 0;
    while (wave.read(reinterpret_cast<char*>(&sample), sizeof sample)) {
        samples.push_back(static_cast<float>(sample) / 32768);
    }
    return samples;
}

}  // namespace dorix
