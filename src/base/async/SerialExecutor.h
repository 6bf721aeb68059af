#pragma once

#include "base/async/Executor.h"
#include "base/async/TimerQueue.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <thread>

namespace dorix {

/// An executor with a thread of its own, for a store, a recogniser, a connection. The thread starts with the
/// first work.
class SerialExecutor : public Executor {
 public:
    /// What becomes of posted work that has not begun when the executor stops; timers are always dropped.
    enum class AtEnd { runOut, drop };

    explicit SerialExecutor(AtEnd atEnd = AtEnd::runOut) : atEnd_(atEnd) {}
    ~SerialExecutor() override { stop(); }
    SerialExecutor(const SerialExecutor&) = delete;
    SerialExecutor& operator=(const SerialExecutor&) = delete;

    /// Joins the thread, when it is through with its work. What lives on the executor can then be destroyed
    /// by the caller; what others post from now on is never run. Not from the executor's own thread.
    void stop();

    void post(Work work) override;
    TimerId after(double seconds, Work work) override;
    void cancel(TimerId id) override;
    bool isCurrent() const override;

 protected:
    // What else a derived class waits for on the thread comes in between the work. Its destructor calls stop,
    // so that the thread no longer does.

    /// Returns when wake has been called since the last time, or when `seconds` have passed, if any. The
    /// executor's thread.
    virtual void wait(std::optional<double> seconds);
    /// Any thread, under the queue's lock.
    virtual void wake();

 private:
    void run();
    bool runPosted();
    void runDueTimers();
    bool mayGoOn() const { return !stopping_ || (atEnd_ == AtEnd::runOut && !posted_.empty()); }

    const AtEnd atEnd_;
    TimerQueue timers_;
    std::mutex mutex_;
    std::condition_variable woken_;
    std::deque<Work> posted_;  // guarded by mutex_
    bool stopping_ = false;    // guarded by mutex_
    std::thread thread_;       // started under mutex_
};

}  // namespace dorix
