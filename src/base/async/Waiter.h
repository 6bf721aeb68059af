#pragma once

#include "base/async/Executor.h"

#include <atomic>
#include <coroutine>
#include <exception>
#include <memory>
#include <stop_token>

namespace dorix {

/// Thrown out of a wait whose task was cancelled. It unwinds the task and is no failure to report.
class Cancelled : public std::exception {
 public:
    const char* what() const noexcept override { return "cancelled"; }
};

/// What the frames of one spawned task share: its executor, its stop source, and who destroys it.
class TaskRoot {
 public:
    explicit TaskRoot(Executor& executor) : executor_(executor) {}
    TaskRoot(const TaskRoot&) = delete;
    TaskRoot& operator=(const TaskRoot&) = delete;

    Executor& executor() const { return executor_; }
    std::stop_token stopToken() const { return stop_.get_token(); }

    /// Any thread. Waits that are under way throw Cancelled on the executor.
    void requestStop() { stop_.request_stop(); }

    /// Executor's thread. Gives the root the outermost frame, suspended at its start.
    void adopt(std::coroutine_handle<> frame) { frame_ = frame; }

    /// Executor's thread. Runs `handle`, a frame of this task, until it suspends or ends.
    void resume(std::coroutine_handle<> handle);

    /// The outermost frame calls it last: it destroys itself and the root lets go of it.
    void frameEnded() { frame_ = nullptr; }

    /// Executor's thread. Requests a stop and destroys the suspended frames without running them again.
    /// A task that is running (it destroyed its own owner) is destroyed where it next suspends.
    void destroy();

 private:
    void destroyFrame();

    Executor& executor_;
    std::stop_source stop_;
    std::coroutine_handle<> frame_;
    bool running_ = false;
    bool doomed_ = false;
};

/// One suspended wait. Whoever wakes it first, from any thread, decides its outcome; the coroutine goes on
/// on its own executor, unless it has been destroyed by then.
class Waiter : public std::enable_shared_from_this<Waiter> {
 public:
    enum class Outcome { waiting, ready, cancelled, abandoned };

    Waiter(std::shared_ptr<TaskRoot> root, std::coroutine_handle<> handle)
        : root_(std::move(root)), handle_(handle) {}

    /// Any thread. Only the first call has an effect.
    void wake(Outcome outcome);

    /// Executor's thread: the frame is being destroyed, a resume that is queued already does nothing.
    void abandon() { outcome_ = Outcome::abandoned; }

    Outcome outcome() const { return outcome_; }

 private:
    const std::shared_ptr<TaskRoot> root_;
    const std::coroutine_handle<> handle_;
    std::atomic<Outcome> outcome_{Outcome::waiting};
};

/// The part that all waits share; awaiters derive from it. Lives in the suspended frame, so its destructor
/// runs on the executor's thread whether the wait ended or the frame was destroyed.
class Wait {
 public:
    enum class Stoppable { no, yes };

    explicit Wait(Stoppable stoppable = Stoppable::yes) : stoppable_(stoppable) {}
    Wait(const Wait&) = delete;
    Wait& operator=(const Wait&) = delete;
    ~Wait();

 protected:
    /// Makes the waiter; call it first in await_suspend, hand the waiter on, then call armStop last.
    std::shared_ptr<Waiter> suspend(const std::shared_ptr<TaskRoot>& root, std::coroutine_handle<> handle);

    /// From here on a stop request wakes the waiter.
    void armStop();

    /// Call it in await_resume: throws Cancelled if that is how the wait ended.
    void throwIfCancelled() const;

 private:
    struct WakeCancelled {
        std::shared_ptr<Waiter> waiter;
        void operator()() const { waiter->wake(Waiter::Outcome::cancelled); }
    };

    const Stoppable stoppable_;
    std::stop_token stopToken_;
    std::shared_ptr<Waiter> waiter_;
    std::unique_ptr<std::stop_callback<WakeCancelled>> stopCallback_;
};

}  // namespace dorix
