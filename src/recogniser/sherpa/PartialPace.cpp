#include "recogniser/sherpa/PartialPace.h"

#include "recogniser/Engine.h"

#include <algorithm>

namespace dorix::recogniser {

namespace {
constexpr double shortestInterval = 1;                 // seconds
constexpr std::size_t leastNews = Engine::sampleRate;  // samples
constexpr double restPerWork = 3;                      // of the time, so that the computer is left to others
constexpr double longestWork = 1.5;                    // seconds; the key may come up meanwhile
}  // namespace

void PartialPace::restart(double now) {
    lastAt_ = now;
    lastSize_ = 0;
}

bool PartialPace::isDue(double now, std::size_t size) const {
    const auto work = expectedWork(size);
    const auto interval = std::max(shortestInterval, restPerWork * work);
    return size >= lastSize_ + leastNews && work <= longestWork && now - lastAt_ >= interval;
}

void PartialPace::worked(double from, double until, std::size_t size) {
    lastAt_ = until;
    lastSize_ = size;
    work_ = until - from;
    workSize_ = size;
}

/// Some models take as long for a word as for a sentence.
double PartialPace::expectedWork(std::size_t size) const {
    if (workSize_ == 0) return 0;
    return work_ * std::max(1.0, static_cast<double>(size) / static_cast<double>(workSize_));
}

}  // namespace dorix::recogniser
