#pragma once

#include "platform/Processes.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {

/// What the watchdog is told when it is started.
struct WatchdogArguments {
    std::int32_t parent = 0;
    std::string bundlePath;

    bool operator==(const WatchdogArguments&) const = default;

    std::vector<std::string> commandLine() const;
};

/// Whether a process with these arguments is to be the watchdog, and not the program itself.
bool isWatchdog(std::span<const std::string_view> arguments);

/// None when the watchdog was not told what it must know; then it has nothing to do.
std::optional<WatchdogArguments> parseWatchdogArguments(std::span<const std::string_view> arguments);

/// The program's hold on its watchdog. Main executor.
class WatchdogTask {
 public:
    explicit WatchdogTask(Processes& processes) : processes_(processes) {}

    /// Starts the watchdog over this process. Without one, which is not reported, the program runs all the
    /// same and does not come back after a crash.
    void spawn();

    /// Ends the watchdog: what follows is meant.
    void terminate();

 private:
    Processes& processes_;
    Processes::Terminate terminate_;
};

}  // namespace dorix
