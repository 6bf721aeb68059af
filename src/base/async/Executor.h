#pragma once

#include <cstdint>
#include <functional>

namespace dorix {

/// Where work is handed over: run later, in the order given, never inside the call.
class WorkQueue {
 public:
    using Work = std::move_only_function<void()>;

    virtual ~WorkQueue() = default;

    /// Any thread. Never blocks on the work itself. Work that throws ends the program.
    virtual void post(Work work) = 0;
};

/// One thread's queue with a clock and timers. The core reads time and waits through an executor only,
/// so that tests run it in virtual time.
class Executor : public WorkQueue {
 public:
    enum class TimerId : std::uint64_t { none = 0 };

    /// Runs `work` once, `seconds` from now (at once when negative), through the queue. Executor's thread.
    virtual TimerId after(double seconds, Work work) = 0;

    /// Drops a timer that has not run yet; its work is destroyed unrun. Unknown ids are ignored.
    /// Executor's thread.
    virtual void cancel(TimerId id) = 0;

    /// Seconds on a clock that only goes forward; its zero means nothing. Any thread.
    virtual double now() const = 0;

    /// Seconds since 1970, by the wall clock. Any thread.
    virtual double date() const = 0;

    /// Whether the calling thread is the executor's own. Any thread.
    virtual bool isCurrent() const = 0;
};

}  // namespace dorix
