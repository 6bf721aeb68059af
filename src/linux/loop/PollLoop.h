#pragma once

#include "base/async/Executor.h"
#include "base/async/TimerQueue.h"
#include "linux/loop/FdWatcher.h"

#include <deque>
#include <mutex>
#include <thread>
#include <vector>

namespace dorix {

/// An event loop on a thread of its own, for a connection that must be served also while the main executor is
/// busy. Timers and watches are the thread's own; anyone may post.
class PollLoop final : public Executor, public FdWatcher {
 public:
    PollLoop();
    ~PollLoop() override;

    /// Finishes the work that runs, drops the rest and joins the thread. What lives on the loop can then be
    /// destroyed by the caller. Not from the loop's own thread.
    void stop();

    void post(Work work) override;
    TimerId after(double seconds, Work work) override;
    void cancel(TimerId id) override;
    double now() const override;
    double date() const override;
    bool isCurrent() const override { return std::this_thread::get_id() == thread_.get_id(); }

    Token watchReadable(int fd, std::function<void()> ready) override;

 private:
    struct Watch {
        int fd;
        std::function<void()> ready;
    };

    void run();
    bool runPosted();
    void runDueTimers();
    void awaitEvents();
    int timeout() const;
    void wake() const;

    const int wakeFd_;
    TimerQueue timers_;
    std::vector<std::weak_ptr<Watch>> watches_;
    std::mutex mutex_;
    std::deque<Work> posted_;  // guarded by mutex_
    bool stopping_ = false;    // guarded by mutex_
    std::thread thread_;
};

}  // namespace dorix
