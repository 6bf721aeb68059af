#pragma once

#include "base/async/Executor.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

namespace dorix {

/// A few threads for reading and computing away from the main executor; used through runOn.
class ThreadPool : public WorkQueue {
 public:
    explicit ThreadPool(unsigned threads = 2);

    /// Finishes the work that runs, drops what has not begun, joins the threads.
    ~ThreadPool() override;

    void post(Work work) override;

 private:
    void run();

    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<Work> posted_;  // guarded by mutex_
    bool stopping_ = false;    // guarded by mutex_
    std::vector<std::thread> threads_;
};

}  // namespace dorix
