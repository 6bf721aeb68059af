#pragma once

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

}  // namespace dorix
