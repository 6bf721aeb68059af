#pragma once

#include <cstdint>
#include <functional>
#include <memory>

namespace dorix {

/// Other processes, by their id. Main executor; answers at once.
class ProcessWatcher {
 public:
    /// Ends the watch when let go of, also inside the call.
    using Token = std::shared_ptr<void>;

    virtual ~ProcessWatcher() = default;

    /// Calls `onExit` once when the process has ended, however it did, never inside this call. Null when
    /// there is no such process, or it cannot be watched.
    virtual Token watchExit(std::int32_t processIdentifier, std::function<void()> onExit) = 0;
};

}  // namespace dorix
