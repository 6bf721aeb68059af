#pragma once

#include <functional>
#include <memory>

namespace dorix {

/// Tells on its executor's thread when a file descriptor can be read; adapters hang their connections on it.
/// That thread only.
class FdWatcher {
 public:
    /// Ends the watch when destroyed; do so before closing the descriptor.
    using Token = std::shared_ptr<void>;

    virtual ~FdWatcher() = default;

    /// `ready` is called again and again as long as something is there to be read.
    virtual Token watchReadable(int fd, std::function<void()> ready) = 0;
};

}  // namespace dorix
