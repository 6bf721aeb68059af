#pragma once

#include <mutex>

namespace dorix {

/// When sound last arrived, in seconds of Executor::now(). Shared by the audio thread, which sets it, and the
/// main executor, which watches it. Any thread; the lock is held for one assignment.
class BufferClock {
 public:
    explicit BufferClock(double now) : value_(now) {}

    void set(double now) {
        std::scoped_lock lock(lock_);
        value_ = now;
    }
    double value() const {
        std::scoped_lock lock(lock_);
        return value_;
    }

 private:
    mutable std::mutex lock_;
    double value_;
};

}  // namespace dorix
