#pragma once

#include <cstdint>
#include <functional>

namespace dorix {

/// One thread's queue with a clock and timers. The core reads time and waits through an executor only,
/// so that tests run it in virtual time.
class Executor {
 public:
    using Work = std::move_only_function<void()>;
    enum class TimerId : std::uint64_t { none = 0 };

    virtual ~Executor() = default;

    /// Runs `work` later, in the order given, never inside the call. Any thread. Never blocks on the work
    /// itself. Work that throws ends the program.
    virtual void post(Work work) = 0;

    /// Runs `work` once, `seconds` from now (at once when negative), through the queue. Executor's thread.
    virtual TimerId after(double seconds, Work work) = 0;

    /// Drops a timer that has not run yet; its work is destroyed unrun. Unknown ids are ignored.
    /// Executor's thread.
    virtual void cancel(TimerId id) = 0;

    /// Seconds on a clock that only goes forward; its zero means nothing. The system's clock, but in tests.
    /// Any thread.
    virtual double now() const;

    /// Seconds since 1970, by the wall clock likewise. Any thread.
    virtual double date() const;

    /// Whether the calling thread is the executor's own. Any thread.
    virtual bool isCurrent() const = 0;
};

}  // namespace dorix
