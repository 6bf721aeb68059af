#pragma once

#include "base/async/Task.h"

namespace dorix {

/// What sleep and sleepThrough give; awaited at once.
class [[nodiscard]] Sleep : Wait {
 public:
    using Wait::Stoppable;

    Sleep(double seconds, Stoppable stoppable) : Wait(stoppable), seconds_(seconds) {}
    ~Sleep() {
        if (executor_) executor_->cancel(timer_);
    }

    bool await_ready() const noexcept { return false; }
    template <typename Promise>
    void await_suspend(std::coroutine_handle<Promise> handle) {
        auto waiter = suspend(handle.promise().root(), handle);
        executor_ = &handle.promise().root()->executor();
        timer_ = executor_->after(seconds_, [waiter] { waiter->wake(Waiter::Outcome::ready); });
        armStop();
    }
    void await_resume() const { throwIfCancelled(); }

 private:
    const double seconds_;
    Executor* executor_ = nullptr;
    Executor::TimerId timer_ = Executor::TimerId::none;
};

/// Waits `seconds` on the task's executor: co_await sleep(0.3). Throws Cancelled when the task is stopped.
inline Sleep sleep(double seconds) { return {seconds, Sleep::Stoppable::yes}; }

/// The same, but a stop request does not cut it short.
inline Sleep sleepThrough(double seconds) { return {seconds, Sleep::Stoppable::no}; }

}  // namespace dorix
