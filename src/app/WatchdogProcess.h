#pragma once

#include <span>
#include <string_view>

namespace dorix {

/// The watchdog's whole life; what it returns is for main to return. It comes before anything else in the
/// process, and needs neither a display nor the session's services, so that it outlives all of them. Of its
/// arguments see WatchdogArguments.
int runWatchdog(std::span<const std::string_view> arguments);

}  // namespace dorix
