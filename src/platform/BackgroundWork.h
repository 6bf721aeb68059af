#pragma once

#include <optional>

namespace dorix {

/// What work that nobody waits for has to heed, so that the user does not feel it. Any thread.
class BackgroundWork {
 public:
    virtual ~BackgroundWork() = default;

    /// From now on, and for good, the calling thread gets the processor and the disk only while nobody else
    /// wants them. It holds no lock that others wait for while it works.
    virtual void makeThreadIdle() = 0;

    /// What is left in the battery, from 0 to 1, while the computer runs on it; nothing on mains, or where
    /// there is no battery. May block for some tens of milliseconds.
    virtual std::optional<double> batteryLeft() = 0;
};

/// Where the system tells nothing of it.
class UnavailableBackgroundWork final : public BackgroundWork {
 public:
    void makeThreadIdle() override {}
    std::optional<double> batteryLeft() override { return std::nullopt; }
};

}  // namespace dorix
