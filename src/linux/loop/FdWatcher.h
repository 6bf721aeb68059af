#pragma once

#include "base/Observable.h"

#include <functional>

namespace dorix {

/// Tells on its executor's thread when a file descriptor can be used; adapters hang their connections on it.
/// That thread only.
class FdWatcher {
 public:
    virtual ~FdWatcher() = default;

    /// `ready` is called again and again as long as something is there to be read. The watch ends when it is
    /// let go of; do so before closing the descriptor.
    virtual Subscription watchReadable(int fd, std::function<void()> ready) = 0;

    /// The same while there is room to write.
    virtual Subscription watchWritable(int fd, std::function<void()> ready) = 0;
};

}  // namespace dorix
