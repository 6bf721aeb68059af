#pragma once

#include <string_view>

namespace dorix {

/// Short sounds by name ("Tink", "Pop"), loaded once. Main executor; returns before the sound has been heard.
class SystemSounds {
 public:
    virtual ~SystemSounds() = default;

    /// Stops the sound if it is playing and plays it from its start, at `volume` 0 to 1. Silence when it is
    /// not there.
    virtual void play(std::string_view name, double volume) = 0;
};

}  // namespace dorix
