#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

enum class SpawnAs {
    /// A child in a process group of its own: Ctrl-C in the terminal is for the program alone. SIGTERM is
    /// blocked, so that none is lost before the child is ready for it.
    helper,
    /// A session leader, which ends neither with this process nor with its terminal.
    detached,
};

/// Starts `command`, looked up in the path when it has no slash, with our environment, the null device for
/// input and output, no other open file, and signals as a program expects them. Blocks until the program is
/// running or cannot be started: then nothing. The process is a child, and wants to be waited for. Any
/// thread.
std::optional<pid_t> spawn(const std::vector<std::string>& command, SpawnAs as);

}  // namespace dorix
