#include "recogniser/sound/Pauses.h"

#include "recogniser/Engine.h"

#include <limits>
#include <numeric>

namespace dorix::recogniser {

namespace {

constexpr std::size_t window = Engine::sampleRate / 3;
constexpr std::size_t hop = Engine::sampleRate / 50;
constexpr double silence = 0.001;  // mean amplitude: -60 dB

double power(std::span<const float> samples) {
    const auto sum = std::inner_product(samples.begin(), samples.end(), samples.begin(), 0.0);
    return sum / static_cast<double>(samples.size());
}

}  // namespace

std::size_t quietestPoint(std::span<const float> samples, std::size_t from) {
    auto best = samples.size();
    auto least = std::numeric_limits<double>::infinity();
    for (auto begin = from; begin + window <= samples.size(); begin += hop) {
        const auto here = power(samples.subspan(begin, window));
        // The latest of several: the longer a part, the better it is understood.
        if (here > least) continue;
        least = here;
        best = begin + window / 2;
    }
    return best;
}

bool isSilent(std::span<const float> samples) {
    for (; samples.size() > hop; samples = samples.subspan(hop)) {
        if (power(samples.first(hop)) > silence * silence) return false;
    }
    return true;
}

}  // namespace dorix::recogniser
