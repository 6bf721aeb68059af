#pragma once

#include "base/async/Executor.h"
#include "base/async/TimerQueue.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace dorix {

/// An executor with a thread of its own, for a store or a recogniser.
class SerialExecutor : public Executor {
 public:
    SerialExecutor();

    /// Not on its own thread. Runs what has been posted, drops the timers, and joins the thread. Whoever
    /// still posts from elsewhere by then has outlived the executor, which is the owner's mistake.
    ~SerialExecutor() override;

    void post(Work work) override;
    TimerId after(double seconds, Work work) override;
    void cancel(TimerId id) override;
    double now() const override;
    double date() const override;
    bool isCurrent() const override { return std::this_thread::get_id() == thread_.get_id(); }

 private:
    void run();
    Work takeNext(std::unique_lock<std::mutex>& lock);

    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<Work> posted_;  // guarded by mutex_
    TimerQueue timers_;        // guarded by mutex_
    bool stopping_ = false;    // guarded by mutex_
    std::thread thread_;
};

}  // namespace dorix
