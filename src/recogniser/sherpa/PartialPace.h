#pragma once

#include <cstddef>

namespace dorix::recogniser {

/// When it is time to understand what was said so far, for a partial text: as often as this computer does it
/// by the way, if at all. Times are seconds from any point on, sizes are samples.
class PartialPace {
 public:
    /// The sound begins anew.
    void restart(double now);

    /// By the clock and not by the sound, which comes all at once where it has been waiting.
    bool isDue(double now, std::size_t size) const;

    /// So much was worked on, in that time.
    void worked(double from, double until, std::size_t size);

 private:
    double expectedWork(std::size_t size) const;

    double lastAt_ = 0;
    std::size_t lastSize_ = 0;
    double work_ = 0;  // seconds, by the last time
    std::size_t workSize_ = 0;
};

}  // namespace dorix::recogniser
