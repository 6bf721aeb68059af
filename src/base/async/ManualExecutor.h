#pragma once

#include "base/async/Executor.h"
#include "base/async/TimerQueue.h"

#include <deque>
#include <mutex>
#include <thread>

namespace dorix {

/// An executor in virtual time: nothing runs until it is told to, and time passes only by advancing it.
/// Driven from the thread that made it; post may come from any thread.
class ManualExecutor : public Executor {
 public:
    /// `date` is the wall clock at virtual time 0, in seconds since 1970.
    explicit ManualExecutor(double date = 1'750'000'000) : dateAtZero_(date) {}

    void post(Work work) override;
    TimerId after(double seconds, Work work) override;
    void cancel(TimerId id) override;
    double now() const override { return now_; }
    double date() const override { return dateAtZero_ + now_; }
    bool isCurrent() const override { return std::this_thread::get_id() == thread_; }

    /// Runs what is queued, and what that queues, until nothing is left. Time stands still.
    void runPosted();

    /// Runs everything due up to and including `time`, each at its own moment; then `now()` is `time`.
    void advanceTo(double time);
    void advanceBy(double seconds) { advanceTo(now_ + seconds); }

    bool hasTimers() const { return !timers_.isEmpty(); }

 private:
    const double dateAtZero_;
    const std::thread::id thread_ = std::this_thread::get_id();
    double now_ = 0;
    TimerQueue timers_;
    std::mutex mutex_;
    std::deque<Work> posted_;  // guarded by mutex_
};

}  // namespace dorix
