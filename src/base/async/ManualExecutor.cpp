#include "base/async/ManualExecutor.h"

#include <algorithm>
#include <utility>

namespace dorix {

void ManualExecutor::post(Work work) {
    std::scoped_lock lock(mutex_);
    posted_.push_back(std::move(work));
}

Executor::TimerId ManualExecutor::after(double seconds, Work work) {
    return timers_.add(now_ + std::max(seconds, 0.0), std::move(work));
}

void ManualExecutor::cancel(TimerId id) { timers_.remove(id); }

void ManualExecutor::runPosted() {
    while (true) {
        Work work;
        {
            std::scoped_lock lock(mutex_);
            if (posted_.empty()) return;
            work = std::move(posted_.front());
            posted_.pop_front();
        }
        work();
    }
}

void ManualExecutor::advanceTo(double time) {
    runPosted();
    while (const auto due = timers_.nextDue()) {
        if (*due > time) break;
        now_ = std::max(now_, *due);
        timers_.takeDue(now_)();
        runPosted();
    }
    now_ = std::max(now_, time);
}

}  // namespace dorix
