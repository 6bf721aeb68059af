#pragma once

#include "platform/BackgroundWork.h"

#include <filesystem>
#include <utility>

namespace dorix {

/// By the scheduling classes of the kernel, and the batteries that it lists.
class LinuxBackgroundWork final : public BackgroundWork {
 public:
    /// `supplies` is where the kernel lists what the computer is fed by.
    explicit LinuxBackgroundWork(std::filesystem::path supplies = "/sys/class/power_supply")
        : supplies_(std::move(supplies)) {}

    void makeThreadIdle() override;
    std::optional<double> batteryLeft() override;

 private:
    const std::filesystem::path supplies_;
};

}  // namespace dorix
