#include "base/async/ManualExecutor.h"

#include <algorithm>

namespace dorix {

ManualExecutor::~ManualExecutor() {
    timers_.clear();
    posted_.clear();
}

void ManualExecutor::post(Work work) {
    std::scoped_lock lock(mutex_);
    posted_.push_back(std::move(work));
}

Executor::TimerId ManualExecutor::after(double seconds, Work work) {
    const TimerId id{++lastId_};
    timers_.emplace(Due{now_ + std::max(seconds, 0.0), id}, std::move(work));
    return id;
}

void ManualExecutor::cancel(TimerId id) {
    const auto timer =
        std::ranges::find_if(timers_, [id](const auto& entry) { return entry.first.second == id; });
    if (timer != timers_.end()) timers_.erase(timer);
}

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
    while (!timers_.empty() && timers_.begin()->first.first <= time) {
        auto timer = timers_.extract(timers_.begin());
        now_ = std::max(now_, timer.key().first);
        timer.mapped()();
        runPosted();
    }
    now_ = std::max(now_, time);
}

}  // namespace dorix
